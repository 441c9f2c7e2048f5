#pragma once

#include "device/logger_calls.h"
#include "device/polling_thread.h"

namespace quobrix {

/// Hands each call to the worker and waits for it in an event loop without user input, so that the window goes on
/// painting while the logger takes its time. User-interface thread only.
class WorkerCalls final : public LoggerCalls {
public:
    explicit WorkerCalls(TPollingThread& worker) : worker_(worker) {}

    void run(const Call& call) override;
    void suspendPolling() override { worker_.suspend(); }
    void resumePolling() override { worker_.resume(); }

private:
    TPollingThread& worker_;
};

} // namespace quobrix
