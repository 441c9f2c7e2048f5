#pragma once

#include "model/log_columns.h"
#include "model/parameters.h"
#include "model/recorded_cells.h"
#include "model/trip_types.h"

#include <cstdint>
#include <optional>

namespace quobrix {

/// The elapsed time of a sample, from the start of its trip, in s.
class SampleElapsedTimeColumn : public DerivedElapsedTimeColumn {
public:
    Value value(RowIndex row) const override;
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
class TripDurationColumn : public DerivedElapsedTimeColumn {
public:
    /// From a START to an END, in s; nothing where one is missing.
    static std::optional<std::int64_t> between(const DateTimeColumn& start, const DateTimeColumn& end, RowIndex row) {
        if (!start.has(row) || !end.has(row))
            return {};
        return static_cast<std::int64_t>(end.at(row)) - start.at(row);
    }
    Value value(RowIndex row) const override;
};

class TripDurationAgainColumn : public TripDurationColumn {
public:
    const PersistentType* repeats() const override;
};

/// Distance by duration, in m/s; nothing for a trip of no duration.
class TripAverageSpeedColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Real; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// The vehicle and driver of a trip as the logger recorded them.
struct RecordedOrigin {
    bool known = false; ///< false in files of before these were kept: they are what the trip shows
    std::string vin;    ///< empty: the vehicle did not tell
    std::int32_t driver = Element<std::int32_t>::kNone;
    bool operator==(const RecordedOrigin&) const = default;
};

template <>
struct Element<RecordedOrigin> {
    static constexpr std::size_t kSize = 9;
    static inline const RecordedOrigin kNone;
    static bool isNone(const RecordedOrigin& v) { return !v.known; }
    static void write(ByteWriter& out, const RecordedOrigin& v) {
        out.u8(v.known);
        out.text(v.vin);
        out.i32(v.driver);
    }
    static RecordedOrigin read(ByteReader& in) {
        const bool known = in.u8() != 0;
        std::string vin = in.text();
        return {known, std::move(vin), in.i32()};
    }
};

/// What was recorded stays here when a person gives the trip another vehicle or driver: by it the trip is known again.
/// Nothing shows it, so it counts as no cell. Stream: u32 count, then u8 known, the VIN, i32 driver each.
class RecordedOriginColumn : public ArrayColumn<RecordedOrigin> {
public:
    ColumnKind kind() const override { return ColumnKind::Table; }
    Value value(RowIndex) const override { return {}; }
    std::string_view textView(RowIndex, const TextContext&, TextBuffer&) const override { return {}; }
};

/// A count of events, as another column of the row holds it.
class TripCountColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override { return source().value(row); }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override {
        return source().textView(row, context, buffer);
    }

private:
    const Column& source() const { return table()->columnOf(*repeats()); }
};
#define COUNT(Name)                                                                                                    \
    class Name : public TripCountColumn {                                                                              \
    public:                                                                                                            \
        const PersistentType* repeats() const override;                                                                \
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

    /// The vehicle and driver that the logger recorded, whatever a person has made of them; always known.
    RecordedOrigin recorded(RowIndex row) const;
    /// Notes what the logger says of the trip's vehicle and driver now: no driver, and no VIN where there is one,
    /// say nothing. A vehicle or driver that a person gave the trip stays, any other becomes what was recorded.
    void setRecorded(RowIndex row, const std::string& vin, std::int32_t driver);
    /// Keeps what was recorded of the vehicle and driver, since a person is about to give the trip others.
    void keepRecorded(RowIndex row);
    /// A person has changed samples or speed bands.
    bool hasOtherParts(RowIndex row) const;
};

} // namespace quobrix
