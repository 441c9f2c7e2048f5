#pragma once

#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quobrix {

class TTripLogSampleTable;
class TTripLogSpeedBandsTable;

// Tables that stand alone while a person edits what a trip owns.

/// s from the start of the trip
class EditedSampleTimeColumn : public DerivedElapsedTimeColumn {
public:
    Value value(RowIndex row) const override;
};

inline constexpr double kFastestSample = 255.4 / 3.6; ///< m/s; a sample is a byte of km/h
QUOBRIX_COLUMN_CLASS(SpeedProfileTimeColumn, EditedSampleTimeColumn, "TTripLogSampleElapsedTimeColumn", D0,
                     "&Elapsed Time", "The time at which this sample was recorded, relative to the start of the trip.",
                     Computed)
QUOBRIX_COLUMN_CLASS(SpeedProfileSpeedColumn, RealColumn, "TTripLogSampleSpeedColumn", Speed, "&Speed",
                     "The vehicle's speed at the given time.", Required.between(0, kFastestSample))
QUOBRIX_COLUMN_CLASS(EditedBandFromColumn, RealColumn, "TTripLogSpeedBandFromColumn", Speed, "From",
                     "The lower end of this speed band.", Required.atLeast(0))
QUOBRIX_COLUMN_CLASS(EditedBandToColumn, RealColumn, "TTripLogSpeedBandToColumn", Speed, "Through",
                     "The upper end of this speed band.", Optional.atLeast(0))

class SpeedProfileTable final : public Table {
    QUOBRIX_TABLE_CLASS(SpeedProfileTable, false)
    std::uint32_t interval = 1; ///< s
};

class EditedBandsTable final : public Table {
    QUOBRIX_TABLE_CLASS(EditedBandsTable, false)
};

std::unique_ptr<SpeedProfileTable> editedSamples(const TTripLogSampleTable& samples);
/// As samples are stored: km/h, to the nearest whole one.
std::vector<std::uint8_t> samplesOf(const SpeedProfileTable& edited);
std::unique_ptr<EditedBandsTable> editedBands(const TTripLogSpeedBandsTable& bands);

} // namespace quobrix
