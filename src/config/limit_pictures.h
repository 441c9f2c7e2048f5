#pragma once

#include "config/driving_history.h"
#include "drawing/text_measure.h"
#include "tables/column.h"

#include <array>

namespace quobrix {

/// The speed bands that LIMITS (m/s) part, as a coloured scale. Says so if they do not ascend.
Drawing drawSpeedBands(const std::array<double, 3>& limits, const TextContext& context, Size room,
                       const TextMeasure& measure);

/// THRESHOLDS (m/s2: hard, extreme) on a scale under the trips of HISTORY, and in how many of these a logger would have
/// counted a maneuver.
Drawing drawThresholds(Maneuver maneuver, const std::array<double, 2>& thresholds, const DrivingHistory& history,
                       const TextContext& context, Size room, const TextMeasure& measure);

} // namespace quobrix
