#include "model/record_filter.h"

#include "base/fold_case.h"
#include "model/names.h"
#include "tables/find_text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <unordered_set>

namespace quobrix {
namespace {

constexpr Period kPeriods[] = {
    {"this-month", SourceText("This Month"), 0},          {"last-month", SourceText("Last Month"), 1},
    {"last-3-months", SourceText("Last 3 Months"), 3},    {"last-6-months", SourceText("Last 6 Months"), 6},
    {"last-12-months", SourceText("Last 12 Months"), 12},
};

/// A name that a record may be wanted by.
struct NameCriterion {
    RecordName what;
    const std::optional<std::string>& wanted;
    const PersistentType* column; ///< of the log; may be none
    const PersistentType& names;
};

std::array<NameCriterion, 3> namesOf(const LogSpec& log, const RecordCriteria& criteria) {
    return {{{RecordName::Vehicle, criteria.vehicle, log.vehicle, TVehicleNamesTable::kType},
             {RecordName::Driver, criteria.driver, log.driver, DriverNamesTable::kType},
             {RecordName::Logger, criteria.logger, log.logger(), TQuobrixNamesTable::kType}}};
}

bool sameInAnyCase(std::string_view a, std::string_view b) { return foldCase(a) == foldCase(b); }

/// Whether WANTED is KEY or the name that stands for it.
bool means(std::string_view wanted, std::string_view key, std::string_view name) {
    if (wanted.empty() || key.empty())
        return wanted.empty() && key.empty();
    return sameInAnyCase(wanted, key) || sameInAnyCase(wanted, name);
}

/// Keeps those of ROWS whose cell in COLUMN is WANTED. Few names stand in many rows, so each is looked at once.
void keepNamed(std::vector<RowIndex>& rows, const Column& column, std::string_view wanted, const TextContext& context) {
    std::unordered_map<std::string, bool> met;
    std::erase_if(rows, [&](RowIndex row) {
        const auto [entry, isNew] = met.try_emplace(column.namedKey(row));
        if (isNew)
            entry->second = means(wanted, entry->first, column.text(row, context));
        return !entry->second;
    });
}

} // namespace

std::span<const Period> periods() { return kPeriods; }

TimeRange rangeOf(const Period& period, std::int32_t now, const TimeZone& zone) {
    const DateTime today = zone.toLocal(now);
    const DateTime present{.year = today.year, .month = today.month};
    DateTime first = present;
    first.month -= period.months;
    return {zone.toUtc(first), period.months == 0 ? std::int64_t{now} + 1 : zone.toUtc(present)};
}

std::optional<TimeRange> parseMoment(std::string_view text, const TextContext& context) {
    constexpr std::size_t kYear = 4, kDate = 10; // characters of "2026", "2026-01-31"
    std::string typed(text);
    TUnitSystem units(context.units.locale());
    units.replace(context.units.choices());
    if (std::min(typed.find_first_not_of("0123456789"), typed.size()) == kYear) {
        units.setUnit(UnitTypeId::Date, UnitId::YearMonthDay);
        if (typed.size() > kDate && typed[kDate] == 'T') // as ISO 8601 parts date and time
            typed[kDate] = ' ';
    }
    const std::optional<DateTime> begin = parseDateTime(units, typed);
    if (!begin)
        return {};
    DateTime end = *begin;
    switch (parseDate(units, typed) ? -1 : std::ranges::count(typed, ':')) {
    case -1:
        ++end.day;
        break;
    case 0: // "3 PM"
        ++end.hour;
        break;
    case 1:
        ++end.minute;
        break;
    default:
        ++end.second;
    }
    return TimeRange{context.zone.toUtc(*begin), context.zone.toUtc(end)};
}

bool RecordCriteria::any() const { return *this != RecordCriteria(); }

std::vector<RowIndex> findRecords(const LogSpec& log, const Table& table, std::span<const Column* const> columns,
                                  const RecordCriteria& criteria, const TextContext& context) {
    const DateTimeColumn& times = log.timesOf(table);
    std::vector<RowIndex> rows = allRows(table);
    if (criteria.time != TimeRange())
        std::erase_if(rows, [&](RowIndex row) { return !times.has(row) || !criteria.time.holds(times.at(row)); });
    for (const NameCriterion& name : namesOf(log, criteria))
        if (name.wanted && name.column)
            keepNamed(rows, table.columnOf(*name.column), *name.wanted, context);
        else if (name.wanted)
            rows.clear();
    return rowsReading(columns, std::move(rows), context, criteria.words);
}

std::vector<OccurringName> namesIn(const LogSpec& log, const Table& table, RecordName what,
                                   const TextContext& context) {
    std::vector<OccurringName> names;
    const RecordCriteria none;
    const auto all = namesOf(log, none);
    const auto name = std::ranges::find(all, what, &NameCriterion::what);
    if (!name->column)
        return names;
    const Column& column = table.columnOf(*name->column);
    std::unordered_set<std::string> keys;
    std::unordered_map<std::string, int> alike;
    for (RowIndex row = 0; row < column.rowCount(); ++row)
        if (const auto [key, isNew] = keys.insert(column.namedKey(row)); isNew) {
            names.push_back({*key, key->empty() ? std::string() : column.text(row, context)});
            ++alike[names.back().shown];
        }
    for (OccurringName& each : names)
        if (alike[each.shown] > 1)
            each.shown += " (" + each.key + ")";
    return names;
}

std::vector<RecordName> unknownNames(const LogSpec& log, const Table& table, const RecordCriteria& criteria) {
    std::vector<RecordName> unknown;
    for (const NameCriterion& name : namesOf(log, criteria)) {
        if (!name.wanted || name.wanted->empty())
            continue;
        bool known = false;
        if (const auto* names = static_cast<const NamesTable*>(
                table.store() ? table.store()->existingSingletonOf(name.names) : nullptr))
            for (RowIndex row = 0; row < names->rowCount() && !known; ++row)
                known = means(*name.wanted, names->key(row), names->name(row));
        if (const Column* column = name.column ? &table.columnOf(*name.column) : nullptr; column && !known)
            for (RowIndex row = 0; row < table.rowCount() && !known; ++row)
                known = sameInAnyCase(*name.wanted, column->namedKey(row));
        if (!known)
            unknown.push_back(name.what);
    }
    return unknown;
}

} // namespace quobrix
