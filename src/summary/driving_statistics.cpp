#include "summary/driving_statistics.h"

#include "base/utf8.h"
#include "model/names.h"
#include "texts/text.h"
#include "units/time_zone.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace quobrix {
namespace {

/// More than any trip comes to: what a damaged file says beyond it counts for nothing, as what is no number.
constexpr double kMostMetres = 1e9, kMostSeconds = 1e8, kMostSpeed = 1e3, kMostGallons = 1e5;

double sound(double value, double most) { return value > 0 && value <= most ? value : 0; }

bool isFigure(double value) { return hasValue(value) && std::isfinite(value); }

std::string_view firstKnown(const SummaryText& first, const SummaryText& second) {
    return first.known() ? first.view() : second.known() ? second.view() : std::string_view();
}

template <class Key>
std::vector<DrivingGroup> grouped(const SummaryRows& rows, const Key& keyOf, SummaryText SummaryRecord::*name) {
    struct Member {
        DrivingTotals totals;
        const SummaryRecord* newest = nullptr; ///< of those that have a name
    };
    std::unordered_map<std::string_view, Member> members;
    for (const SummaryRecord* record : rows) {
        Member& member = members[keyOf(*record)];
        member.totals.add(*record);
        if ((record->*name).known() && (!member.newest || record->start >= member.newest->start))
            member.newest = record;
    }
    std::vector<DrivingGroup> groups;
    for (const auto& [key, member] : members)
        groups.push_back(
            {std::string(key), validUtf8(member.newest ? (member.newest->*name).view() : key), member.totals});
    std::ranges::sort(groups, [](const DrivingGroup& a, const DrivingGroup& b) {
        return a.totals.distance != b.totals.distance ? a.totals.distance > b.totals.distance : a.key < b.key;
    });
    return groups;
}

TimeRange rangeOf(const CalendarMonth& month, const TimeZone& zone) {
    const auto first = [&](int ahead) {
        return zone.toUtc(normalized({.year = month.year, .month = month.month + ahead}));
    };
    return {first(0), first(1)};
}

/// What CHOICE is about, moved back by its own length.
TimeRange rangeBefore(const DrivingChoice& choice, std::int32_t now, const TimeZone& zone) {
    if (choice.month) {
        const DateTime before = normalized({.year = choice.month->year, .month = choice.month->month - 1});
        return rangeOf(CalendarMonth{before.year, before.month}, zone);
    }
    const Period& period = *choice.period;
    DateTime today = zone.toLocal(now);
    today.month -= period.months;
    const DateTime then{.year = today.year, .month = today.month, .day = 1, .hour = 12};
    return rangeOf(period, zone.toUtc(then), zone);
}

/// What was filled in, by time and vehicle.
class Fills {
public:
    explicit Fills(std::span<const FuelFill> fills) : fills_(fills), uses_(fuelUses(fills)) {}

    /// Within TIME, into VEHICLE, or into any.
    DrivingTotals within(const TimeRange& time, const std::optional<std::string>& vehicle) const {
        DrivingTotals totals;
        for (std::size_t i = 0; i < fills_.size(); ++i) {
            const FuelFill& fill = fills_[i];
            // By as much of the VIN as the database keeps.
            if (!fill.time || !time.holds(*fill.time) || (vehicle && SummaryText(fill.vehicle).view() != *vehicle))
                continue;
            totals.price += fill.totalPrice.value_or(0);
            totals.unpricedFills += !fill.totalPrice;
            if (const std::optional<FuelUse>& use = uses_[i]) {
                totals.filledDistance += use->distance;
                totals.filledFuel += use->fuel;
                if (use->price) {
                    totals.pricedDistance += use->distance;
                    totals.distancePrice += *use->price;
                }
            }
        }
        return totals;
    }

private:
    std::span<const FuelFill> fills_;
    std::vector<std::optional<FuelUse>> uses_;
};

/// Of one vehicle.
void compareFuel(DrivingTotals& totals) {
    if (totals.fuelDistance > 0 && totals.filledFuel > 0) {
        totals.comparedTrips = totals.fuelTrips;
        totals.comparedFuel = totals.filledFuel;
        totals.estimatedFuel = totals.filledDistance * totals.fuel / totals.fuelDistance;
    }
}

} // namespace

