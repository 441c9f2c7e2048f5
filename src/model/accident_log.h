#pragma once

#include "model/log_columns.h"

namespace quobrix {

/// The speed samples of one stop, the last one being the standstill.
QUOBRIX_COLUMN_CLASS(TAccidentLogSamplesColumn, SpeedSamplesColumn, "TAccidentLogSamplesColumn", Speed, " ", "",
                     Recorded)
QUOBRIX_COLUMN_CLASS(TAccidentLogSpeedBandFromColumn, RealColumn, "TAccidentLogSpeedBandFromColumn", Speed, "From",
                     "The lower end of this speed band.", Recorded)
QUOBRIX_COLUMN_CLASS(TAccidentLogSpeedBandToColumn, RealColumn, "TAccidentLogSpeedBandToColumn", Speed, "Through",
                     "The upper end of this speed band.", Recorded)

/// Heads the time of each sample of a stop before the standstill, which is computed.
QUOBRIX_COLUMN_CLASS(TAccidentLogSampleElapsedTimeColumn, ElapsedTimeColumn, "TAccidentLogSampleElapsedTimeColumn", D0,
                     "Elapsed Time", "Time until the vehicle comes to a complete stop.", Recorded)

/// The speed bands in force at one stop, from standstill upward.
class TAccidentLogSpeedBandsTable final : public Table {
    QUOBRIX_TABLE_CLASS(TAccidentLogSpeedBandsTable, false)
};

/// The standstill by the logger's own clock, whatever the other times have been moved by: "202403010815".
class StopTimestampColumn : public DateTimeColumn {
public:
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// Groups the sample numbers of a stop, which are counted and not kept.
class StopSampleNumbersColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Table; }
    Value value(RowIndex) const override { return {}; }
    std::string_view textView(RowIndex, const TextContext&, TextBuffer&) const override { return {}; }
};

#define COLUMN(Name, Base, Key, Unit, Heading, Tooltip, Needs)                                                         \
    QUOBRIX_COLUMN_CLASS(Name, Base, Key, Unit, Heading, Tooltip, Needs)
#include "model/accident_log.def"
#undef COLUMN

/// Severe stops, in order of time.
class TAccidentLogTable final : public Table {
    QUOBRIX_TABLE_CLASS(TAccidentLogTable, true)

    /// Objects that each stop owns: its samples, and its speed-band table with two columns.
    static constexpr std::size_t kObjectsPerStop = 1 + (1 + 2);
};

} // namespace quobrix
