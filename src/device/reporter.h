#pragma once

#include "device/logger_calls.h"
#include "messages/prompter.h"

#include <chrono>
#include <functional>
#include <string>

namespace quobrix {

/// The commands whose outcome the user is told.
enum class LoggerCommand {
    SetClock,
    ClearMemory,
    GetConfiguration,
    SetConfiguration,
    EnableLed,
    DisableLed,
    EnableVinMode,
    DisableVinMode,
    EnableAlarm,
    DisableAlarm,
    Arm,
    Disarm,
    SetCarType,
    ClearAccidents,
    GetClock,
    GetMemory,
    GetAlarm,
    Download,
    Import,
};

/// The progress that is shown after a command succeeded, so that the user sees that something happened: the logger has
/// taken the command but is still busy with it.
struct TimedProgress {
    std::string title;
    int steps;
    std::chrono::milliseconds interval;
    /// The steps, and half a second in which the finished bar can be seen.
    std::chrono::milliseconds total() const { return steps * interval + std::chrono::milliseconds(500); }
};

/// Shows a timed progress and returns when it is over. This one shows nothing and takes no time.
class ProgressReporter {
public:
    virtual ~ProgressReporter() = default;
    virtual void show(const TimedProgress&) {}
};

/// Runs commands and tells the user what came of them. User-interface thread; never with the device lock held.
class Reporter {
public:
    /// What a person is shown who waits for COMMAND.
    static CallTitle title(LoggerCommand command);

    Reporter(LoggerCalls& calls, Prompter& prompter, ProgressReporter& progress)
        : calls_(calls), prompter_(prompter), progress_(progress) {}

    /// Runs CALL and reports its result, unless it was cancelled; returns whether it succeeded.
    bool run(LoggerCommand command, const std::function<ResultCode(LockedLogger&)>& call);

    /// Runs CALL on the logger SERIAL_TEXT and reports its result. Another logger, that a person has plugged in
    /// meanwhile, is left alone, and they are told.
    bool runOn(const std::string& serialText, LoggerCommand command,
               const std::function<ResultCode(LockedLogger&)>& call);

    /// A success shows the command's progress, if it has one; a failure is told with its reason. A download that came
    /// to QUOBRIX_NOT_REPORTED says nothing. Returns whether OUTCOME is a success.
    bool report(LoggerCommand command, const LoggerOutcome& outcome);

private:
    LoggerCalls& calls_;
    Prompter& prompter_;
    ProgressReporter& progress_;
};

/// What went wrong with COMMAND and why: OUTCOME is none of a success.
Message failureMessage(LoggerCommand command, const LoggerOutcome& outcome);

} // namespace quobrix
