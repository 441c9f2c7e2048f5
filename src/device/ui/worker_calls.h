#pragma once

#include "device/logger_calls.h"
#include "device/polling_thread.h"

#include <chrono>
#include <memory>

class QEventLoop;
class QWidget;

namespace quobrix {

/// Hands each call to the worker and waits for it in an event loop, so that the window goes on painting while the
/// logger takes its time. What takes long is shown in a dialog over WINDOW: what is being done, how far it is, and
/// Cancel. User-interface thread only.
class WorkerCalls final : public LoggerCalls {
public:
    struct Times {
        std::chrono::milliseconds blink{30};     ///< the longest that the user-interface thread stands still
        std::chrono::milliseconds patience{500}; ///< the longest that a person waits without being told for what
    };

    WorkerCalls(TPollingThread& worker, QWidget& window, Times times);
    ~WorkerCalls() override;

    bool run(const CallTitle& title, const Call& call) override;
    void suspendPolling() override;
    void resumePolling() override;

private:
    class Dialog;
    struct Wait;
    struct Completion;

    void await(Completion& completion, const CallTitle& title);
    void waitInLoop(Completion& completion, QEventLoop& loop, const CallTitle& title);
    void endWait();

    TPollingThread& worker_;
    QWidget& window_;
    const Times times_;
    std::unique_ptr<Wait> wait_; ///< of the calls of one operation; none between operations
    int pauses_ = 0;
    int running_ = 0;
};

} // namespace quobrix
