#include "config/driving_history.h"

#include "model/trip_log.h"

#include <algorithm>

namespace quobrix {
namespace {

std::vector<double> changesOf(const SpeedSamplesColumn& speeds) {
    std::vector<double> changes;
    const std::vector<std::uint8_t>& samples = speeds.values(); // km/h
    const double seconds = std::max(1u, speeds.interval());
    for (std::size_t i = 1; i < samples.size(); ++i)
        changes.push_back((samples[i] - samples[i - 1]) / 3.6 / seconds);
    return changes;
}

/// Of what counts as MANEUVER, above 0.
double sign(Maneuver maneuver) { return maneuver == Maneuver::Braking ? -1 : 1; }

} // namespace

bool DrivingHistory::readNext(const TTripLogTable& trips) {
    if (trips_.size() >= kMostTrips || read_ >= trips.rowCount())
        return false;
    const RowIndex row = trips.rowCount() - ++read_;
    const TTripLogSampleTable* samples = trips.column<TTripLogSampleTableColumn>().object(row);
    if (samples && samples->speed().values().size() > 1)
        trips_.push_back(changesOf(samples->speed()));
    return true;
}

std::vector<double> DrivingHistory::greatest(Maneuver maneuver) const {
    std::vector<double> result;
    for (const std::vector<double>& changes : trips_) {
        double most = 0;
        for (const double change : changes)
            most = std::max(most, sign(maneuver) * change);
        result.push_back(most);
    }
    return result;
}

DrivingHistory::Counts DrivingHistory::count(Maneuver maneuver, const std::array<double, 2>& thresholds) const {
    Counts counts;
    for (const std::vector<double>& changes : trips_) {
        bool anyHard = false, anyExtreme = false, lasting = false, extreme = false;
        const auto finish = [&] {
            anyHard |= lasting && !extreme;
            anyExtreme |= lasting && extreme;
            lasting = extreme = false;
        };
        for (const double change : changes) {
            const double size = sign(maneuver) * change;
            if (size <= thresholds[0]) {
                finish();
                continue;
            }
            lasting = true;
            extreme |= size > thresholds[1];
        }
        finish();
        counts.hard += anyHard;
        counts.extreme += anyExtreme;
    }
    return counts;
}

} // namespace quobrix
