#pragma once

#include "base/result.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <vector>

namespace quobrix::sim {

inline constexpr std::size_t kParameters = 24;
inline constexpr std::size_t kLongestDrive = 7 * 86400; ///< s

/// A drive as someone recorded or made it: readings at rising moments, not evenly spaced.
struct Drive {
    std::vector<double> seconds; ///< from the first reading, which is at 0
    std::vector<double> speed;   ///< km/h, 0 to 255
    /// By parameter identifier less one, in the parameter's metric unit: kNoValue where a reading lacks it; empty if
    /// the drive does not have it at all. Speed is not among them.
    std::array<std::vector<double>, kParameters> parameter;
};

/// Parses a drive: a header line with the columns "seconds" and "speed_kmh" and any of engine_rpm, coolant_c, load_pct,
/// throttle_pct, maf_gps, map_kpa, iat_c, timing_deg, stft_b1_pct, ltft_b1_pct, o2_b1s1_v and battery_v in any order,
/// then one line a reading. ErrorKind::Corrupt with the line's number for whatever is not so: names unknown, missing or
/// twice, cells that are no number, seconds that do not rise from 0, more than 4 million lines, more than seven days.
Result<Drive> parseDrive(std::string_view text);

/// The drive in a file; the error names it.
Result<Drive> readDrive(const std::filesystem::path& path);

} // namespace quobrix::sim
