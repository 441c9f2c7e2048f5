#include "model/readiness.h"

#include "base/no_value.h"
#include "model/readiness_report.h"
#include "report/render.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quobrix {
namespace {

/// What a trip has of NEED; -1: it was not sampled.
std::int64_t amountOf(DriveNeed need, const DriveSamples& samples) {
    return evidenceOf(samples).amounts[static_cast<std::size_t>(need)].value_or(-1);
}

/// So many samples of each speed.
std::vector<std::uint8_t> drive(std::initializer_list<std::pair<int, int>> parts) {
    std::vector<std::uint8_t> speeds;
    for (const auto& [count, speed] : parts)
        speeds.insert(speeds.end(), static_cast<std::size_t>(count), static_cast<std::uint8_t>(speed));
    return speeds;
}

TEST(Readiness, WarmUpsAndColdStartsAreToldByTheCoolant) {
    const struct {
        std::vector<double> coolant;
        std::int64_t warmups, coldStarts;
    } cases[] = {
        {{20, 69.9}, 0, 1},   {{20, 70}, 1, 1}, {{35, 70}, 1, 1},     {{35.1, 70}, 1, 0},   {{48, 70}, 1, 0},
        {{49, 70}, 0, 0},     {{60, 82}, 1, 0}, {{90, 60, 90}, 0, 0}, {{20, 80, 30}, 1, 1}, {{kNoValue, 20, 70}, 1, 1},
        {{kNoValue}, -1, -1}, {{}, -1, -1},     {{-40}, 0, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.coolant));
        EXPECT_EQ(amountOf(DriveNeed::Warmups, {.coolant = c.coolant}), c.warmups);
        EXPECT_EQ(amountOf(DriveNeed::ColdStarts, {.coolant = c.coolant}), c.coldStarts);
    }
}

