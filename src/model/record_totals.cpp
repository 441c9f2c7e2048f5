#include "model/record_totals.h"

#include "base/no_value.h"
#include "model/trip_log.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/unit_system.h"

#include <cmath>

namespace quobrix {
namespace {

// What a damaged column may hold counts for nothing, or one record would stand for all.
bool counts(double figure) { return std::isfinite(figure) && hasValue(figure) && figure > 0; }
bool counts(std::int64_t number) { return number > 0; }

/// The sum of a column's numbers of all RECORDS. The column itself is asked: a list of 100,000 waits for it.
template <class Number, class C>
Number sum(std::span<const TableRows> records) {
    Number total{};
    for (const TableRows& part : records) {
        const C& column = part.table->column<C>();
        for (const RowIndex row : part.rows)
            if (column.has(row))
                if (const auto number = static_cast<Number>(column.at(row)); counts(number))
                    total += number;
    }
    return total;
}

} // namespace

std::int64_t totalTime(std::span<const TableRows> trips) {
    std::int64_t total = 0;
    for (const TableRows& part : trips) {
        const auto& start = part.table->column<TTripLogStartTimeColumn>();
        const auto& end = part.table->column<TTripLogEndTimeColumn>();
        for (const RowIndex row : part.rows)
            if (const auto seconds = TripDurationColumn::between(start, end, row); seconds && counts(*seconds))
                total += *seconds;
    }
    return total;
}

double totalDistance(std::span<const TableRows> trips) { return sum<double, TTripLogDistanceColumn>(trips); }

std::int64_t totalEvents(std::span<const TableRows> trips) {
    return sum<std::int64_t, TTripLogHardBrakesColumn>(trips) + sum<std::int64_t, TTripLogPanicBrakesColumn>(trips) +
           sum<std::int64_t, TTripLogHardAccelerationsColumn>(trips) +
           sum<std::int64_t, TTripLogPanicAccelerationsColumn>(trips);
}

std::vector<ShownText> tripTotals(std::span<const TableRows> trips, const TextContext& context) {
    const std::int64_t events = totalEvents(trips);
    return {ShownText::asItIs(durationText(totalTime(trips))),
            ShownText::asItIs(context.units.formatValueWithUnits(UnitTypeId::Distance, totalDistance(trips))),
            counted(TextId::TotalEvents, static_cast<std::uint64_t>(events), context.units.formatInteger(events))};
}

ShownText countText(const LogSpec& log, std::size_t count, const TextContext& context) {
    return counted(log.record, log.records, count, context.units.formatInteger(static_cast<std::int64_t>(count)));
}

ShownText totalsText(const LogSpec& log, std::span<const TableRows> records, const TextContext& context) {
    std::size_t count = 0;
    for (const TableRows& part : records)
        count += part.rows.size();
    std::string words = countText(log, count, context);
    if (log.totals)
        for (const ShownText& total : log.totals(records, context))
            words += ", " + total;
    return ShownText::asItIs(std::move(words));
}

} // namespace quobrix
