#include "model/trip_tables.h"

#include "support/sample_trip.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

/// What the sample table of the first trip shows, row by row.
std::vector<std::string> shownSamples(const TQuobrixDocument& document) {
    const TUnitSystem units;
    const TimeZone zone;
    const std::vector<RecordTable> tables = tripTables(&document.trips(), 0, {units, zone});
    std::vector<std::string> rows;
    for (RowIndex row = 0; row < tables[0].columns.front().column->rowCount(); ++row) {
        std::string& line = rows.emplace_back();
        for (const RecordTable::Shown& shown : tables[0].columns) {
            line += shown.column->text(row, {units, zone}) + "|";
            const Value value = shown.column->value(row);
            EXPECT_EQ(std::holds_alternative<std::monostate>(value), line.ends_with("||")) << line;
        }
    }
    return rows;
}

TEST(TripTables, SeriesOfAnyIntervalAreLinedUp) {
    TQuobrixDocument document;
    test::addTrip(document, test::kStart);
    auto& samples = *document.trips().column<TTripLogSampleTableColumn>().object(0);
    samples.removeRows(0, 61);
    samples.insertRows(0, 3);
    samples.speed().setInterval(4);
    samples.speed().setAll({0, 36, 72});
    samples.series(0).setSeries({3, 1, false, {0, 20, 40}});
    samples.series(1).setSeries({3, 3, false, {0, 60}});
    samples.series(2).setSeries({3, 6, false, {0, 80}});
    samples.series(3).setSeries({3, 10, false, {0, 100}}); // goes on when no speed is sampled any more
    EXPECT_EQ(shownSamples(document), (std::vector<std::string>{
                                          "1|00:00:00|0.0 m/s|0.00 %|0.00 %|0.00 %|0.00 %|",
                                          "2|00:00:01||20.00 %||||",
                                          "3|00:00:02||40.00 %||||",
                                          "4|00:00:03|||60.00 %|||",
                                          "5|00:00:04|10.0 m/s|||||",
                                          "6|00:00:06||||80.00 %||",
                                          "7|00:00:08|20.0 m/s|||||",
                                          "8|00:00:10|||||100.00 %|",
                                      }));
    samples.removeRows(0, 3);
    for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
        samples.series(i).setSeries({});
    EXPECT_TRUE(shownSamples(document).empty());
}

} // namespace
} // namespace quobrix
