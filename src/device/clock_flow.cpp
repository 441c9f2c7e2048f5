#include "device/clock_flow.h"

#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"

namespace quobrix {

std::optional<ClockFlow::Clocks> ClockFlow::read() {
    const std::optional<LoggerStatus> logger = context_.ports().findLogger();
    if (!logger)
        return {};
    const auto now = context_.calls.get(Reporter::title(LoggerCommand::GetClock),
                                        [](const LockedLogger& present) { return present.now(); });
    return now ? std::optional<Clocks>({*logger, *now}) : std::nullopt;
}

std::string ClockFlow::textOf(std::int64_t time) const {
    return dateTimeText(text_.units, text_.zone.toLocal(static_cast<std::int32_t>(time)));
}

bool ClockFlow::synchronize() {
    const std::optional<Clocks> clocks = read();
    return clocks &&
           context_.prompter.ask(makeMessage(MessageId::SynchronizeDateAndTime, textOf(clocks->logger.loggerTime),
                                             textOf(clocks->computer))) == Answer::Yes &&
           ClearFlow(context_).mayLose(clocks->logger) &&
           set(clocks->logger.serialText, clocks->logger.logsCurrent, {});
}

bool ClockFlow::synchronizeDownloaded(const std::string& serialText, std::uint64_t refused) {
    if (refused > 0 &&
        context_.prompter.ask(
            makeMessage(MessageId::ClearQuobrix, counted(TextId::ClearWithRefused, refused, refused))) != Answer::Yes)
        return false;
    return set(serialText, true, {});
}

void ClockFlow::show() {
    if (const std::optional<Clocks> clocks = read()) {
        DateAndTimeForm form{clocks->logger.loggerTime, static_cast<std::int32_t>(clocks->computer), true};
        context_.prompter.fillIn(form);
    }
}

bool ClockFlow::enter() {
    const std::optional<Clocks> clocks = read();
    if (!clocks)
        return false;
    DateAndTimeForm form{clocks->logger.loggerTime, static_cast<std::int32_t>(clocks->computer), false};
    return context_.prompter.fillIn(form) && ClearFlow(context_).mayLose(clocks->logger) &&
           set(clocks->logger.serialText, clocks->logger.logsCurrent, form.logger);
}

/// WHILE_CURRENT: not when something may have been recorded since. TIME: none is the computer's.
bool ClockFlow::set(const std::string& serialText, bool whileCurrent, std::optional<std::int32_t> time) {
    std::int64_t now = 0;
    const bool done = context_.reporter().runOn(serialText, LoggerCommand::SetClock, [&](LockedLogger& logger) {
        now = logger.now();
        if (whileCurrent && !logger.status().logsCurrent)
            return kLogsNotCurrent;
        return logger.setTime(time.value_or(static_cast<std::int32_t>(now)));
    });
    if (done)
        ClearFlow(context_).noteCleared(serialText, now);
    return done;
}

} // namespace quobrix
