#include "model/trip_type_report.h"

#include "model/trip_log.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quobrix {
namespace {

std::string countText(std::size_t count, const TextContext& context) {
    return context.units.formatInteger(static_cast<std::int64_t>(count));
}

std::string distanceText(double metres, const TextContext& context) {
    return context.units.formatValueWithUnits(UnitTypeId::Distance, metres);
}

/// A line for each of GROUPS: trips, time, distance, amount if PAID, share of the distance.
void addGroups(Report& report, TextOf<0> heading, TextOf<0> what, TextOf<0> none,
               const std::vector<TripTypeGroup>& groups, const TripTypeTotals& all, const TextContext& context) {
    const bool paid = all.paid > 0;
    Grid grid{{{text(what), false},
               {text(TextId::TypeReportTrips)},
               {text(TextId::TypeReportTime)},
               {text(TextId::FactDistance)}},
              {}};
    if (paid)
        grid.columns.push_back({text(TextId::TypeReportAmount)});
    if (all.distance > 0)
        grid.columns.push_back({text(TextId::HeadingShare)});
    for (const TripTypeGroup& group : groups) {
        const TripTypeTotals& totals = group.totals;
        std::vector<std::string>& row = grid.rows.emplace_back();
        row = {group.name.empty() ? text(none) : group.name, countText(totals.trips, context),
               durationText(totals.time), distanceText(totals.distance, context)};
        if (paid)
            row.push_back(totals.paid > 0 ? amountText(totals.amount, context) : std::string());
        if (all.distance > 0) {
            grid.shares.push_back(totals.distance / all.distance);
            row.push_back(shareText(grid.shares.back()));
        }
    }
    report.blocks.emplace_back(Heading{text(heading)});
    report.blocks.emplace_back(std::move(grid));
}

/// The time of the report, from the first moment to before the second: where it is open, that in which its trips
/// started. There are some.
std::pair<std::int64_t, std::int64_t> endsOf(const TripTypeReport& report) {
    std::int64_t first = std::numeric_limits<std::int32_t>::max(), last = 0;
    for (const TableRows& part : report.trips) {
        const auto& starts = part.table->column<TTripLogStartTimeColumn>();
        for (const RowIndex row : part.rows)
            if (starts.has(row)) {
                first = std::min<std::int64_t>(first, starts.at(row));
                last = std::max<std::int64_t>(last, starts.at(row));
            }
    }
    return {report.time.from.value_or(std::min(first, last)), report.time.until.value_or(last + 1)};
}

/// "Last Month (10/01/2026 to 10/31/2026)"
ShownText periodText(const TripTypeReport& report, const TextContext& context) {
    const auto [first, last] = endsOf(report);
    const auto day = [&](std::int64_t time) {
        return dateText(context.units, context.zone.toLocal(static_cast<std::int32_t>(time)));
    };
    const ShownText days = text(TextId::TypeReportFromTo, day(first), day(last - 1));
    return report.period.empty() ? days : text(TextId::WithAside, report.period, days);
}

void addOdometers(Report& report, const TripTypeReport& of, const TextContext& context) {
    std::vector<TableRows> all;
    std::vector<std::pair<std::string, std::string>> vehicles; // keys with names
    for (const TableRows& part : of.trips) {
        all.push_back({part.table, allRows(*part.table)});
        const auto& names = part.table->column<TTripLogVinColumn>();
        for (const RowIndex row : part.rows)
            if (std::ranges::none_of(vehicles, [&](const auto& each) { return each.first == names.at(row); }))
                vehicles.emplace_back(names.at(row), names.text(row, context));
    }
    const auto ends = endsOf(of);
    Grid grid{{{text(TextId::FactVehicle), false}, {text(TextId::TypeReportAtStart)}, {text(TextId::TypeReportAtEnd)}},
              {}};
    for (const auto& [key, name] : vehicles) {
        const auto at = [&, vehicle = &key](std::int64_t time) {
            const std::optional<double> odometer = odometerAt(of.readings, all, *vehicle, time);
            return odometer ? distanceText(*odometer, context) : std::string();
        };
        std::vector<std::string> row{name, at(ends.first), at(ends.second)};
        if (!row[1].empty() || !row[2].empty())
            grid.rows.push_back(std::move(row));
    }
    if (grid.rows.empty())
        return;
    report.blocks.emplace_back(Heading{text(TextId::TypeReportOdometers)});
    report.blocks.emplace_back(std::move(grid));
}

/// What the one of GROUPS is called that the trip in ROW of COLUMN belongs to.
std::string nameIn(const std::vector<TripTypeGroup>& groups, const Column& column, RowIndex row,
                   const TextContext& context) {
    const auto group = std::ranges::find(groups, column.namedKey(row), &TripTypeGroup::key);
    return group != groups.end() && !group->name.empty() ? group->name : column.text(row, context);
}

/// The driver's log. What is the same in all trips has been said above.
void addTrips(Report& report, const TripTypeReport& of, const std::vector<TripTypeGroup>& vehicles,
              const std::vector<TripTypeGroup>& drivers, bool types, bool paid, const TextContext& context) {
    Grid grid{{{text(TextId::TypeReportDate), false},
               {text(TextId::TypeReportStart), false},
               {text(TextId::TypeReportEnd), false}},
              {}};
    const auto add = [&](bool shown, TextOf<0> heading, bool figures = false) {
        if (shown)
            grid.columns.push_back({text(heading), figures});
    };
    add(vehicles.size() > 1, TextId::FactVehicle);
    add(true, TextId::StatisticsDriver);
    add(types, TextId::TypeReportType);
    add(true, TextId::FactDistance, true);
    add(paid, TextId::TypeReportAmount, true);
    add(true, TextId::TypeReportPurpose);
    for (const TableRows& part : of.trips) {
        const Table& trips = *part.table;
        const auto& starts = trips.column<TTripLogStartTimeColumn>();
        const auto& ends = trips.column<TTripLogEndTimeColumn>();
        for (const RowIndex row : part.rows) {
            std::vector<std::string>& cells = grid.rows.emplace_back(3);
            if (starts.has(row)) {
                const DateTime start = context.zone.toLocal(starts.at(row));
                cells[0] = dateText(context.units, start);
                cells[1] = timeText(context.units, start);
            }
            if (ends.has(row))
                cells[2] = timeText(context.units, context.zone.toLocal(ends.at(row)));
            if (vehicles.size() > 1)
                cells.push_back(nameIn(vehicles, trips.column<TTripLogVinColumn>(), row, context));
            cells.push_back(nameIn(drivers, trips.column<TTripLogDriverIDColumn>(), row, context));
            if (types)
                cells.push_back(trips.column<TTripLogTripTypeColumn>().text(row, context));
            cells.push_back(trips.column<TTripLogDistanceColumn>().text(row, context));
            if (paid) {
                const std::optional<std::int64_t> amount = amountOf(trips, row, of.types, context.zone);
                cells.push_back(amount ? amountText(*amount, context) : std::string());
            }
            cells.push_back(trips.column<TTripLogCommentsColumn>().text(row, context));
        }
    }
    report.blocks.emplace_back(Heading{text(TextId::TypeReportTrips)});
    report.blocks.emplace_back(std::move(grid));
}

} // namespace

