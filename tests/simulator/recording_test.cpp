/// What the logger records of a drive beyond what comes out at the end of a download.
#include "fixture.h"

#include "simulator/recorder.h"
#include "support/drive_sheet.h"

#include <gmock/gmock.h>

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

    static constexpr std::int32_t kStart = 1600000000;
};

TEST_F(Recorded, OneReadingIsNoDistance) {
    EXPECT_EQ(recordAndDownload("seconds,speed_kmh\n0,12.5\n").trip(0).distance, 0);
}

TEST_F(Recorded, SevereStopKeepsTwentySecondsBefore) {
    std::vector<int> speeds(30, 60);
    for (const int speed : {41, 35, 30, 25, 20, 15, 10, 5, 0, 0, 50, 40, 0, 41, 0})
        speeds.push_back(speed);
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

} // namespace
} // namespace quobrix::sim
