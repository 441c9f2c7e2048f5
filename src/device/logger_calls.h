#pragma once

#include "device/logger_link.h"

#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace quobrix {

/// What a person is shown who waits for a call.
struct CallTitle {
    std::string what;        ///< is being done ("Opening Port")
    std::string where{};     ///< it is being done, if there are several such ("COM3")
    int step = 0, steps = 0; ///< which of how many calls of one operation, counted from 0; of 0 if it is the only one
    bool cancellable = true; ///< one that writes to the logger is not: it would not be known what has been written
};

/// How a flow reaches the logger from its own thread: the command line and tests call directly, the window hands each
/// call to the worker, goes on painting until it is done, and lets the person cancel it.
class LoggerCalls {
public:
    using Call = std::function<void(LockedLogger&)>;

    virtual ~LoggerCalls() = default;

    /// Runs CALL with the device lock held and returns when it is over. False if it was cancelled, perhaps before it
    /// began: then nothing that it brought counts. CALL must not throw, ask or wait; between its library calls it may
    /// ask whether it is cancelled().
    [[nodiscard]] virtual bool run(const CallTitle& title, const Call& call) = 0;
    /// Runs CALL, which makes no library call, before the next run(); nobody waits for it.
    virtual void post(Call call) = 0;
    /// Between these two the monitoring probe rests; pairs may be nested. See PollingPause.
    virtual void suspendPolling() {}
    virtual void resumePolling() {}

    /// Runs FUNCTION(LockedLogger&); what it returned, or nothing if it was cancelled.
    template <class Function>
    auto get(const CallTitle& title, Function&& function) {
        std::optional<std::invoke_result_t<Function, LockedLogger&>> result;
        if (!run(title, [&](LockedLogger& logger) { result.emplace(function(logger)); }))
            result.reset();
        return result;
    }
};

/// Calls on the caller's own thread, which cannot be cancelled; for programs without a worker.
class DirectCalls final : public LoggerCalls {
public:
    explicit DirectCalls(LoggerLink& link) : link_(link) {}
    bool run(const CallTitle&, const Call& call) override {
        LockedLogger logger(link_);
        call(logger);
        return true;
    }
    void post(Call call) override {
        LockedLogger logger(link_);
        call(logger);
    }

private:
    LoggerLink& link_;
};

/// Keeps the monitoring probe from coming in between the calls of one operation. The person waits for them as for one:
/// what is cancelled is all of it, and nothing is asked meanwhile.
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
