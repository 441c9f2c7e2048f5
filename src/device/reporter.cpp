#include "device/reporter.h"

#include "texts/text.h"

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>

namespace quobrix {
namespace {

struct CommandTexts {
    LoggerCommand command;
    SourceText title; ///< of the progress of a command that writes to the logger; empty: it only reads
    SourceText failure;
    SourceText reads{}; ///< what one that only reads does, for the person who waits for it
};

constexpr CommandTexts kCommands[] = {
    {LoggerCommand::SetClock, SourceText("Setting Time"), SourceText("Unable to set the time")},
    {LoggerCommand::ClearMemory, SourceText("Clearing Quobrix"), SourceText("Unable to clear the Quobrix")},
    {LoggerCommand::GetConfiguration, SourceText(""), SourceText("Unable to retrieve the current configuration"),
     SourceText("Reading the configuration")},
    {LoggerCommand::SetConfiguration, SourceText("Setting Configuration"),
     SourceText("Unable to update the current configuration")},
    {LoggerCommand::EnableLed, SourceText("Enabling LED"), SourceText("Unable to enable the LED")},
    {LoggerCommand::DisableLed, SourceText("Disabling LED"), SourceText("Unable to disable the LED")},
    {LoggerCommand::EnableVinMode, SourceText("Enabling VIN mode"), SourceText("Unable to enable VIN mode")},
    {LoggerCommand::DisableVinMode, SourceText("Disabling VIN mode"), SourceText("Unable to disable VIN mode")},
    {LoggerCommand::EnableAlarm, SourceText("Enabling alarm"), SourceText("Unable to enable alarm")},
    {LoggerCommand::DisableAlarm, SourceText("Disabling alarm"), SourceText("Unable to disable alarm")},
    {LoggerCommand::Arm, SourceText("Arming Quobrix"), SourceText("Unable to arm the Quobrix")},
    {LoggerCommand::Disarm, SourceText("Disarming Quobrix"), SourceText("Unable to disarm Quobrix")},
    {LoggerCommand::SetCarType, SourceText("Setting car type"), SourceText("Unable to set car type")},
    {LoggerCommand::ClearAccidents, SourceText("Clearing accident log"),
     SourceText("Unable to clear the accident log")},
    {LoggerCommand::GetClock, SourceText(""), SourceText("Unable to read the Quobrix's clock"),
     SourceText("Reading the clock")},
    {LoggerCommand::GetMemory, SourceText(""), SourceText("Unable to tell how full the Quobrix's memory is"),
     SourceText("Looking at the memory")},
    {LoggerCommand::GetAlarm, SourceText(""), SourceText("Unable to tell how loud the alarm is"),
     SourceText("Reading the alarm's volume")},
    {LoggerCommand::Download, SourceText(""), SourceText("Unable to download logs"), SourceText("Downloading")},
    {LoggerCommand::Import, SourceText(""), SourceText("Unable to import the log file"),
     SourceText("Reading the log file")},
};

constexpr bool inOrder() {
    for (std::size_t i = 0; i < std::size(kCommands); ++i)
        if (static_cast<std::size_t>(kCommands[i].command) != i)
            return false;
    return true;
}
static_assert(inOrder(), "a command is its row's index");

/// Clearing takes the logger longer than any other command.
TimedProgress progressOf(const CommandTexts& texts) {
    if (texts.command == LoggerCommand::ClearMemory)
        return {text(texts.title), 32, std::chrono::milliseconds(125)};
    return {text(texts.title), 9, std::chrono::milliseconds(75)};
}

} // namespace

Message failureMessage(LoggerCommand command, const LoggerOutcome& outcome) {
    const std::string what = text(kCommands[static_cast<std::size_t>(command)].failure);
    switch (outcome.code) {
    case QUOBRIX_PORT_NOT_OPENED:
        return makeMessage(MessageId::PortNotOpened, what);
    case QUOBRIX_TIMEOUT:
        return makeMessage(MessageId::Timeout, what, outcome.port);
    case kLogsNotCurrent:
        return makeMessage(MessageId::LogsNotCurrent, what);
    case kNoLibrary:
        return makeMessage(MessageId::LibraryMissing, outcome.description);
    default:
        return makeMessage(MessageId::UnexpectedError, what, outcome.description);
    }
}

CallTitle Reporter::title(LoggerCommand command) {
    const CommandTexts& texts = kCommands[static_cast<std::size_t>(command)];
    const bool reads = texts.title.empty();
    return {.what = text(reads ? texts.reads : texts.title), .cancellable = reads};
}

bool Reporter::run(LoggerCommand command, const std::function<ResultCode(LockedLogger&)>& call) {
    const std::optional<LoggerOutcome> outcome =
        calls_.get(title(command), [&](LockedLogger& logger) { return logger.outcome(call(logger)); });
    return outcome && report(command, *outcome);
}

bool Reporter::runOn(const std::string& serialText, LoggerCommand command,
                     const std::function<ResultCode(LockedLogger&)>& call) {
    std::string found;
    const std::optional<LoggerOutcome> outcome = calls_.get(title(command), [&](LockedLogger& logger) {
        const ResultCode probed = logger.probe();
        found = logger.status().serialText;
        return logger.outcome(probed == QUOBRIX_OK && found == serialText ? call(logger) : probed);
    });
    if (outcome && outcome->ok() && found != serialText) {
        prompter_.tell(makeMessage(MessageId::AnotherLogger, serialText, found));
        return false;
    }
    return outcome && report(command, *outcome);
}

bool Reporter::report(LoggerCommand command, const LoggerOutcome& outcome) {
    const CommandTexts& texts = kCommands[static_cast<std::size_t>(command)];
    if (outcome.ok()) {
        if (!texts.title.empty())
            progress_.show(progressOf(texts));
        return true;
    }
    if (command != LoggerCommand::Download || outcome.code != QUOBRIX_NOT_REPORTED)
        prompter_.tell(failureMessage(command, outcome));
    return false;
}

} // namespace quobrix
