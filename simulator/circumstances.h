#pragma once

#include "simulator/log_records.h"
#include "simulator/random.h"
#include "simulator/vehicle_model.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What made-up histories are made of beside the drives.
namespace quobrix::sim {

/// PATTERN with its last five characters made up and the check digit that belongs to them.
std::string makeVin(std::string_view pattern, Random& random);

/// TIME is in s since 1970, SECONDSOFDAY by the clock on the wall, and GAP the s for which the car has stood.
Surroundings surroundingsAt(std::int64_t time, std::int64_t secondsOfDay, double gap, Random& random);

/// The trouble CODE with the freeze frame of a moment of DRIVE when it may well have come up. START is that of the
/// drive, logger time.
Trouble troubleDuring(const Drive& drive, const Vehicle& vehicle, std::int32_t start, std::string_view code,
                      bool whenCold, Random& random);

} // namespace quobrix::sim
