#include "model/trip_report.h"

#include "support/sample_trip.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

using Cells = std::vector<std::string>;

class TripReport : public ::testing::Test {
protected:
    void SetUp() override {
        UnitChoices choices;
        choices.choose(UnitTypeId::Speed, UnitId::MilePerHour);
        choices.decimals[static_cast<std::size_t>(UnitTypeId::Speed)] = 0;
        units_.replace(choices);
        test::addTrip(document_, 1'000'000'000);
    }
    const Report::Section& section(const std::string& heading) {
        report_ = tripReport(document_.trips(), document_.trips().rowCount() - 1, context_);
        for (const Report::Section& section : report_.sections)
            if (section.heading == heading)
                return section;
        static const Report::Section none;
        return none;
    }
    static std::string textOf(const Report::Section& section, const std::string& label) {
        for (const Report::Row& row : section.rows)
            if (row.label == label)
                return row.text;
        return "(no such row)";
    }

    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone greenwich_;
    TextContext context_{units_, greenwich_};
    Report report_;
};

TEST_F(TripReport, TellsTheTripInTheUsersUnits) {
    const Report::Section general = section("General");
    EXPECT_EQ(report_.title, "Trip 1");
    EXPECT_EQ(textOf(general, "Vehicle"), "Unknown #1");
    EXPECT_EQ(textOf(general, "VIN"), test::kVin);
    EXPECT_EQ(textOf(general, "Driver"), "Unknown");
    EXPECT_EQ(textOf(general, "Duration"), "00:10:00");
    EXPECT_EQ(textOf(general, "Maximum Speed"), "75 MPH");
    EXPECT_EQ(textOf(general, "Average Speed"), "45 MPH"); // 20 m/s
    EXPECT_EQ(textOf(general, "Time in Top Speed Band"), "00:01:00");
}

TEST_F(TripReport, CountsAndListsEventsInOrderOfTime) {
    const Report::Section brakes = section("Brakes");
    EXPECT_EQ(textOf(brakes, "Hard (Between 3.0 m/s² and 5.0 m/s²)"), "2") << renderText(report_);
    EXPECT_EQ(textOf(brakes, "Extreme (Over 5.0 m/s²)"), "1");
    EXPECT_EQ(
        brakes.grid.rows,
        (std::vector<Cells>{{"Hard Brake", "00:00:30"}, {"Extreme Brake", "00:01:01"}, {"Hard Brake", "00:08:20"}}));
    EXPECT_EQ(section("Accelerations").grid.rows, (std::vector<Cells>{{"Hard Acceleration", "00:00:05"}}));
}

TEST_F(TripReport, NamesBandsAndSharesTheTimeAmongThem) {
    const Report::Section bands = section("Time per Speed Band");
    EXPECT_EQ(bands.grid.rows, (std::vector<Cells>{{"Idle", "0 MPH", "0 MPH", "00:01:00"},
                                                   {"Speed Band 1", "0 MPH", "45 MPH", "00:04:00"},
                                                   {"Speed Band 2", "45 MPH", "60 MPH", "00:02:30"},
                                                   {"Speed Band 3", "60 MPH", "70 MPH", "00:01:30"},
                                                   {"Over 70 MPH", "70 MPH", "", "00:01:00"}}));
    ASSERT_EQ(bands.bars.size(), 5u);
    EXPECT_DOUBLE_EQ(bands.bars[1].share, 0.4);
}

TEST_F(TripReport, SummarisesSamplesThatHaveAValueAndNoCodes) {
    EXPECT_EQ(section("Parameters").grid.rows,
              (std::vector<Cells>{{"Engine Speed", "2.00 Seconds", "13.33 Hz", "50.00 Hz", "32.22 Hz"},
                                  {"Fuel System Status 1 / 2", "5.00 Seconds", "", "", ""}}));
}

TEST_F(TripReport, LeavesOutWhatATripDoesNotHave) {
    document_.trips().insertRows(1, 1);
    EXPECT_TRUE(section("Parameters").heading.empty());
    EXPECT_TRUE(section("Time per Speed Band").heading.empty());
    EXPECT_TRUE(section("Comments").heading.empty());
    EXPECT_EQ(textOf(section("General"), "Average Speed"), "");
    EXPECT_TRUE(section("Brakes").grid.headings.empty());
    EXPECT_EQ(textOf(section("Brakes"), "Hard"), "");

    document_.trips().column<TTripLogCommentsColumn>().set(1, "To the lake");
    EXPECT_EQ(textOf(section("Comments"), ""), "To the lake");
}

TEST_F(TripReport, RendersColumnsOfEvenWidth) {
    section("General");
    const std::string text = renderText(report_);
    EXPECT_NE(text.find("\nBrakes\n"
                        "  Hard (Between 3.0 m/s² and 5.0 m/s²)  2\n"
                        "  Extreme (Over 5.0 m/s²)               1\n"
                        "  Event          Elapsed Time\n"
                        "  Hard Brake         00:00:30\n"),
              std::string::npos)
        << text;
}

} // namespace
} // namespace quobrix
