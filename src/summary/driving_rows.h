#pragma once

#include "export/export_file.h"
#include "summary/driving_statistics.h"

#include <array>
#include <string>
#include <vector>

namespace quobrix {

class TUnitSystem;

/// Statistics for other programs, a figure a row: what it is of, whose it is, what it is called with its unit, the
/// value, the change in percent from before, and of how many trips: who reads a rate of few trips is to know. UNITS
/// write numbers as the reader wants them.
inline constexpr std::size_t kDrivingCells = 6;
using DrivingRow = std::array<std::string, kDrivingCells>;
DrivingRow drivingHeadings();
std::vector<DrivingRow> drivingRows(const DrivingStatistics& statistics, const TUnitSystem& units);

/// The same as a table.
ExportContent drivingContent(const DrivingStatistics& statistics, ShownText title, const TUnitSystem& units);

} // namespace quobrix
