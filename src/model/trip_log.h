#pragma once

#include "model/log_columns.h"
#include "model/parameters.h"

namespace quobrix {

/// The elapsed time of a sample, from the start of its trip, in s.
class SampleElapsedTimeColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

#define COLUMN(Name, Base, Unit, Heading, Tooltip, Needs)                                                              \
    QUOBRIX_COLUMN_CLASS(Name, Base, #Name, Unit, Heading, Tooltip, Needs)
#include "model/trip_parts.def"
COLUMN(TTripLogSampleElapsedTimeColumn, SampleElapsedTimeColumn, D0, "&Elapsed Time",
       "The time at which this sample was recorded, relative to the start of the trip.", Computed)

/// The speed and parameter samples of one trip; a row is one speed sample.
class TTripLogSampleTable final : public Table {
    QUOBRIX_TABLE_CLASS(TTripLogSampleTable, false)
    TTripLogSampleSpeedColumn& speed() const { return column<TTripLogSampleSpeedColumn>(); }
    /// SERIES: 0 to 3
    ParameterSeriesColumn& series(std::size_t series) const;
    static constexpr std::size_t kSeriesCount = 4;
};

/// The speed bands in force for one trip, from standstill ("Idle", 0 to 0) upward. The last one has no upper end.
class TTripLogSpeedBandsTable final : public Table {
    QUOBRIX_TABLE_CLASS(TTripLogSpeedBandsTable, false)
};

/// Which parameters were sampled during one trip, and how often.
class TTripLogParametersTable final : public Table {
    QUOBRIX_TABLE_CLASS(TTripLogParametersTable, false)
};

/// The VIN itself, where the vehicle column shows a name.
class TripVinColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Text; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// Says when the trip ended because the logger was pulled out.
class TripEndTimeColumn : public DateTimeColumn {
public:
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// End minus start, in s.
class TripDurationColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// Distance by duration, in m/s; nothing for a trip of no duration.
class TripAverageSpeedColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Real; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// A count of events, as another column of the row holds it.
class TripCountColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override { return source().value(row); }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override {
        return source().textView(row, context, buffer);
    }

protected:
    virtual const Column& source() const = 0;
};
#define COUNT(Name)                                                                                                    \
    class Name : public TripCountColumn {                                                                              \
    protected:                                                                                                         \
        const Column& source() const override;                                                                         \
    };
COUNT(TripHardBrakesColumn)
COUNT(TripPanicBrakesColumn)
COUNT(TripHardAccelerationsColumn)
COUNT(TripPanicAccelerationsColumn)
#undef COUNT

#include "model/trip_log.def"
#undef COLUMN

/// All trips of the document, in order of time.
class TTripLogTable final : public Table {
    QUOBRIX_TABLE_CLASS(TTripLogTable, true)

    /// Objects that each trip owns: the sample table with its six columns, the speed-band table with its two, the
    /// parameter table with its two, the time-per-band column and the four columns of event times.
    static constexpr std::size_t kObjectsPerTrip = (1 + 6) + (1 + 2) + (1 + 2) + 1 + 4;
    static_assert(kObjectsPerTrip == 18);
};

} // namespace quobrix
