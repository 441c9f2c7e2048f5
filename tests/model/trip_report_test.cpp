#include "model/trip_report.h"

#include "model/logs.h"
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
    /// The block of a kind in the section of HEADING; an empty one if there is none.
    template <class Kind>
    Kind find(const std::string& heading) {
        report_ = recordReport(logSpec(LogId::Trips), document_.trips(), document_.trips().rowCount() - 1, context_);
        for (const Section& section : sections(report_))
            for (const Block& block : section.blocks)
                if (const auto* found = std::get_if<Kind>(&block); found && section.heading->text == heading)
                    return *found;
        return {};
    }
    std::string fact(const std::string& heading, const std::string& label) {
        for (const Facts::Fact& fact : find<Facts>(heading).facts)
            if (fact.label == label)
                return fact.text;
        return "(no such fact)";
    }

    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
    Report report_;
};

TEST_F(TripReport, TellsTheTripInTheUsersUnits) {
    EXPECT_EQ(fact("General", "Vehicle"), "Unknown #1");
    EXPECT_EQ(report_.title, "Trip 1");
    EXPECT_EQ(fact("General", "VIN"), test::kVin);
    EXPECT_EQ(fact("General", "Driver"), "Unknown");
    EXPECT_EQ(fact("General", "Duration"), "00:10:00");
    EXPECT_EQ(fact("General", "Maximum Speed"), "75 MPH");
    EXPECT_EQ(fact("General", "Average Speed"), "45 MPH"); // 20 m/s
    EXPECT_EQ(fact("General", "Time in Top Speed Band"), "00:01:00");
}

TEST_F(TripReport, TimesAreLocalAndDurationsAreNot) {
    const struct {
        const char* zone;
        std::int32_t start; ///< of a drive of ten minutes
        const char *from, *to;
    } drives[] = {
        {"EST5EDT,M3.2.0,M11.1.0", 1'710'053'700, "03/10/2024 01:55 AM", "03/10/2024 03:05 AM"},
        {"EST5EDT,M3.2.0,M11.1.0", 1'730'613'300, "11/03/2024 01:55 AM", "11/03/2024 01:05 AM"},
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1'711'846'500, "03/31/2024 01:55 AM", "03/31/2024 03:05 AM"},
        {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", 1'712'415'300, "04/07/2024 01:55 AM", "04/07/2024 01:35 AM"},
        {"IST-5:30", 1'710'053'700, "03/10/2024 12:25 PM", "03/10/2024 12:35 PM"},
    };
    for (const auto& drive : drives) {
        SCOPED_TRACE(drive.zone);
        zone_ = *TimeZone::named(drive.zone);
        test::addTrip(document_, drive.start);
        EXPECT_EQ(fact("General", "Start Time"), drive.from);
        EXPECT_EQ(fact("General", "End Time"), drive.to);
        EXPECT_EQ(fact("General", "Duration"), "00:10:00");
    }
}

TEST_F(TripReport, CountsAndListsEventsInOrderOfTime) {
    EXPECT_EQ(fact("Brakes", "Hard (Between 3.0 m/s² and 5.0 m/s²)"), "2");
    EXPECT_EQ(fact("Brakes", "Extreme (Over 5.0 m/s²)"), "1");
    EXPECT_EQ(
        find<Grid>("Brakes").rows,
        (std::vector<Cells>{{"Hard Brake", "00:00:30"}, {"Extreme Brake", "00:01:01"}, {"Hard Brake", "00:08:20"}}));
    EXPECT_EQ(find<Grid>("Accelerations").rows, (std::vector<Cells>{{"Hard Acceleration", "00:00:05"}}));
}

TEST_F(TripReport, NamesBandsAndSharesTheTimeAmongThem) {
    EXPECT_EQ(find<Grid>("Time per Speed Band").rows,
              (std::vector<Cells>{{"Idle", "0 MPH", "0 MPH", "00:01:00", "10%"},
                                  {"Speed Band 1", "0 MPH", "45 MPH", "00:04:00", "40%"},
                                  {"Speed Band 2", "45 MPH", "60 MPH", "00:02:30", "25%"},
                                  {"Speed Band 3", "60 MPH", "70 MPH", "00:01:30", "15%"},
                                  {"Over 70 MPH", "70 MPH", "", "00:01:00", "10%"}}));
    EXPECT_EQ(find<Grid>("Time per Speed Band").shares, (std::vector{0.1, 0.4, 0.25, 0.15, 0.1}));
    auto& bands = *document_.trips().column<TTripLogSpeedBandsTableColumn>().object(0);
    bands.column<TTripLogSpeedBandToColumn>().set(0, 10 * test::kMph); // of a logger that does not tell standing apart
    EXPECT_EQ(find<Grid>("Time per Speed Band").rows[0], (Cells{"Speed Band 1", "0 MPH", "10 MPH", "00:01:00", "10%"}));
}

TEST_F(TripReport, SummarisesSamples) {
    EXPECT_EQ(find<Grid>("Parameters").rows,
              (std::vector<Cells>{{"Engine Speed", "2.00 Seconds", "13.33 Hz", "32.22 Hz", "50.00 Hz"},
                                  {"Fuel System Status 1 / 2", "5.00 Seconds", "", "", ""}}));
}

TEST_F(TripReport, LeavesOutWhatATripDoesNotHave) {
    document_.trips().insertRows(1, 1);
    EXPECT_EQ(fact("General", "Average Speed"), "");
    EXPECT_EQ(fact("Brakes", "Hard"), "");
    std::vector<std::string> headings;
    for (const Section& section : sections(report_)) {
        headings.push_back(section.heading->text);
        EXPECT_EQ(section.blocks.size(), 1u) << "no tables without rows";
    }
    EXPECT_EQ(headings, (Cells{"General", "Brakes", "Accelerations"}));

    document_.trips().column<TTripLogCommentsColumn>().set(1, "To the lake");
    EXPECT_EQ(find<Paragraph>("Comments").text, "To the lake");
}

} // namespace
} // namespace quobrix