std::string_view vehicleKey(const SummaryRecord& record) { return firstKnown(record.vin, record.vehicleName); }
std::string_view driverKey(const SummaryRecord& record) { return firstKnown(record.driver, record.driverName); }

void DrivingTotals::add(const SummaryRecord& record) {
    ++trips;
    distance += sound(record.distance, kMostMetres);
    time += sound(static_cast<double>(record.duration()), kMostSeconds);
    topSpeed = std::max(topSpeed, sound(record.topSpeed, kMostSpeed));
    if (!record.ours())
        return;
    ++watchedTrips;
    watchedDistance += sound(record.distance, kMostMetres);
    if (sound(record.fuel, kMostGallons) > 0 && sound(record.distance, kMostMetres) > 0) {
        fuel += record.fuel;
        fuelDistance += record.distance;
        ++fuelTrips;
    }
    for (std::size_t kind = 0; kind < events.size(); ++kind)
        events[kind] += record.events[kind].count;
    bands[0] += sound(record.idleTime, kMostSeconds);
    for (std::size_t band = 0; band < record.bandTimes.size(); ++band)
        bands[band + 1] += sound(record.bandTimes[band], kMostSeconds);
    bands[4] += sound(record.topBandTime, kMostSeconds);
}

void DrivingTotals::addFilled(const DrivingTotals& filled) {
    filledDistance += filled.filledDistance;
    filledFuel += filled.filledFuel;
    pricedDistance += filled.pricedDistance;
    distancePrice += filled.distancePrice;
    price += filled.price;
    unpricedFills += filled.unpricedFills;
}

double DrivingTotals::bandTime() const { return std::accumulate(bands.begin(), bands.end(), 0.0); }

DrivingTotals totalsOf(const SummaryRows& rows) {
    DrivingTotals totals;
    for (const SummaryRecord* record : rows)
        totals.add(*record);
    return totals;
}

std::vector<DrivingGroup> byVehicle(const SummaryRows& rows) {
    return grouped(rows, vehicleKey, &SummaryRecord::vehicleName);
}
std::vector<DrivingGroup> byDriver(const SummaryRows& rows) {
    std::vector<DrivingGroup> drivers = grouped(rows, driverKey, &SummaryRecord::driverName);
    for (DrivingGroup& driver : drivers) // a number alone reads like a figure
        if (!driver.key.empty() && driver.name == driver.key)
            driver.name = text(TextId::WithAside, text(TextId::StatisticsUnknown), driver.key);
    return drivers;
}

std::vector<DrivingMonth> byMonth(const SummaryRows& rows, std::int32_t now, const TimeZone& zone) {
    constexpr int kMonths = 12;
    const DateTime today = zone.toLocal(now);
    std::vector<DrivingMonth> months;
    std::vector<std::int64_t> starts; // of each month, and of the one behind the last
    for (int back = kMonths - 1; back >= -1; --back) {
        const DateTime first = normalized({.year = today.year, .month = today.month - back});
        starts.push_back(zone.toUtc(first));
        if (back >= 0)
            months.push_back({first.year, first.month, back == 0, {}});
    }
    for (const SummaryRecord* record : rows) {
        const auto behind = std::ranges::upper_bound(starts, std::int64_t{record->start});
        if (behind != starts.begin() && behind != starts.end())
            months[static_cast<std::size_t>(behind - starts.begin() - 1)].totals.add(*record);
    }
    return months;
}

