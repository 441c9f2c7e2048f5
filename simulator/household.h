#pragma once

#include "simulator/logger.h"

namespace quobrix::sim {

enum class HouseholdVehicle { Wagon, Pickup };

/// Adds to LOGGER's memory what it has recorded in three months of 2026 (Monday, March 30 to Sunday, June 28) in one of
/// a household's two vehicles: commutes, errands, a holiday trip, trouble codes, a severe stop and activity, always the
/// same to the byte. Drivers are 1, 2 and 3. The times of day are those of Greenwich. ErrorKind::DiskFull if it does
/// not fit.
Result<void> generateHousehold(Logger& logger, HouseholdVehicle vehicle);

} // namespace quobrix::sim