TEST(Readiness, CruiseIdleAndDecelerationsAreToldByTheSpeeds) {
    const struct {
        std::vector<std::uint8_t> speeds;
        std::uint32_t interval;
        std::int64_t cruise, idle, decelerations;
    } cases[] = {
        {drive({{59, 80}}), 1, 0, 0, 0},
        {drive({{60, 80}}), 1, 60, 0, 0},
        {drive({{30, 80}}), 2, 60, 0, 0},
        {drive({{60, 64}}), 1, 0, 0, 0},
        {drive({{60, 65}, {40, 40}}), 1, 60, 0, 0},
        {drive({{60, 100}}), 1, 60, 0, 0},
        {drive({{60, 101}}), 1, 0, 0, 0},
        {drive({{60, 78}, {60, 82}}), 1, 120, 0, 0},
        {drive({{60, 70}, {60, 90}}), 1, 120, 0, 0}, // two stretches
        {drive({{40, 70}, {40, 90}}), 1, 0, 0, 0},
        {drive({{10, 20}, {70, 80}}), 1, 70, 0, 0},
        {drive({{29, 0}, {1, 5}, {30, 0}, {2, 5}, {31, 0}}), 1, 0, 61, 0},
        {drive({{1, 65}, {1, 31}, {1, 30}}), 1, 0, 0, 1},
        {drive({{1, 64}, {1, 30}}), 1, 0, 0, 0},
        {drive({{1, 70}, {1, 40}, {1, 60}, {1, 20}, {1, 0}, {1, 65}, {1, 10}}), 1, 0, 0, 2},
        {{}, 1, -1, -1, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        const DriveSamples samples{.speeds = c.speeds, .interval = c.interval};
        EXPECT_EQ(amountOf(DriveNeed::Cruise, samples), c.cruise);
        EXPECT_EQ(amountOf(DriveNeed::Idle, samples), c.idle);
        EXPECT_EQ(amountOf(DriveNeed::Decelerations, samples), c.decelerations);
    }
    const auto slowing = drive({{10, 80}, {10, 50}, {10, 20}}); // from 9 s to 20 s
    for (const auto& [brake, count] : {std::pair{8, 1}, {9, 0}, {20, 0}, {21, 1}})
        EXPECT_EQ(amountOf(DriveNeed::Decelerations, {.speeds = slowing, .brakes = {brake}}), count) << brake;
}

TEST(Readiness, AMonitorIsLikelyNotYetOrCannotBeTold) {
    const Monitor monitor{"Catalyst", {1, 0, 300, 0, 0}};
    VehicleReadiness vehicle{.vehicle = "A", .trips = 3, .amounts = {1, 0, 300, 0, 0}, .sampledTrips = {1, 1, 3, 3, 3}};
    EXPECT_EQ(readinessOf(monitor, vehicle).state, Readiness::Likely);
    vehicle.amounts[2] = 299;
    EXPECT_EQ(readinessOf(monitor, vehicle).state, Readiness::NotYet);
    EXPECT_EQ(readinessOf(monitor, vehicle).missing, (DriveAmounts{0, 0, 1, 0, 0}));
    vehicle.sampledTrips[0] = 0;
    EXPECT_EQ(readinessOf(monitor, vehicle).state, Readiness::NotYet) << "whatever the coolant did";
    vehicle.amounts[2] = 500;
    EXPECT_EQ(readinessOf(monitor, vehicle).state, Readiness::CannotTell);
    EXPECT_EQ(readinessOf(monitor, {.vehicle = "A"}).missing, monitor.needs) << "no trip since the code";
}

TEST(Readiness, MonitorsAreReadWithCare) {
    const auto monitors = readMonitors("\xEF\xBB\xBF"
                                       "Catalyst\tcruise=300, idle = 120\r\n\nEGR System\tdecelerations=2\n");
    ASSERT_TRUE(monitors);
    EXPECT_EQ(*monitors, (std::vector<Monitor>{{"Catalyst", {0, 0, 300, 120, 0}}, {"EGR System", {0, 0, 0, 0, 2}}}));
    for (const char* line : {"Catalyst", "\tcruise=1", "A\t", "A\tcruise", "A\tcruise=", "A\tcruise=0", "A\tcruise=-1",
                             "A\tcruise=1.5", "A\tcruise=1,", "A\tcruise=1,cruise=2", "A\tspeed=1", "A\tcruise=100001",
                             "A\tCruise=1", "\xFF\tcruise=1", "A\tcruise=1\tB"}) {
        const auto wrong = readMonitors("B\tidle=1\n" + std::string(line));
        ASSERT_FALSE(wrong) << line;
        EXPECT_EQ(wrong.error().detail.substr(0, 6), "line 2");
    }
    const test::TemporaryFolder folder;
    EXPECT_TRUE(loadMonitors({folder.path()})->empty());
    std::ofstream(folder / kMonitorsFile) << "X\tidle=1\n";
    EXPECT_EQ(loadMonitors({folder / "none", folder.path()})->size(), 1u);
}

TEST(Readiness, CountsTheTripsOfAVehicleSinceItsLastCode) {
    TQuobrixDocument document;
    for (int day = 0; day < 3; ++day) {
        test::addTrip(document, test::kStart + day * 86'400);
        auto& samples = *document.trips().column<TTripLogSampleTableColumn>().object(static_cast<RowIndex>(day));
        samples.removeRows(0, samples.rowCount());
        samples.insertRows(0, 100);
        samples.speed().setAll(drive({{60, 80}, {40, 0}}));
        if (day == 2)
            samples.series(2).setSeries({4, 10, false, {20, 60, 90}});
    }
    TTroubleLogTable& troubles = document.troubles();
    troubles.insertRows(0, 4);
    for (RowIndex row = 0; row < 4; ++row) {
        troubles.column<TTroubleLogVinColumn>().set(row, row != 1 ? test::kVin : "ANOTHER");
        troubles.column<TTroubleLogTroubleCodeColumn>().set(row, row == 2 ? "P0171" : "P0420");
        constexpr std::int32_t kTimes[] = {3600, 10 * 86'400, 60, 120};
        troubles.column<TTroubleLogTimeRecordedColumn>().set(row, test::kStart + kTimes[row]);
    }
    const TUnitSystem units;
    const TimeZone zone;
    const std::vector<Monitor> monitors =
        *readMonitors("Cold\tcoldstarts=1\nLong\tcruise=180\nSlow\tdecelerations=3\n");
    const auto text = [&] {
        ReadinessReader reader(document);
        while (reader.readNext()) {
        }
        return renderText(readinessReport(reader.vehicles(), monitors, document.vehicles(), {units, zone}));
    };
    EXPECT_NE(text().find("Unknown #1\n"
                          "  Last Trouble Code      P0420 (2 times, last 11/14/2023 11:13 PM)\n"
                          "  Earlier Trouble Codes  P0171 (11/14/2023 10:14 PM)\n"
                          "  Trips Since            2\n"
                          "  Warm-up Cycles         1 (sampled in 1 of 2 trips)\n"
                          "  Cold Starts            1 (sampled in 1 of 2 trips)\n"
                          "  Steady Driving         00:02:00\n"
                          "  Idling                 00:01:20\n"
                          "  Smooth Decelerations   2\n"
                          "  Monitor  State    Reason\n"
                          "  Cold     Likely   The trips had all that it needs.\n"
                          "  Long     Not yet  Missing: 00:01:00 of steady driving\n"
                          "  Slow     Not yet  Missing: 1 smooth deceleration\n"),
              std::string::npos)
        << text();
    EXPECT_NE(text().find("  Trips Since           0\n  Warm-up Cycles        0\n"), std::string::npos)
        << "one that has not driven since: " << text();
    document.trips().column<TTripLogSampleTableColumn>().object(2)->series(2).setSeries({});
    EXPECT_NE(text().find("Cold     Cannot be told  Not sampled: 1 cold start\n"), std::string::npos) << text();
}

} // namespace
} // namespace quobrix
