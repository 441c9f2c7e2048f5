/// What the logger records of a drive, compared with a computation of the test's own from the drive's text.
#include "fixture.h"

#include "simulator/recorder.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <sstream>

namespace quobrix::sim {
namespace {

using testing::ElementsAre;
using Times = std::vector<std::uint32_t>;

/// The drive's cells by column name, as texts.
struct Sheet {
    std::map<std::string, std::vector<std::string>> column;

    explicit Sheet(const std::string& text) {
        std::istringstream lines(text);
        std::string line;
        std::getline(lines, line);
        const auto names = cells(line);
        while (std::getline(lines, line)) {
            const auto row = cells(line);
            for (std::size_t i = 0; i < names.size(); ++i)
                column[names[i]].push_back(row[i]);
        }
    }
    static std::vector<std::string> cells(const std::string& line) {
        std::vector<std::string> result(1);
        for (const char c : line)
            if (c == ',')
                result.emplace_back();
            else
                result.back() += c;
        return result;
    }
    double number(const std::string& name, std::size_t row) const { return std::stod(column.at(name)[row]); }
    std::size_t rows() const { return column.at("seconds").size(); }

    /// The newest row at or before SECOND for which COLUMN has a cell; -1 if there is none.
    int newest(double second, const std::string& name) const {
        int found = -1;
        for (std::size_t row = 0; row < rows() && number("seconds", row) <= second; ++row)
            if (!column.at(name)[row].empty())
                found = static_cast<int>(row);
        return found;
    }
};

struct Expected {
    std::vector<int> speeds;
    double metres = 0;
    int idle = 0;
    int bands[4] = {};
    Times hardBrakes, extremeBrakes, hardAccelerations, extremeAccelerations;
    Times stops; // standstill, s from the start

    explicit Expected(const Sheet& sheet) {
        // Rows are visited once: the drives are long, and a search for every second would take minutes.
        std::size_t row = 0;
        for (int second = 0; second <= sheet.number("seconds", sheet.rows() - 1); ++second) {
            while (row + 1 < sheet.rows() && sheet.number("seconds", row + 1) <= second)
                ++row;
            speeds.push_back(static_cast<int>(std::floor(sheet.number("speed_kmh", row) + 0.5)));
        }
        for (std::size_t k = 0; k + 1 < speeds.size(); ++k) {
            metres += (speeds[k] + speeds[k + 1]) / 2.0 / 3.6;
            if (speeds[k] == 0)
                ++idle;
            else
                ++bands[speeds[k] <= 45 * 1.609344   ? 0
                        : speeds[k] <= 60 * 1.609344 ? 1
                        : speeds[k] <= 70 * 1.609344 ? 2
                                                     : 3];
        }
        events(-1, hardBrakes, extremeBrakes);
        events(+1, hardAccelerations, extremeAccelerations);
        for (std::size_t k = 1; k < speeds.size(); ++k) {
            bool fast = false;
            for (std::size_t back = 1; back <= 8 && back <= k; ++back)
                fast = fast || speeds[k - back] > 40;
            if (speeds[k] == 0 && speeds[k - 1] > 0 && fast)
                stops.push_back(static_cast<std::uint32_t>(k));
        }
    }

    void events(int sign, Times& hard, Times& extreme) {
        for (std::size_t k = 1; k < speeds.size();) {
            const std::size_t begin = k;
            double strongest = 0;
            for (; k < speeds.size() && sign * (speeds[k] - speeds[k - 1]) / 3.6 > 2.745862; ++k)
                strongest = std::max(strongest, sign * (speeds[k] - speeds[k - 1]) / 3.6);
            if (k == begin)
                ++k;
            else
                (strongest > 4.707192 ? extreme : hard).push_back(static_cast<std::uint32_t>(begin));
        }
    }
};

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
        const Sheet sheet(text);
        const Expected expected(sheet);
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

        Times standstills;
        for (std::size_t bank = 0; bank < 2; ++bank)
            for (const auto* head : recordsOf(download.stops[bank]))
                standstills.push_back(
                    static_cast<std::uint32_t>(reinterpret_cast<const QuobrixStopRecord*>(head)->timestamp - kStart));
        std::sort(standstills.begin(), standstills.end());
        EXPECT_EQ(standstills, expected.stops);
    }

    static constexpr std::int32_t kStart = 1600000000;
};

/// A drive of one reading a second.
std::string steady(const std::vector<int>& speeds) {
    std::string text = "speed_kmh,seconds\n";
    for (std::size_t i = 0; i < speeds.size(); ++i)
        text += std::to_string(speeds[i]) + "," + std::to_string(i) + "\n";
    return text;
}

TEST_F(Recorded, TicksHoldTheNewestReading) {
    compare("seconds,speed_kmh\n0,0\n0.4,9.5\n0.999,10.49\n1.0,20.5\n5.5,300e-1\n9.99,254.6\n");
    compare("seconds,speed_kmh\n0,12.5\n");
    EXPECT_EQ(recordAndDownload("seconds,speed_kmh\n0,12.5\n").trip(0).distance, 0);
}

TEST_F(Recorded, EventsBeginAndEndByTheFirstThreshold) {
    // 9 km/h in a second stay below the first threshold, 10 exceed it, 16 stay below the second and 17 exceed it.
    compare(steady({0, 9, 19, 29, 38, 48, 65, 75, 75, 65, 56, 39, 23, 13, 13, 3, 0, 17}));
    const Download download = recordAndDownload(steady({0, 10, 27, 37, 37, 27, 11, 0}));
    const QuobrixTripRecord& trip = download.trip(0);
    EXPECT_THAT(arrayOf<std::uint32_t>(trip, trip.extremeAccelerations), ElementsAre(1));
    EXPECT_EQ(trip.hardAccelerations.count, 0u);
    EXPECT_THAT(arrayOf<std::uint32_t>(trip, trip.hardBrakes), ElementsAre(5));
    EXPECT_EQ(trip.extremeBrakes.count, 0u);
}

TEST_F(Recorded, BandsIncludeTheirUpperEnd) {
    compare(steady({0, 72, 73, 96, 97, 112, 113, 200, 0, 0}));
    change([](Port& port) { port.logger()->configuration.bandLimit = {10, 20, 30}; });
    // 16, 17 to 32, 33 to 48, and above
    const Download download = recordAndDownload(steady({1, 16, 17, 32, 33, 48, 49, 0, 0}));
    const QuobrixTripRecord& trip = download.trip(0);
    EXPECT_THAT(trip.bandSeconds, ElementsAre(2, 2, 2, 1));
    EXPECT_EQ(trip.idleSeconds, 1u) << "the last tick closes the trip";
    EXPECT_NEAR(trip.bandLimit[0], 16.09344, 1e-9);
}

TEST_F(Recorded, SevereStopKeepsTwentySecondsBefore) {
    std::vector<int> speeds(30, 60);
    for (const int speed : {41, 35, 30, 25, 20, 15, 10, 5, 0, 0, 50, 40, 0, 41, 0})
        speeds.push_back(speed);
    compare(steady(speeds));
    const Download download = recordAndDownload(steady(speeds));
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
    EXPECT_EQ(recordAndDownload(steady({0, 20, 40, 0})).stops[0]->recordCount, 0u);
    EXPECT_EQ(recordAndDownload(steady({41, 40, 35, 30, 25, 20, 15, 10, 5, 0})).stops[0]->recordCount, 0u);
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
        const Sheet sheet(text.str());
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