std::vector<MonitoredParameter> monitoredParameters(const SummaryRows& rows) {
    std::map<std::pair<std::int32_t, double>, MonitoredParameter> parameters;
    for (const SummaryRecord* record : rows)
        for (const SummaryRecord::Slot& slot : record->parameters) {
            const bool sampled =
                slot.timeOver > 0 || slot.timeUnder > 0 || isFigure(slot.highest) || isFigure(slot.lowest);
            if (slot.used == 0 || !sampled || !record->ours())
                continue;
            const double threshold = isFigure(slot.threshold) ? slot.threshold : kNoValue;
            MonitoredParameter& sum = parameters[{slot.parameter, threshold}];
            sum.parameter = slot.parameter;
            sum.threshold = threshold;
            ++sum.trips;
            sum.timeOver += sound(slot.timeOver, kMostSeconds);
            sum.timeUnder += sound(slot.timeUnder, kMostSeconds);
            if (isFigure(slot.highest))
                sum.highest = hasValue(sum.highest) ? std::max(sum.highest, slot.highest) : slot.highest;
            if (isFigure(slot.lowest))
                sum.lowest = hasValue(sum.lowest) ? std::min(sum.lowest, slot.lowest) : slot.lowest;
        }
    std::vector<MonitoredParameter> result;
    for (const auto& [key, sum] : parameters)
        result.push_back(sum);
    return result;
}

TimeRange rangeOf(const DrivingChoice& choice, std::int32_t now, const TimeZone& zone) {
    if (choice.month)
        return rangeOf(*choice.month, zone);
    return choice.period ? rangeOf(*choice.period, now, zone) : TimeRange();
}

SummaryRows rowsOf(std::span<const SummaryRecord> records, const DrivingChoice& choice, const TimeRange& time) {
    SummaryRows rows;
    for (const SummaryRecord& record : records)
        if ((!choice.vehicle || vehicleKey(record) == *choice.vehicle) &&
            (!choice.driver || driverKey(record) == *choice.driver) && time.holds(record.start))
            rows.push_back(&record);
    return rows;
}

DrivingStatistics drivingStatistics(std::span<const SummaryRecord> records, const DrivingChoice& choice,
                                    std::int32_t now, const TimeZone& zone, std::span<const FuelFill> fills) {
    const SummaryRows ofAllTimes = rowsOf(records, choice, {});
    const auto within = [&](const TimeRange& time) {
        SummaryRows rows;
        std::ranges::copy_if(ofAllTimes, std::back_inserter(rows),
                             [&](const SummaryRecord* record) { return time.holds(record->start); });
        return rows;
    };
    DrivingStatistics result;
    result.time = rangeOf(choice, now, zone);
    if (choice.month || choice.period) {
        result.unfinished = choice.month ? result.time.holds(now) : choice.period->months == 0;
        if (!result.unfinished)
            result.before = totalsOf(within(rangeBefore(choice, now, zone)));
    }
    const SummaryRows rows = within(result.time);
    result.totals = totalsOf(rows);
    result.months = byMonth(ofAllTimes, now, zone);
    result.vehicles = byVehicle(rows);
    result.drivers = byDriver(rows);
    result.parameters = monitoredParameters(rows);
    if (choice.driver || fills.empty())
        return result;
    const Fills filled(fills);
    result.totals.addFilled(filled.within(result.time, choice.vehicle));
    if (result.before)
        result.before->addFilled(filled.within(rangeBefore(choice, now, zone), choice.vehicle));
    for (DrivingMonth& month : result.months)
        month.totals.addFilled(filled.within(rangeOf(CalendarMonth{month.year, month.month}, zone), choice.vehicle));
    result.totals.vehicles = result.vehicles.size();
    for (DrivingGroup& vehicle : result.vehicles) {
        vehicle.totals.addFilled(filled.within(result.time, vehicle.key));
        compareFuel(vehicle.totals);
        result.totals.filledVehicles += vehicle.totals.filledFuel > 0;
        result.totals.comparedTrips += vehicle.totals.comparedTrips;
        result.totals.comparedFuel += vehicle.totals.comparedFuel;
        result.totals.estimatedFuel += vehicle.totals.estimatedFuel;
    }
    return result;
}

void rename(std::vector<DrivingGroup>& groups, const NamesTable& names) {
    for (DrivingGroup& group : groups)
        if (std::string known = names.nameOf(group.key); !known.empty())
            group.name = std::move(known);
}

void tellApart(std::vector<DrivingGroup>& groups) {
    std::map<std::string, std::size_t> counts;
    for (const DrivingGroup& group : groups)
        ++counts[group.name];
    for (DrivingGroup& group : groups)
        if (counts[group.name] > 1 && !group.key.empty())
            group.name = text(TextId::WithAside, group.name, oneLine(group.key));
}

} // namespace quobrix
