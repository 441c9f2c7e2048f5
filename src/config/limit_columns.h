#pragma once

#include "model/logger_tables.h"

namespace quobrix {

// 2 g: no road vehicle brakes or speeds up harder.
QUOBRIX_COLUMN_CLASS(BrakingThresholdColumn, AscendingColumn, "BrakingThresholdColumn", Acceleration, "Threshold",
                     "The deceleration above which a braking maneuver is of this kind.",
                     Required.between(0, 2 * 9.80665))
QUOBRIX_COLUMN_CLASS(AccelerationThresholdColumn, AscendingColumn, "AccelerationThresholdColumn", Acceleration,
                     "Threshold", "The acceleration above which a maneuver is of this kind.",
                     Required.between(0, 2 * 9.80665))

/// A hard and an extreme threshold, to be written to the logger.
class BrakingThresholdsTable final : public Table {
    QUOBRIX_TABLE_CLASS(BrakingThresholdsTable, false)
};
class AccelerationThresholdsTable final : public Table {
    QUOBRIX_TABLE_CLASS(AccelerationThresholdsTable, false)
};

} // namespace quobrix
