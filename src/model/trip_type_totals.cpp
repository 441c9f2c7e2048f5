#include "model/trip_type_totals.h"

#include "base/fold_case.h"
#include "base/no_value.h"
#include "model/trip_log.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace quobrix {
namespace {

constexpr double kMetresPerMile = 1609.344, kMetresPerKilometre = 1000;
constexpr double kMostAmount = 1e13; // of a trip, so that no sum overflows

double distanceOf(const Table& trips, RowIndex row) {
    const double distance = trips.column<TTripLogDistanceColumn>().at(row);
    return std::isfinite(distance) && hasValue(distance) && distance > 0 ? distance : 0;
}

std::int64_t timeOf(const Table& trips, RowIndex row) {
    return std::max<std::int64_t>(
        TripDurationColumn::between(trips.column<TTripLogStartTimeColumn>(), trips.column<TTripLogEndTimeColumn>(), row)
            .value_or(0),
        0);
}

const std::string& typeOf(const Table& trips, RowIndex row) { return trips.column<TTripLogTripTypeColumn>().at(row); }

bool hasRates(const std::vector<TripType>& types, std::string_view name) {
    const std::string wanted = foldCase(name);
    return std::ranges::any_of(types, [&](const TripType& type) { return type.rate && foldCase(type.name) == wanted; });
}

/// What a trip has in common with others.
struct Kind {
    std::string key; ///< empty: nothing
    std::string name;
    std::int64_t order = 0;
};

/// TYPES: the names of the types in their order.
Kind kindOf(const Table& trips, RowIndex row, TripTypeGrouping by, const std::vector<std::string>& types,
            const TextContext& context) {
    const auto named = [&](const Column& column) { return Kind{column.namedKey(row), column.text(row, context), 0}; };
    switch (by) {
    case TripTypeGrouping::Vehicle:
        return named(trips.column<TTripLogVinColumn>());
    case TripTypeGrouping::Driver:
        return named(trips.column<TTripLogDriverIDColumn>());
    case TripTypeGrouping::Month: {
        const auto& starts = trips.column<TTripLogStartTimeColumn>();
        if (!starts.has(row))
            return {};
        const DateTime start = context.zone.toLocal(starts.at(row));
        return {std::to_string(start.year * 12 + start.month),
                text(monthName(start.month)) + ' ' + std::to_string(start.year), start.year * 12 + start.month};
    }
    case TripTypeGrouping::Type:
        break;
    }
    const std::string key = foldCase(typeOf(trips, row));
    const auto name = std::ranges::find_if(types, [&](const auto& each) { return foldCase(each) == key; });
    return {key, name != types.end() ? *name : std::string(), name - types.begin()};
}

} // namespace

std::optional<std::int64_t> amountOf(const Table& trips, RowIndex row, const std::vector<TripType>& types,
                                     const TimeZone& zone) {
    const auto& starts = trips.column<TTripLogStartTimeColumn>();
    const std::string& name = typeOf(trips, row);
    if (name.empty() || !starts.has(row))
        return {};
    const TripType* rate = rateAt(types, name, secondsFromFields(zone.toLocal(starts.at(row))));
    if (!rate)
        return {};
    const double amount =
        distanceOf(trips, row) / (rate->perMile ? kMetresPerMile : kMetresPerKilometre) * *rate->rate * 100;
    return amount < kMostAmount ? std::optional<std::int64_t>(std::llround(amount)) : std::nullopt;
}

const ColumnSpec& TripAmountColumn::spec() const {
    static constexpr PersistentType type{"TripAmountColumn"};
    static constexpr ColumnSpec spec{type,
                                     type.name,
                                     UnitTypeId::D2,
                                     SourceText("Amount"),
                                     SourceText("The rate of the trip's type on its day, for its distance."),
                                     requirements::Computed};
    return spec;
}

Value TripAmountColumn::value(RowIndex row) const {
    const std::optional<std::int64_t> amount = amountOf(trips_, row, types_, zone_);
    return amount ? Value(static_cast<double>(*amount) / 100) : Value();
}

std::string_view TripAmountColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const Value amount = value(row);
    const auto* figure = std::get_if<double>(&amount);
    return figure ? context.units.formatNumber(*figure, 2, buffer.figure) : "";
}

