#pragma once

#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix::test {

class SampleColourColumn : public SelectionColumn {
public:
    std::vector<Selection> selections() const override { return {{1, "Red"}, {2, "Green"}, {3, "Grey"}}; }

protected:
    std::string selection(std::int32_t code) const override {
        for (const Selection& each : selections())
            if (each.code == code)
                return each.text;
        return {};
    }
};

QUOBRIX_COLUMN_CLASS(SampleKey, TextColumn, "SampleKey", D0, "&Key", "", Required.uniqueAnyCase())
QUOBRIX_COLUMN_CLASS(SampleName, TextColumn, "SampleName", D0, "&Name", "",
                     Optional.characters(2, 5).betterCharacters(3, 5).betterUniqueAnyCase())
QUOBRIX_COLUMN_CLASS(SampleSpeed, RealColumn, "SampleSpeed", Speed, "Speed", "",
                     Optional.between(0, 255 / 3.6).betterBetween(0, 100 / 3.6))
QUOBRIX_COLUMN_CLASS(SampleCount, IntegerColumn, "SampleCount", D0, "Count", "", Recommended.atLeast(1))
QUOBRIX_COLUMN_CLASS(SampleFlag, BooleanColumn, "SampleFlag", D0, "Flag", "", Optional)
QUOBRIX_COLUMN_CLASS(SampleTime, DateTimeColumn, "SampleTime", D0, "Time", "", Optional)
QUOBRIX_COLUMN_CLASS(SampleElapsed, ElapsedTimeColumn, "SampleElapsed", D0, "Elapsed", "", Optional)
QUOBRIX_COLUMN_CLASS(SampleColour, SampleColourColumn, "SampleColour", D0, "Colour", "", Optional)
QUOBRIX_COLUMN_CLASS(SampleRecorded, RealColumn, "SampleRecorded", Speed, "Recorded", "", Recorded)
QUOBRIX_COLUMN_CLASS(SampleNumber, RowNumberColumn, "SampleNumber", D0, "Number", "", Computed)

/// One column of each kind. Stands alone, so its columns need no store.
class SampleTable final : public Table {
public:
    static constexpr PersistentType kType{"SampleTable"};
    enum { Key, Name, Speed, Count, Flag, Time, Elapsed, Colour, Recorded, Number };

    explicit SampleTable(RowIndex rows = 0, RowRequirements rules = {.editable = true})
        : spec_{kType,
                kTypesOf<SampleKey, SampleName, SampleSpeed, SampleCount, SampleFlag, SampleTime, SampleElapsed,
                         SampleColour, SampleRecorded, SampleNumber>,
                {},
                SourceText("Sample"),
                rules} {
        if (rows > 0)
            insertRows(0, rows);
    }
    const TableSpec& spec() const override { return spec_; }

    /// The stored columns as they would lie in a file.
    Bytes bytes() const {
        ByteWriter out;
        for (std::size_t i = 0; i < columnCount(); ++i)
            column(i).write(out);
        return out.take();
    }

private:
    TableSpec spec_;
};

/// Values of base units as they are, English numbers, Greenwich time.
class TablesTest : public ::testing::Test {
protected:
    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
};

} // namespace quobrix::test
