#pragma once

#include "device/logger_calls.h"
#include "device/polling_thread.h"
#include "ui/waiting.h"

#include <memory>
#include <utility>

class QWidget;

namespace quobrix {

/// Hands each call to the worker and waits for it in an event loop, so that the window goes on painting while the
/// logger takes its time. What takes long is shown in a dialog over WINDOW: what is being done, how far it is, and
/// Cancel. User-interface thread only.
class WorkerCalls final : public LoggerCalls {
public:
    using Times = Waiting::Times;

    WorkerCalls(TPollingThread& worker, QWidget& window, Times times);
    ~WorkerCalls() override;

    bool run(const CallTitle& title, const Call& call) override;
    void post(Call call) override { worker_.submit(std::move(call)); }
    void suspendPolling() override;
    void resumePolling() override;

private:
    struct Wait;

    void endWait();

    TPollingThread& worker_;
    QWidget& window_;
    const Times times_;
    std::unique_ptr<Wait> wait_; ///< of the calls of one operation; none between operations
    int pauses_ = 0;
    int running_ = 0;
};

} // namespace quobrix
