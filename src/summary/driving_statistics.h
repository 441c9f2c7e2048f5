#pragma once

#include "model/fuel_use.h"
#include "model/record_filter.h"
#include "summary/summary_record.h"
#include "units/date_time.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

class NamesTable;
class TimeZone;

// What the records of the summary database come to: whoever shows a figure takes it from here. Base units.

/// What tells vehicles and drivers apart: VIN and number, else their names; empty where neither is known. Holds as long
/// as the record.
std::string_view vehicleKey(const SummaryRecord& record);
std::string_view driverKey(const SummaryRecord& record);

/// The records that count, of those whose owner outlives it.
using SummaryRows = std::vector<const SummaryRecord*>;

/// The sums that figures are made of. A record of another program adds to trips, distance, time and top speed only:
/// what else it holds cannot be known.
struct DrivingTotals {
    std::size_t trips = 0;
    double distance = 0; ///< m
    double time = 0;     ///< s
    double topSpeed = 0; ///< m/s
    // Of the trips in which events and bands were counted: those of records that are ours.
    std::size_t watchedTrips = 0;
    double watchedDistance = 0; ///< m
    double fuel = 0;            ///< US gallons, of the trips that this is known of
    double fuelDistance = 0;    ///< m in those
    std::size_t fuelTrips = 0;
    // What people say they filled in, of the stretches between full tanks that end in the time; see FuelUse.
    double filledDistance = 0, filledFuel = 0;    ///< m, US gallons
    double pricedDistance = 0, distancePrice = 0; ///< m, of the stretches with a price
    double price = 0;                             ///< of all that was filled in
    std::size_t unpricedFills = 0;                ///< that have no price
    std::size_t vehicles = 0,
                filledVehicles = 0; ///< where several are summed up: and those that stretches are known of
    /// US gallons that were filled into vehicles of which the trips tell fuel, too, and what their trips would have
    /// made of the same distance.
    double comparedFuel = 0, estimatedFuel = 0;
    std::size_t comparedTrips = 0; ///< of these
    std::array<double, SummaryRecord::kEventKinds> events{};
    /// s at idle, in bands 1 to 3 and in the top one
    std::array<double, 5> bands{};

    void add(const SummaryRecord& record);
    /// Fills and prices only.
    void addFilled(const DrivingTotals& filled);
    double bandTime() const; ///< s in all of them
};
DrivingTotals totalsOf(const SummaryRows& rows);

/// The totals of a vehicle or driver.
struct DrivingGroup {
    std::string key;  ///< empty: not known
    std::string name; ///< as the newest record has it, else the key
    DrivingTotals totals;
};
/// Those that drove farthest come first.
std::vector<DrivingGroup> byVehicle(const SummaryRows& rows);
std::vector<DrivingGroup> byDriver(const SummaryRows& rows);

/// The totals of a month of the local calendar.
struct DrivingMonth {
    int year = 0, month = 0;
    bool unfinished = false;
    DrivingTotals totals;
};
/// The twelve that end with the one of NOW, by when trips started.
std::vector<DrivingMonth> byMonth(const SummaryRows& rows, std::int32_t now, const TimeZone& zone);

/// How a parameter stood beside one of its thresholds.
struct MonitoredParameter {
    std::int32_t parameter = 0;
    std::size_t trips = 0; ///< that were counted with it
    double threshold = kNoValue;
    double timeOver = 0, timeUnder = 0; ///< s
    double highest = kNoValue, lowest = kNoValue;
};
/// By parameter and threshold.
std::vector<MonitoredParameter> monitoredParameters(const SummaryRows& rows);

/// A month of the local calendar.
struct CalendarMonth {
    int year = 0, month = 0;
    bool operator==(const CalendarMonth&) const = default;
};

/// What statistics are wanted of.
struct DrivingChoice {
    const Period* period = nullptr;                 ///< none: all that there is
    std::optional<std::string> vehicle{}, driver{}; ///< keys
    std::optional<CalendarMonth> month{};           ///< instead of the period
};
/// The time that CHOICE is about.
TimeRange rangeOf(const DrivingChoice& choice, std::int32_t now, const TimeZone& zone);

/// The RECORDS of CHOICE that start within TIME.
SummaryRows rowsOf(std::span<const SummaryRecord> records, const DrivingChoice& choice, const TimeRange& time);

/// All of them, for whoever shows them together.
struct DrivingStatistics {
    TimeRange time;
    bool unfinished = false; ///< the period goes on
    DrivingTotals totals;
    std::optional<DrivingTotals> before; ///< as many months before; none where that says nothing
    std::vector<DrivingMonth> months;    ///< of any period
    std::vector<DrivingGroup> vehicles, drivers;
    std::vector<MonitoredParameter> parameters;
};
/// FILLS are those of the open document. They tell no driver: what is wanted of one goes without.
DrivingStatistics drivingStatistics(std::span<const SummaryRecord> records, const DrivingChoice& choice,
                                    std::int32_t now, const TimeZone& zone, std::span<const FuelFill> fills = {});

/// Calls GROUPS by the names that NAMES has for them.
void rename(std::vector<DrivingGroup>& groups, const NamesTable& names);
/// Puts the key behind each of several equal names.
void tellApart(std::vector<DrivingGroup>& groups);

} // namespace quobrix
