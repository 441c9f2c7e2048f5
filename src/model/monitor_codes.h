#pragma once

#include "base/result.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// What of a vehicle's drives its monitors wait for.
enum class DriveNeed { Warmups, ColdStarts, Cruise, Idle, Decelerations };
inline constexpr std::size_t kDriveNeeds = 5;
/// By DriveNeed: how many, or s of cruise and idle.
using DriveAmounts = std::array<std::int64_t, kDriveNeeds>;

/// A monitor of SAE J1979, and what a vehicle must have been driven like for it to have run, as makers usually ask.
struct Monitor {
    std::string name;
    DriveAmounts needs{};
    bool operator==(const Monitor&) const = default;
};

inline constexpr const char* kMonitorsFile = "monitorcodes.txt";
inline constexpr std::size_t kLongestMonitorName = 60; ///< characters
inline constexpr std::int64_t kMostOfANeed = 100'000;

/// The monitors of TEXT: UTF-8 lines of a name, a tab, and what it needs ("cruise=300,idle=120"; "warmups",
/// "coldstarts", "decelerations"). Empty lines do not count. The first other one makes the list unusable, since a need
/// that is not read would make a monitor likely too early: Corrupt.
Result<std::vector<Monitor>> readMonitors(std::string_view text);
/// The user's, else those that are delivered; none without either.
Result<std::vector<Monitor>> loadMonitors();
/// Of FOLDERS, the first that has them.
Result<std::vector<Monitor>> loadMonitors(const std::vector<std::filesystem::path>& folders);

} // namespace quobrix