void TripTypeTotals::add(const Table& table, RowIndex row, const std::vector<TripType>& types, const TimeZone& zone) {
    ++trips;
    distance += distanceOf(table, row);
    time += timeOf(table, row);
    if (const std::optional<std::int64_t> paidFor = amountOf(table, row, types, zone)) {
        amount += *paidFor;
        ++paid;
    } else if (hasRates(types, typeOf(table, row))) {
        ++unpaid;
    }
}

TripTypeTotals tripTypeTotals(std::span<const TableRows> trips, const std::vector<TripType>& types,
                              const TimeZone& zone) {
    TripTypeTotals totals;
    for (const TableRows& part : trips)
        for (const RowIndex row : part.rows)
            totals.add(*part.table, row, types, zone);
    return totals;
}

std::vector<TripTypeGroup> groupTrips(std::span<const TableRows> trips, TripTypeGrouping by,
                                      const std::vector<TripType>& types, const TextContext& context) {
    const std::vector<std::string> names =
        by == TripTypeGrouping::Type ? occurringTypes(trips, types) : std::vector<std::string>();
    std::vector<Kind> kinds;
    std::vector<TripTypeTotals> totals;
    std::unordered_map<std::string, std::size_t> places;
    for (const TableRows& part : trips)
        for (const RowIndex row : part.rows) {
            Kind kind = kindOf(*part.table, row, by, names, context);
            const auto [place, isNew] = places.try_emplace(kind.key, kinds.size());
            if (isNew) {
                kinds.push_back(std::move(kind));
                totals.emplace_back();
            }
            totals[place->second].add(*part.table, row, types, context.zone);
        }
    const bool byDistance = by == TripTypeGrouping::Vehicle || by == TripTypeGrouping::Driver;
    std::vector<std::size_t> order(kinds.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
        if (kinds[a].key.empty() || kinds[b].key.empty())
            return !kinds[a].key.empty() && kinds[b].key.empty();
        return byDistance ? totals[a].distance > totals[b].distance : kinds[a].order < kinds[b].order;
    });
    std::vector<TripTypeGroup> groups;
    for (const std::size_t i : order) {
        const auto& [key, name, place] = kinds[i];
        const bool alone = key.empty() || std::ranges::count(kinds, name, &Kind::name) == 1;
        groups.push_back({alone ? name : text(TextId::WithAside, name, key), totals[i], key});
    }
    return groups;
}

void keepType(std::vector<RowIndex>& rows, const Table& trips, std::string_view type) {
    const std::string wanted = foldCase(type);
    std::erase_if(rows, [&](RowIndex row) { return foldCase(typeOf(trips, row)) != wanted; });
}

std::vector<std::string> occurringTypes(std::span<const TableRows> trips, const std::vector<TripType>& types) {
    std::vector<std::string> names = namesOf(types);
    std::unordered_map<std::string, bool> met;
    for (const std::string& name : names)
        met[foldCase(name)] = true;
    for (const TableRows& part : trips)
        for (const RowIndex row : part.rows)
            if (const std::string& name = typeOf(*part.table, row);
                !name.empty() && !std::exchange(met[foldCase(name)], true))
                names.push_back(name);
    return names;
}

std::optional<double> odometerAt(std::span<const OdometerReading> readings, std::span<const TableRows> trips,
                                 std::string_view vehicle, std::int64_t time) {
    const OdometerReading* nearest = nullptr;
    for (const OdometerReading& reading : readings) {
        if (foldCase(reading.vehicle) != foldCase(vehicle))
            continue;
        const bool before = reading.time <= time;
        if (!nearest || (before ? nearest->time > time || reading.time >= nearest->time
                                : nearest->time > time && reading.time < nearest->time))
            nearest = &reading;
    }
    if (!nearest)
        return {};
    const auto [from, until] = std::minmax(nearest->time, time);
    double driven = 0;
    for (const TableRows& part : trips) {
        const auto& starts = part.table->column<TTripLogStartTimeColumn>();
        const auto& vehicles = part.table->column<TTripLogVinColumn>();
        for (const RowIndex row : part.rows)
            if (starts.has(row) && starts.at(row) >= from && starts.at(row) < until &&
                foldCase(vehicles.at(row)) == foldCase(vehicle))
                driven += distanceOf(*part.table, row);
    }
    const double odometer = nearest->odometer + (nearest->time <= time ? driven : -driven);
    return std::isfinite(odometer) && odometer >= 0 ? std::optional(odometer) : std::nullopt;
}

} // namespace quobrix
