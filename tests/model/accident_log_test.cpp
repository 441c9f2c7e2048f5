#include "model/accident_report.h"

#include "model/logs.h"
#include "model/quobrix_document.h"
#include "report/render.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

TEST(StopFigures, ComeFromItsSamples) {
    const auto mps = [](double kmh) { return kmh / 3.6; };
    const struct {
        std::vector<std::uint8_t> speeds;
        std::uint32_t interval;
        StopFigures expected;
    } cases[] = {
        {{}, 1, {}},
        {{50}, 1, {}},
        {{90, 72, 36, 0}, 1, {3, mps(45 + 72 + 36), mps(36), mps(90) / 3}},
        {{90, 72, 36, 0}, 2, {6, mps(45 + 72 + 36) * 2, mps(18), mps(90) / 6}},
        // From the last of the largest ones; a later rise counts for nothing.
        {{60, 60, 30, 0, 10, 0, 0}, 1, {6, mps(30 + 60 + 30 + 10), mps(30), mps(60) / 2}},
        {{60, 40}, 1, {1, mps(50), mps(20), kNoValue}}, // it does not end at a standstill
        {{0, 20}, 1, {1, mps(10), 0, kNoValue}},
        {{0, 0}, 1, {1, 0, 0, kNoValue}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.speeds));
        const StopFigures figures = stopFigures(c.speeds, c.interval);
        for (const auto figure : {&StopFigures::duration, &StopFigures::distance, &StopFigures::largestDeceleration,
                                  &StopFigures::meanDeceleration}) {
            EXPECT_EQ(hasValue(figures.*figure), hasValue(c.expected.*figure));
            EXPECT_NEAR(figures.*figure, c.expected.*figure, 1e-9);
        }
    }
}

TEST(SpeedSamples, AreStoredAsWholeKilometresPerHour) {
    TAccidentLogSamplesColumn samples;
    samples.setAll({9});
    const std::pair<double, int> cases[] = {{0, 0},      {0.4, 0},      {0.5, 1},     {1.49, 1},  {30.5, 31},
                                            {99.5, 100}, {254.49, 254}, {254.5, 255}, {300, 255}, {-3, 0}};
    for (const auto& [kmh, stored] : cases) {
        samples.setValue(0, kmh / 3.6);
        EXPECT_EQ(samples.at(0), stored) << kmh;
    }
}

class AccidentLog : public ::testing::Test {
protected:
    void SetUp() override {
        stops_.insertRows(0, 2);
        stops_.column<TAccidentLogTableStartTimeColumn>().set(0, 3600);
        stops_.column<TAccidentLogTableTimestampColumn>().set(0, 1'709'280'059); // 2024-03-01 08:00:59 UTC
        auto& samples = stops_.column<TAccidentLogSpeedSamplesColumn>().makeObject(0);
        samples.setAll({90, 72, 36, 0});
        samples.setInterval(2);
        auto& bands = stops_.column<TAccidentLogSpeedBandsTableColumn>().makeObject(0);
        bands.insertRows(0, 3);
        bands.column<TAccidentLogSpeedBandFromColumn>().setAll({0, 0, 20});
        bands.column<TAccidentLogSpeedBandToColumn>().setAll({0, 20, kNoValue});
    }

    TQuobrixDocument document_;
    TAccidentLogTable& stops_ = document_.store().singleton<TAccidentLogTable>();
    const TUnitSystem units_;
    const TimeZone zone_;
    const TextContext context_{units_, zone_};
};

TEST_F(AccidentLog, TimestampsAreCompact) {
    const auto& stamps = stops_.column<TAccidentLogTableTimestampColumn>();
    EXPECT_EQ(stamps.text(0, context_), "202403010800");
    EXPECT_EQ(stamps.text(1, context_), "");
}

TEST_F(AccidentLog, TablesCountDownToTheStandstill) {
    const std::vector<RecordTable> tables = stopTables(&stops_, 0, context_);
    std::vector<std::string> rows;
    for (RowIndex row = 0; row < tables[0].columns.front().column->rowCount(); ++row) {
        std::string& line = rows.emplace_back();
        for (const RecordTable::Shown& shown : tables[0].columns)
            line += shown.column->text(row, context_) + "|";
    }
    EXPECT_EQ(rows, (std::vector<std::string>{"1|00:00:06|25.0 m/s|", "2|00:00:04|20.0 m/s|", "3|00:00:02|10.0 m/s|",
                                              "4|00:00:00|0.0 m/s|"}));
    EXPECT_EQ(tables[1].rowTitle(0), "Idle");
    EXPECT_EQ(tables[1].rowTitle(2), "Over 20.0 m/s");
    EXPECT_TRUE(stopTables(&stops_, 1, context_)[0].columns.empty());
    const ObjectId samples = stops_.column<TAccidentLogSpeedSamplesColumn>().at(0);
    document_.store().noteDamage(samples, TAccidentLogSamplesColumn::kType.id(), ShownText::asItIs("it was damaged"));
    EXPECT_EQ(stopTables(&stops_, 0, context_)[0].emptyText, "The samples of this severe stop cannot be read.");
}

TEST_F(AccidentLog, ReportsTellTheBraking) {
    const std::string report = renderText(recordReport(logSpec(LogId::Accidents), stops_, 0, context_));
    EXPECT_NE(report.find("\nBraking\n"
                          "  Duration              00:00:06\n"
                          "  Distance              85.00 m\n"
                          "  Largest Deceleration  5.0 m/s²\n"
                          "  Mean Deceleration     4.2 m/s²\n"),
              std::string::npos)
        << report;
    EXPECT_NE(report.find("Speed Band 1"), std::string::npos) << report;
    EXPECT_EQ(renderText(recordReport(logSpec(LogId::Accidents), stops_, 1, context_)).find("Braking"),
              std::string::npos)
        << "nothing is known of it";
}

} // namespace
} // namespace quobrix
