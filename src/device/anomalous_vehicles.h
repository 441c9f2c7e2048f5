#pragma once

#include "base/result.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// A vehicle that a logger must be told of, since it does not follow the standard; and the car type that tells it.
struct AnomalousVehicle {
    std::int32_t carType = 0;
    std::string name;
    bool operator==(const AnomalousVehicle&) const = default;
};

inline constexpr std::int32_t kNormalVehicle = 0;
/// The logger has met such a vehicle and has not been told which.
inline constexpr std::int32_t kAnomalousVehicleDetected = 255;

/// The delivered list of them, in the folder of what is delivered.
inline constexpr const char* kAnomalousVehiclesFile = "AnomalyVehicles.dat";

/// The vehicles of a list: UTF-8 lines of a car type (1 to 254), a tab and the vehicle; empty ones do not count.
/// Corrupt if a line is none such or tells what another has told, or if there is none; the detail says which.
Result<std::vector<AnomalousVehicle>> readAnomalousVehicles(std::string_view text);
/// The same of a file; also the errors of reading it.
Result<std::vector<AnomalousVehicle>> loadAnomalousVehicles(const std::filesystem::path& file);

} // namespace quobrix
