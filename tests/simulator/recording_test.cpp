/// What the logger records of a drive, compared with a computation of the test's own from the drive's text.
#include "fixture.h"

#include "simulator/recorder.h"
#include "support/drive_sheet.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <sstream>

namespace quobrix::sim {
namespace {

using namespace test;
using testing::ElementsAre;

class Recorded : public SimulatorTest {
protected:
    /// Lets the logger record the drive and downloads what it then holds.
    Download recordAndDownload(const std::string& text) {
        change([&](Port& port) {
            Logger& logger = *port.logger();
            logger.memory.clear();
            const auto drive = parseDrive(text);
            ASSERT_TRUE(drive) << drive.error().detail;
            const Recording recording =
                recordDrive(*drive, logger.configuration, {.vin = "1HGCM82633A004352", .driver = 2, .start = kStart});
            ASSERT_TRUE(logger.remember(recording.trip));
            for (const Stop& stop : recording.stops)
                ASSERT_TRUE(logger.remember(stop));
        });
        return {};
    }

    void compare(const std::string& text) {
        const DriveSheet sheet(text);
        const ExpectedTrip expected(sheet);
        const Download download = recordAndDownload(text);
        const QuobrixTripRecord& trip = download.trip(0);
        EXPECT_STREQ(trip.vin, "1HGCM82633A004352");
        EXPECT_EQ(trip.startTime, kStart);
        EXPECT_EQ(trip.endTime - trip.startTime, static_cast<int>(expected.speeds.size()) - 1);
        EXPECT_NEAR(trip.distance, expected.metres, 1e-6);
        EXPECT_EQ(trip.maximumSpeed, *std::max_element(expected.speeds.begin(), expected.speeds.end()));
        EXPECT_EQ(trip.idleSeconds, static_cast<unsigned>(expected.idle));
        EXPECT_TRUE(std::equal(std::begin(expected.bands), std::end(expected.bands), trip.bandSeconds,
                               [](int a, std::uint32_t b) { return static_cast<std::uint32_t>(a) == b; }));
        EXPECT_TRUE(std::ranges::equal(arrayOf<std::uint8_t>(trip, trip.speedSamples), expected.speeds));
        EXPECT_EQ(arrayOf<std::uint32_t>(trip, trip.hardBrakes), expected.hardBrakes);
        EXPECT_EQ(arrayOf<std::uint32_t>(trip, trip.extremeBrakes), expected.extremeBrakes);
        EXPECT_EQ(arrayOf<std::uint32_t>(trip, trip.hardAccelerations), expected.hardAccelerations);
        EXPECT_EQ(arrayOf<std::uint32_t>(trip, trip.extremeAccelerations), expected.extremeAccelerations);

        ExpectedTrip::Times standstills;
        for (std::size_t bank = 0; bank < 2; ++bank)
            for (const auto* head : recordsOf(download.stops[bank]))
                standstills.push_back(
                    static_cast<std::uint32_t>(reinterpret_cast<const QuobrixStopRecord*>(head)->timestamp - kStart));
        std::sort(standstills.begin(), standstills.end());
        EXPECT_EQ(standstills, expected.stops);
    }

