#pragma once

#include "simulator/logger.h"

#include <cstdint>

namespace quobrix::sim {

struct HistoryPlan {
    std::uint32_t trips = 0;          ///< 1 to 100,000
    std::uint64_t seed = 0;           ///< the same seed gives the same bytes
    std::int32_t end = 0;             ///< of the last trip, logger time
    std::int32_t endSecondsOfDay = 0; ///< the same by the clock on the wall, which the driver's habits follow
};

/// Adds a plausible history to LOGGER's memory: everyday trips of two vehicles and a few drivers recorded with its
/// configuration, trouble codes with freeze frames, activity, and severe stops. ErrorKind::DiskFull if it does not fit,
/// Unsupported if it would begin before 1970.
Result<void> generateHistory(Logger& logger, const HistoryPlan& plan);

} // namespace quobrix::sim
