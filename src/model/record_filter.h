#pragma once

#include "model/logs.h"
#include "tables/table.h"
#include "texts/source_text.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// Seconds since 1970-01-01 00:00 UTC, from the first on, until before the second; without one, to the end of time.
struct TimeRange {
    std::optional<std::int64_t> from, until;

    bool holds(std::int64_t time) const { return (!from || time >= *from) && (!until || time < *until); }
    bool operator==(const TimeRange&) const = default;
};

/// A range of time that people have a name for.
struct Period {
    std::string_view name; ///< "last-3-months", on the command line
    SourceText text;       ///< "Last 3 Months"
    int months;            ///< whole calendar months before the present one; 0: the present one, up to now
};
std::span<const Period> periods();

/// PERIOD at the time NOW, its months being those of ZONE's calendar.
TimeRange rangeOf(const Period& period, std::int32_t now, const TimeZone& zone);

/// The day, minute or second that TEXT names: year first ("2026-01-31", "2026-01-31T15:00") or as the user writes
/// dates; both ends are there. Nothing, if it names none.
std::optional<TimeRange> parseMoment(std::string_view text, const TextContext& context);

/// What is wanted of a record; what is empty does not count.
struct RecordCriteria {
    std::string words{}; ///< in a cell, in any case
    TimeRange time{};    ///< of its start
    /// A key or its name in any case; an empty text is the record that names none.
    std::optional<std::string> vehicle{}, driver{}, logger{};

    bool any() const;
    bool operator==(const RecordCriteria&) const = default;
};

/// The rows of TABLE, which is of LOG, that meet CRITERIA, in their order; WORDS are looked for in COLUMNS. No record's
/// own objects are loaded. A log without drivers has no record of any.
std::vector<RowIndex> findRecords(const LogSpec& log, const Table& table, std::span<const Column* const> columns,
                                  const RecordCriteria& criteria, const TextContext& context);

/// What a record may be wanted by.
enum class RecordName { Vehicle, Driver, Logger };

/// A key that records hold, and what it reads. Keys that read the same have themselves behind the name; the empty one
/// reads nothing.
struct OccurringName {
    std::string key, shown;
};
/// The vehicles, drivers or loggers that records of TABLE, which is of LOG, name, in no order.
std::vector<OccurringName> namesIn(const LogSpec& log, const Table& table, RecordName what, const TextContext& context);

/// What CRITERIA name that neither the names of TABLE's document nor its records know: a word that was mistyped.
std::vector<RecordName> unknownNames(const LogSpec& log, const Table& table, const RecordCriteria& criteria);

} // namespace quobrix