    static constexpr std::int32_t kStart = 1600000000;
};

TEST_F(Recorded, TicksHoldTheNewestReading) {
    compare("seconds,speed_kmh\n0,0\n0.4,9.5\n0.999,10.49\n1.0,20.5\n5.5,300e-1\n9.99,254.6\n");
    compare("seconds,speed_kmh\n0,12.5\n");
    EXPECT_EQ(recordAndDownload("seconds,speed_kmh\n0,12.5\n").trip(0).distance, 0);
}

TEST_F(Recorded, EventsBeginAndEndByTheFirstThreshold) {
    // 9 km/h in a second stay below the first threshold, 10 exceed it, 16 stay below the second and 17 exceed it.
    compare(steadyDrive({0, 9, 19, 29, 38, 48, 65, 75, 75, 65, 56, 39, 23, 13, 13, 3, 0, 17}));
    const Download download = recordAndDownload(steadyDrive({0, 10, 27, 37, 37, 27, 11, 0}));
    const QuobrixTripRecord& trip = download.trip(0);
    EXPECT_THAT(arrayOf<std::uint32_t>(trip, trip.extremeAccelerations), ElementsAre(1));
    EXPECT_EQ(trip.hardAccelerations.count, 0u);
    EXPECT_THAT(arrayOf<std::uint32_t>(trip, trip.hardBrakes), ElementsAre(5));
    EXPECT_EQ(trip.extremeBrakes.count, 0u);
}

TEST_F(Recorded, BandsIncludeTheirUpperEnd) {
    compare(steadyDrive({0, 72, 73, 96, 97, 112, 113, 200, 0, 0}));
    change([](Port& port) { port.logger()->configuration.bandLimit = {10, 20, 30}; });
    // 16, 17 to 32, 33 to 48, and above
    const Download download = recordAndDownload(steadyDrive({1, 16, 17, 32, 33, 48, 49, 0, 0}));
    const QuobrixTripRecord& trip = download.trip(0);
    EXPECT_THAT(trip.bandSeconds, ElementsAre(2, 2, 2, 1));
    EXPECT_EQ(trip.idleSeconds, 1u) << "the last tick closes the trip";
    EXPECT_NEAR(trip.bandLimit[0], 16.09344, 1e-9);
}

TEST_F(Recorded, SevereStopKeepsTwentySecondsBefore) {
    std::vector<int> speeds(30, 60);
    for (const int speed : {41, 35, 30, 25, 20, 15, 10, 5, 0, 0, 50, 40, 0, 41, 0})
        speeds.push_back(speed);
    compare(steadyDrive(speeds));
    const Download download = recordAndDownload(steadyDrive(speeds));
    const auto stops = recordsOf(download.stops[0]);
    const auto samples = recordsOf(download.samples[0]);
    ASSERT_EQ(stops.size(), samples.size());
    const auto& stop = *reinterpret_cast<const QuobrixStopRecord*>(stops.at(0));
    const auto& itsSamples = *reinterpret_cast<const QuobrixStopSamplesRecord*>(samples.at(0));
    EXPECT_EQ(stop.timestamp - stop.startTime, 20);
    EXPECT_EQ(stop.maximumSpeed, 60);
    const auto values = arrayOf<std::uint8_t>(itsSamples, itsSamples.speeds);
    EXPECT_EQ(values.size(), 21u);
    EXPECT_EQ(values.back(), 0);
    // From 40 km/h, or in 9 s, it is an ordinary stop.
    EXPECT_EQ(recordAndDownload(steadyDrive({0, 20, 40, 0})).stops[0]->recordCount, 0u);
    EXPECT_EQ(recordAndDownload(steadyDrive({41, 40, 35, 30, 25, 20, 15, 10, 5, 0})).stops[0]->recordCount, 0u);
}

TEST_F(Recorded, SeriesTakeTheNewestReading) {
    change([](Port& port) {
        Configuration& configuration = port.logger()->configuration;
        configuration.parameter = {0x0D, 0x0C, 0xF9, 0x05, 0xE1};
        configuration.interval = {1, 32, 1, 1, 3};
    });
    const Download download = recordAndDownload("coolant_c,seconds,engine_rpm,speed_kmh\n"
                                                ",0,,0\n"
                                                "20,0.5,700,0\n"
                                                ",1,,0\n"
                                                "21,1.5,800.25,0\n"
                                                "30,6.2,900,0\n");
    const QuobrixTripRecord& trip = download.trip(0);
    EXPECT_EQ(trip.series[0].parameter, 2) << "speed has no series of its own";
    EXPECT_EQ(trip.series[0].samplingInterval, 1);
    EXPECT_THAT(arrayOf<double>(trip, trip.series[0].samples),
                ElementsAre(QUOBRIX_NO_VALUE, 700, 800.25, 800.25, 800.25, 800.25, 800.25));
    EXPECT_EQ(trip.series[1].parameter, 4);
    EXPECT_THAT(arrayOf<double>(trip, trip.series[1].samples), ElementsAre(QUOBRIX_NO_VALUE, 21));
    EXPECT_EQ(trip.series[2].parameter, 24);
    EXPECT_EQ(trip.series[2].samplingInterval, 60);
    EXPECT_THAT(arrayOf<double>(trip, trip.series[2].samples), ElementsAre(QUOBRIX_NO_VALUE));
    EXPECT_EQ(trip.series[3].parameter, 0);
}

TEST_F(Recorded, RealDrives) {
    const char* const folder = std::getenv("QUOBRIX_DRIVES");
    if (!folder || !std::filesystem::is_directory(folder))
        GTEST_SKIP() << "QUOBRIX_DRIVES names no folder of drives";
    const std::map<int, std::string> columns{{2, "engine_rpm"}, {3, "throttle_pct"}, {4, "coolant_c"}, {5, "load_pct"}};
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".csv")
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        std::stringstream text;
        text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
        compare(text.str());
        const DriveSheet sheet(text.str());
        const Download download;
        const QuobrixTripRecord& trip = download.trip(0);
        for (const QuobrixParameterSeries& series : trip.series) {
            const auto samples = arrayOf<double>(trip, series.samples);
            EXPECT_EQ(static_cast<int>(samples.size()), (trip.endTime - trip.startTime) / series.samplingInterval + 1);
            for (std::size_t i = 0; i < samples.size(); i += samples.size() / 20 + 1) {
                const std::string& name = columns.at(series.parameter);
                const int row = sheet.newest(static_cast<double>(i) * series.samplingInterval, name);
                EXPECT_EQ(samples[i], row < 0 ? QUOBRIX_NO_VALUE : sheet.number(name, static_cast<std::size_t>(row)));
            }
        }
    }
}

} // namespace
} // namespace quobrix::sim
