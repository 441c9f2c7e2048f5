#pragma once

#include "model/logs.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quobrix {

// What trips, rows of trip tables, come to; a figure that a trip lacks counts as nothing.
std::int64_t totalTime(std::span<const TableRows> trips);   ///< s
double totalDistance(std::span<const TableRows> trips);     ///< m
std::int64_t totalEvents(std::span<const TableRows> trips); ///< brakes and accelerations, hard and extreme

/// The same in words: the TOTALS of the trip log.
std::vector<ShownText> tripTotals(std::span<const TableRows> trips, const TextContext& context);

/// "1,204 trips"
ShownText countText(const LogSpec& log, std::size_t count, const TextContext& context);

/// What RECORDS of LOG come to, as it stands below a list: "12 trips, 03:25:00, 123.4 Miles, 5 events".
ShownText totalsText(const LogSpec& log, std::span<const TableRows> records, const TextContext& context);

} // namespace quobrix
