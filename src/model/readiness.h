#pragma once

#include "model/monitor_codes.h"
#include "tables/row_runs.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace quobrix {

class TQuobrixDocument;

// What drives make likely of a vehicle's emissions monitors, whose state no logger records.

// What counts, and from when on.
inline constexpr double kColdStart = 35;                           ///< °C of the coolant at most
inline constexpr double kWarmupRise = 22, kWarmupLeast = 70;       ///< °C
inline constexpr double kCruiseLeast = 65, kCruiseMost = 100;      ///< km/h, the mean of a stretch
inline constexpr double kCruiseSpan = 5;                           ///< km/h that its speeds are from the mean at most
inline constexpr std::int64_t kLeastCruise = 60, kLeastIdle = 30;  ///< s of a stretch
inline constexpr int kDecelerationFrom = 65, kDecelerationTo = 30; ///< km/h

/// What was sampled in a trip.
struct DriveSamples {
    std::span<const std::uint8_t> speeds{}; ///< km/h; empty: not sampled
    std::uint32_t interval = 1;             ///< s between them
    std::vector<double> coolant{};          ///< °C, kNoValue where there is none, in any interval; empty: not sampled
    std::vector<std::int32_t> brakes{};     ///< hard and extreme ones, s from the start
};

/// What a trip has of each need. Nothing where that was not sampled.
struct DriveEvidence {
    std::array<std::optional<std::int64_t>, kDriveNeeds> amounts{};
};

/// Of a trip: a warm-up cycle if the coolant rose by kWarmupRise since its first sample, and to kWarmupLeast; a cold
/// start if that sample is at most kColdStart; seconds in stretches of cruise, each taken from its first sample on for
/// as long as all of its speeds stay near their mean; seconds in stretches of standing still; and decelerations from
/// kDecelerationFrom or more to kDecelerationTo or less in which no hard brake was recorded. A sample stands for its
/// interval.
DriveEvidence evidenceOf(const DriveSamples& samples);

/// What the trips of a vehicle since its last trouble code come to, and its codes.
struct VehicleReadiness {
    std::string vehicle; ///< VIN
    /// A trouble code that it had.
    struct Code {
        std::string code;
        std::size_t times = 0;
        std::int32_t last = 0; ///< s since 1970-01-01 00:00 UTC
    };
    std::vector<Code> codes{}; ///< that with the newest record first
    std::size_t trips = 0;
    DriveAmounts amounts{};
    std::array<std::size_t, kDriveNeeds> sampledTrips{}; ///< in which what each need is told by was sampled
};

enum class Readiness { Likely, NotYet, CannotTell };
/// How a monitor stands: likely to have run if the trips had all that it needs. What is missing of needs that were
/// sampled makes it not yet; else what was not sampled makes it unknown.
struct MonitorReadiness {
    Readiness state = Readiness::Likely;
    DriveAmounts missing{};                    ///< of needs that were sampled
    std::array<bool, kDriveNeeds> unsampled{}; ///< needs of which nothing is known
};
MonitorReadiness readinessOf(const Monitor& monitor, const VehicleReadiness& vehicle);

/// Reads the trips of a document one by one, so that a window can go on painting. What is loaded for it is let go. The
/// document outlives it, and its rows stay as they are.
class ReadinessReader {
public:
    explicit ReadinessReader(TQuobrixDocument& document);

    /// Reads the next trip; false if there was none any more. A trip of no vehicle counts for nothing; parts that
    /// cannot be read count as not sampled.
    bool readNext();
    /// How much of it is read, 0 to 1.
    double progress() const;
    /// All that drove or have codes, by the numbers of their trips, more first.
    std::vector<VehicleReadiness> vehicles() const;

private:
    VehicleReadiness& vehicle(const std::string& vin);

    TQuobrixDocument& document_;
    RowIndex next_ = 0;
    std::unordered_map<std::string, VehicleReadiness> vehicles_;
};

} // namespace quobrix