std::string amountText(std::int64_t hundredths, const TextContext& context) {
    return context.units.formatNumber(static_cast<double>(hundredths) / 100, 2);
}

Report tripTypeReport(const TripTypeReport& of, const TextContext& context) {
    Report report{text(TextId::TypeReport), {}, true};
    const TripTypeTotals all = tripTypeTotals(of.trips, of.types, context.zone);
    if (all.trips == 0) {
        if (!of.period.empty())
            report.blocks.emplace_back(Facts{{{text(TextId::TypeReportPeriod), of.period}}});
        report.blocks.emplace_back(Paragraph{text(TextId::TypeReportNoTrips)});
        return report;
    }
    Facts facts{{{text(TextId::TypeReportPeriod), periodText(of, context)}}};
    const auto groups = [&](TripTypeGrouping by) { return groupTrips(of.trips, by, of.types, context); };
    const auto vehicles = groups(TripTypeGrouping::Vehicle), drivers = groups(TripTypeGrouping::Driver),
               types = groups(TripTypeGrouping::Type), months = groups(TripTypeGrouping::Month);
    const auto addOnly = [&](TextOf<0> what, TextOf<0> none, const std::vector<TripTypeGroup>& common) {
        if (common.size() == 1)
            facts.facts.push_back({text(what), common.front().name.empty() ? text(none) : common.front().name});
    };
    addOnly(TextId::FactVehicle, TextId::StatisticsUnknown, vehicles);
    addOnly(TextId::TypeReportType, TextId::TypeReportNone, types);
    facts.facts.push_back({text(TextId::TypeReportTrips), countText(all.trips, context)});
    facts.facts.push_back({text(TextId::TypeReportTime), durationText(all.time)});
    facts.facts.push_back({text(TextId::FactDistance), distanceText(all.distance, context)});
    if (all.paid > 0)
        facts.facts.push_back({text(TextId::TypeReportAmount), amountText(all.amount, context)});
    report.blocks.emplace_back(std::move(facts));
    if (all.unpaid > 0)
        report.blocks.emplace_back(
            Paragraph{counted(TextId::TypeReportUnpaid, all.unpaid, countText(all.unpaid, context))});
    const auto add = [&](TextOf<0> heading, TextOf<0> what, TextOf<0> none, const std::vector<TripTypeGroup>& common) {
        if (common.size() > 1)
            addGroups(report, heading, what, none, common, all, context);
    };
    add(TextId::TypeReportTypes, TextId::TypeReportType, TextId::TypeReportNone, types);
    add(TextId::TypeReportMonths, TextId::StatisticsMonth, TextId::StatisticsUnknown, months);
    add(TextId::StatisticsVehicles, TextId::FactVehicle, TextId::StatisticsUnknown, vehicles);
    add(TextId::StatisticsDrivers, TextId::StatisticsDriver, TextId::StatisticsUnknown, drivers);
    if (!of.readings.empty())
        addOdometers(report, of, context);
    if (of.eachTrip)
        addTrips(report, of, vehicles, drivers, types.size() > 1, all.paid > 0, context);
    return report;
}

} // namespace quobrix
