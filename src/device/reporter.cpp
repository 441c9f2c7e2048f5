#include "device/reporter.h"

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>

namespace quobrix {
namespace {

struct CommandTexts {
    LoggerCommand command;
    std::string_view title; ///< of the progress of a command that writes to the logger; empty: it only reads
    std::string_view failure;
    std::string_view reads{}; ///< what one that only reads does, for the person who waits for it
};

constexpr CommandTexts kCommands[] = {
    {LoggerCommand::SetClock, "Setting Time", "Unable to set the time"},
    {LoggerCommand::ClearMemory, "Clearing Quobrix", "Unable to clear the Quobrix"},
    {LoggerCommand::GetConfiguration, "", "Unable to retrieve the current configuration", "Reading the configuration"},
    {LoggerCommand::SetConfiguration, "Setting Configuration", "Unable to update the current configuration"},
    {LoggerCommand::EnableLed, "Enabling LED", "Unable to enable the LED"},
    {LoggerCommand::DisableLed, "Disabling LED", "Unable to disable the LED"},
    {LoggerCommand::EnableVinMode, "Enabling VIN mode", "Unable to enable VIN mode"},
    {LoggerCommand::DisableVinMode, "Disabling VIN mode", "Unable to disable VIN mode"},
    {LoggerCommand::EnableAlarm, "Enabling alarm", "Unable to enable alarm"},
    {LoggerCommand::DisableAlarm, "Disabling alarm", "Unable to disable alarm"},
    {LoggerCommand::Arm, "Arming Quobrix", "Unable to arm the Quobrix"},
    {LoggerCommand::Disarm, "Disarming Quobrix", "Unable to disarm Quobrix"},
    {LoggerCommand::SetCarType, "Setting car type", "Unable to set car type"},
    {LoggerCommand::Download, "", "Unable to download logs", "Downloading"},
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
        return {texts.title, 32, std::chrono::milliseconds(125)};
    return {texts.title, 9, std::chrono::milliseconds(75)};
}

} // namespace

Message failureMessage(std::string_view failure, const LoggerOutcome& outcome) {
    const std::string what(failure);
    switch (outcome.code) {
    case QUOBRIX_PORT_NOT_OPENED:
        return makeMessage(MessageId::PortNotOpened, what);
    case QUOBRIX_TIMEOUT:
        return makeMessage(MessageId::Timeout, what, outcome.port);
    case kNoLibrary:
        return makeMessage(MessageId::LibraryMissing, outcome.description);
    default:
        return makeMessage(MessageId::UnexpectedError, what, outcome.description);
    }
}

CallTitle Reporter::title(LoggerCommand command) {
    const CommandTexts& texts = kCommands[static_cast<std::size_t>(command)];
    const bool reads = texts.title.empty();
    return {.what = std::string(reads ? texts.reads : texts.title), .cancellable = reads};
}

bool Reporter::run(LoggerCommand command, const std::function<ResultCode(LockedLogger&)>& call) {
    const std::optional<LoggerOutcome> outcome =
        calls_.get(title(command), [&](LockedLogger& logger) { return logger.outcome(call(logger)); });
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
        prompter_.tell(failureMessage(texts.failure, outcome));
    return false;
}

} // namespace quobrix
