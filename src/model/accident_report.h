#pragma once

#include "model/accident_log.h"
#include "model/record_table.h"
#include "report/report.h"

#include <optional>
#include <span>
#include <vector>

namespace quobrix {

/// What the speed samples of a stop tell. Without a value (kNoValue) is what they do not tell: all of it, if there are
/// fewer than two.
struct StopFigures {
    double duration = kNoValue;            ///< s, from the first sample to the last one
    double distance = kNoValue;            ///< m, the speed between two samples being taken for even
    double largestDeceleration = kNoValue; ///< m/s2, between two neighbours; 0 if it is never slower
    double meanDeceleration = kNoValue;    ///< m/s2, from the last of the largest samples to the next standstill
};
/// SPEEDS in km/h, INTERVAL (s; above 0) apart.
StopFigures stopFigures(std::span<const std::uint8_t> speeds, std::uint32_t interval);

/// What the report of the stop of ROW tells behind the facts: the braking, and the speed bands.
std::vector<Block> stopSections(const TAccidentLogTable& stops, RowIndex row, const TextContext& context);

/// The samples and the speed bands of the stop in ROW of STOPS, which is there if ROW is.
std::vector<RecordTable> stopTables(const TAccidentLogTable* stops, std::optional<RowIndex> row,
                                    const TextContext& context);

} // namespace quobrix
