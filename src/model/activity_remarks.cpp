// What of an activity event is worth a closer look.

#include "model/activity_log.h"
#include "model/logs.h"
#include "model/trip_log.h"
#include "texts/catalogue.h"
#include "texts/text.h"
#include "units/date_time.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace quobrix {
namespace {

/// SECONDS as a person would say it: in the largest unit of which there are two.
ShownText spanText(std::int64_t seconds) {
    const auto count = [&](CountedOf<1> text, std::int64_t unit) {
        return counted(text, static_cast<std::uint64_t>(seconds / unit), seconds / unit);
    };
    return seconds >= 2 * kSecondsPerDay ? count(TextId::SpanDays, kSecondsPerDay)
           : seconds >= 2 * 3600         ? count(TextId::SpanHours, 3600)
           : seconds >= 2 * 60           ? count(TextId::SpanMinutes, 60)
                                         : count(TextId::SpanSeconds, 1);
}

/// When the record of a row was over.
const DateTimeColumn& endTimes(const LogSpec& log, const Table& table) {
    return log.id == LogId::Trips ? table.column<TTripLogEndTimeColumn>() : log.timesOf(table);
}

/// The logs of the document that TABLE is in.
std::vector<std::pair<const LogSpec*, const Table*>> logsBeside(const Table& table) {
    std::vector<std::pair<const LogSpec*, const Table*>> beside;
    for (const LogSpec& log : logs())
        if (const PersistentObject* found = table.store() ? table.store()->existingSingletonOf(log.table) : nullptr)
            beside.emplace_back(&log, static_cast<const Table*>(found));
    return beside;
}

} // namespace

void ActivityRemarksColumn::refresh() const {
    const auto beside = logsBeside(*table());
    const auto& events = table()->column<TSecurityLogEventTypeColumn>();
    std::uint64_t state = events.revision();
    for (const auto& [log, records] : beside)
        for (const Column* column : {static_cast<const Column*>(&log->loggersOf(*records)),
                                     static_cast<const Column*>(&endTimes(*log, *records))})
            state = (state * 1000003u + column->revision()) * 1000003u + column->rowCount();
    if (state == state_)
        return;
    histories_.clear();
    for (const auto& [log, records] : beside) {
        const LoggerColumn& loggers = log->loggersOf(*records);
        const DateTimeColumn& times = endTimes(*log, *records);
        for (RowIndex row = 0; row < records->rowCount(); ++row) {
            if (!times.has(row))
                continue;
            History& history = histories_[loggers.at(row)];
            history.records.push_back(times.at(row));
            if (log->id == LogId::Activity && (events.at(row) == 1 || events.at(row) == 2))
                history.disconnections.push_back(times.at(row));
        }
    }
    for (auto& [logger, history] : histories_) {
        std::ranges::sort(history.records);
        std::ranges::sort(history.disconnections);
    }
    state_ = state;
}

ShownText ActivityRemarksColumn::remark(RowIndex row) const {
    const auto& times = table()->column<TSecurityLogTimeRecordedColumn>();
    const std::int32_t event = table()->column<TSecurityLogEventTypeColumn>().at(row);
    if (event == 2)
        return quobrix::text(TextId::RemarkDuringTrip);
    if (event == 4)
        return quobrix::text(TextId::RemarkTimeAltered);
    if ((event != 0 && event != 5 && event != 7) || !times.has(row))
        return {};
    refresh();
    const History& history = histories_[table()->column<TSecurityLogQuobrixSerialNumberColumn>().at(row)];
    const std::int32_t time = times.at(row);
    // How long before the event the last of MOMENTS was, but for as many as are SKIPPED.
    const auto since = [time](const std::vector<std::int32_t>& moments,
                              std::ptrdiff_t skipped) -> std::optional<std::int64_t> {
        const auto before = std::ranges::upper_bound(moments, time) - moments.begin() - skipped;
        if (before <= 0)
            return std::nullopt;
        return std::int64_t{time} - moments[static_cast<std::size_t>(before - 1)];
    };
    if (event == 0) {
        const auto apart = since(history.disconnections, 0);
        return apart ? quobrix::text(TextId::RemarkConnected, spanText(*apart)) : ShownText();
    }
    const auto idle = since(history.records, 1); // the clearing itself is the last one
    return idle ? quobrix::text(TextId::RemarkCleared, spanText(*idle)) : quobrix::text(TextId::RemarkClearedFirst);
}

Value ActivityRemarksColumn::value(RowIndex row) const {
    const EnglishTexts forPrograms;
    return std::string(remark(row));
}

std::string_view ActivityRemarksColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    buffer.words = remark(row);
    return buffer.words;
}

} // namespace quobrix
