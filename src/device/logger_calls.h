#pragma once

#include "device/logger_link.h"

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

namespace quobrix {

/// How a flow reaches the logger from its own thread: the command line and tests call directly, the window hands each
/// call to the worker and goes on painting until it is done.
class LoggerCalls {
public:
    using Call = std::function<void(LockedLogger&)>;

    virtual ~LoggerCalls() = default;

    /// Runs CALL with the device lock held and returns when it is done. CALL must not throw, ask or wait.
    virtual void run(const Call& call) = 0;
    /// Between these two the monitoring probe rests; pairs may be nested. See PollingPause.
    virtual void suspendPolling() {}
    virtual void resumePolling() {}

    /// Runs FUNCTION(LockedLogger&) and returns what it returned.
    template <class Function>
    auto get(Function&& function) {
        std::optional<std::invoke_result_t<Function, LockedLogger&>> result;
        run([&](LockedLogger& logger) { result.emplace(function(logger)); });
        return std::move(*result);
    }
};

/// Calls on the caller's own thread; for programs without a worker.
class DirectCalls final : public LoggerCalls {
public:
    explicit DirectCalls(LoggerLink& link) : link_(link) {}
    void run(const Call& call) override {
        LockedLogger logger(link_);
        call(logger);
    }

private:
    LoggerLink& link_;
};

/// Keeps the monitoring probe from coming in between the calls of one operation.
class PollingPause {
public:
    explicit PollingPause(LoggerCalls& calls) : calls_(calls) { calls_.suspendPolling(); }
    ~PollingPause() { calls_.resumePolling(); }
    PollingPause(const PollingPause&) = delete;
    PollingPause& operator=(const PollingPause&) = delete;

private:
    LoggerCalls& calls_;
};

} // namespace quobrix
