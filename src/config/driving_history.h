#pragma once

#include "tables/table.h"

#include <array>
#include <cstddef>
#include <vector>

namespace quobrix {

class TTripLogTable;

enum class Maneuver { Braking, Acceleration };

/// How hard the latest trips of a document were driven, for a person who chooses thresholds. It is read trip by trip,
/// so that a window can go on painting; nothing of the document is kept.
class DrivingHistory {
public:
    static constexpr std::size_t kMostTrips = 50;

    /// Reads the next trip of TRIPS, newest first; false if there was none any more. Trips whose speeds were not
    /// sampled, or cannot be read, count for nothing. TRIPS must be the same in all calls.
    bool readNext(const TTripLogTable& trips);

    std::size_t trips() const { return trips_.size(); }
    /// The greatest deceleration or acceleration of each trip, m/s2; 0 for a trip without any.
    std::vector<double> greatest(Maneuver maneuver) const;

    /// In how many trips a logger with these thresholds would have counted at least one maneuver of each kind.
    struct Counts {
        std::size_t hard = 0, extreme = 0;
        bool operator==(const Counts&) const = default;
    };
    /// As a logger counts: a maneuver lasts while the change of speed from sample to sample is above the lower
    /// threshold, and is an extreme one, and no hard one, if it comes above the upper one. m/s2: hard, extreme.
    Counts count(Maneuver maneuver, const std::array<double, 2>& thresholds) const;

private:
    std::vector<std::vector<double>>
        trips_;         ///< of each the changes from sample to sample, m/s2; gaining speed: above 0
    RowIndex read_ = 0; ///< rows, from the end
};

} // namespace quobrix
