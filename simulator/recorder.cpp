#include "simulator/recorder.h"

#include <algorithm>
#include <cmath>

namespace quobrix::sim {

namespace {

constexpr int kSevereStopSpeed = 40; // km/h
constexpr std::size_t kSevereStopSeconds = 8;
constexpr std::size_t kSecondsBeforeStop = 20;
constexpr std::int32_t kFuelSystemStatus = 11; // of two systems, in the low and the high byte

using Speeds = std::vector<std::uint8_t>;

Speeds speedsAtTicks(const Drive& drive) {
    const auto last = static_cast<std::size_t>(drive.seconds.back());
    Speeds speeds(last + 1);
    std::size_t row = 0;
    for (std::size_t tick = 0; tick <= last; ++tick) {
        while (row + 1 < drive.seconds.size() && drive.seconds[row + 1] <= static_cast<double>(tick))
            ++row;
        speeds[tick] = static_cast<std::uint8_t>(std::lround(drive.speed[row]));
    }
    return speeds;
}

double distanceOf(const Speeds& speeds) {
    std::uint64_t doubled = 0;
    for (std::size_t tick = 1; tick < speeds.size(); ++tick)
        doubled += static_cast<std::uint64_t>(speeds[tick - 1] + speeds[tick]);
    return static_cast<double>(doubled) / 2 / 3.6;
}

void sortSeconds(Trip& trip) {
    for (std::size_t tick = 0; tick + 1 < trip.speeds.size(); ++tick) {
        const std::uint8_t speed = trip.speeds[tick];
        const auto band = std::find_if(trip.bandLimit.begin(), trip.bandLimit.end(),
                                       [speed](double upperEnd) { return upperEnd >= speed; });
        if (speed == 0)
            ++trip.idleSeconds;
        else
            ++trip.bandSeconds[static_cast<std::size_t>(band - trip.bandLimit.begin())];
    }
}

/// Events of one direction (SIGN 1: gaining speed, -1: losing it) by their two thresholds.
void findEvents(Trip& trip, int sign, EventKind hard, EventKind extreme) {
    const double first = trip.threshold[hard];
    const double second = trip.threshold[extreme];
    bool lasting = false;
    bool isExtreme = false;
    std::uint32_t begin = 0;
    const auto finish = [&] {
        if (lasting)
            trip.events[isExtreme ? extreme : hard].push_back(begin);
        lasting = isExtreme = false;
    };
    for (std::size_t tick = 1; tick < trip.speeds.size(); ++tick) {
        const double change = sign * (trip.speeds[tick] - trip.speeds[tick - 1]) / 3.6; // m/s2
        if (change > first) {
            if (!lasting)
                begin = static_cast<std::uint32_t>(tick);
            lasting = true;
            isExtreme = isExtreme || change > second;
        } else {
            finish();
        }
    }
    finish();
}

Series sample(const Drive& drive, std::int32_t parameter, std::int32_t interval) {
    Series series{
        .parameter = parameter, .interval = interval, .twoValues = parameter == kFuelSystemStatus, .samples = {}};
    const std::vector<double>& readings = drive.parameter[static_cast<std::size_t>(parameter - 1)];
    double newest = kNoValue;
    std::size_t row = 0;
    for (double instant = 0; instant <= std::floor(drive.seconds.back()); instant += interval) {
        for (; row < readings.size() && drive.seconds[row] <= instant; ++row)
            if (hasValue(readings[row]))
                newest = readings[row];
        series.samples.push_back(newest);
    }
    return series;
}

std::vector<Stop> severeStops(const Trip& trip) {
    std::vector<Stop> stops;
    for (std::size_t tick = 1; tick < trip.speeds.size(); ++tick) {
        if (trip.speeds[tick] != 0 || trip.speeds[tick - 1] == 0)
            continue;
        const auto standstill = trip.speeds.begin() + static_cast<std::ptrdiff_t>(tick);
        const auto before = [&](std::size_t seconds) { return static_cast<std::ptrdiff_t>(std::min(seconds, tick)); };
        if (*std::max_element(standstill - before(kSevereStopSeconds), standstill) <= kSevereStopSpeed)
            continue;
        Stop stop;
        stop.vin = trip.vin;
        stop.speeds.assign(standstill - before(kSecondsBeforeStop), standstill + 1);
        stop.standstill = trip.start + static_cast<std::int32_t>(tick);
        stop.start = stop.standstill - static_cast<std::int32_t>(stop.speeds.size() - 1);
        stop.maximumSpeed = *std::max_element(stop.speeds.begin(), stop.speeds.end());
        stop.bandLimit = trip.bandLimit;
        stops.push_back(std::move(stop));
    }
    return stops;
}

} // namespace

Recording recordDrive(const Drive& drive, const Configuration& configuration, const Circumstances& circumstances) {
    Recording recording;
    Trip& trip = recording.trip;
    trip.speeds = speedsAtTicks(drive);
    trip.vin = circumstances.vin;
    trip.driver = circumstances.driver;
    trip.disconnected = circumstances.disconnected;
    trip.start = circumstances.start;
    trip.end = circumstances.start + static_cast<std::int32_t>(trip.speeds.size() - 1);
    trip.distance = distanceOf(trip.speeds);
    trip.maximumSpeed = *std::max_element(trip.speeds.begin(), trip.speeds.end());
    trip.threshold = configuration.threshold;
    trip.bandLimit = configuration.bandLimitKmh();
    sortSeconds(trip);
    findEvents(trip, -1, HardBrake, ExtremeBrake);
    findEvents(trip, 1, HardAcceleration, ExtremeAcceleration);

    auto free = trip.series.begin();
    for (std::size_t slot = 0; slot < configuration.parameter.size() && free != trip.series.end(); ++slot) {
        const std::int32_t parameter = parameterOfCode(configuration.parameter[slot]);
        if (parameter > 1) // neither empty nor speed, which every trip has
            *free++ = sample(drive, parameter, secondsOfIntervalCode(configuration.interval[slot]));
    }
    recording.stops = severeStops(trip);
    return recording;
}

} // namespace quobrix::sim
