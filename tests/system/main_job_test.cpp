/// From a drive through the logger and the command line to the document's figures, which are compared with a
/// computation of the test's own from the drive's text.
#include "model/quobrix_document.h"
#include "support/document_streams.h"
#include "support/drive_sheet.h"
#include "system/programs.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>

namespace quobrix {
namespace {

using namespace test;

class MainJob : public Programs {
protected:
    std::vector<JsonRecord> listed(const std::string& log) {
        const Outcome outcome = cli({"list", log, "Drive.car", "--format", "json"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return parseJson(outcome.out);
    }

    /// Records the drive of the file PATH by a fresh logger, downloads it and compares.
    void compare(const std::filesystem::path& path) {
        SCOPED_TRACE(path.filename().string());
        std::filesystem::remove(folder_ / "Drive.car");
        std::filesystem::remove_all(folder_ / "ports");
        ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
        const Outcome recorded = sim({"record", "COM3", path.string(), "--start", "2024-03-01 08:00:00"});
        ASSERT_EQ(recorded.exitCode, 0) << recorded.error;
        const Outcome downloaded = download("Drive.car");
        ASSERT_EQ(downloaded.exitCode, 0) << downloaded.error;

        const ExpectedTrip expected{DriveSheet(textOf(path))};
        const std::vector<JsonRecord> trips = listed("trips");
        ASSERT_EQ(trips.size(), 1u);
        const auto number = [&](const std::string& key) { return std::get<double>(trips[0].at(key)); };
        EXPECT_EQ(number("TTripLogStartTimeColumn"), 1709280000.0);
        EXPECT_NEAR(number("TTripLogDistanceColumn"), expected.metres, 1e-6);
        EXPECT_NEAR(number("TTripLogMaximumSpeedColumn"), std::ranges::max(expected.speeds) / 3.6, 1e-12);
        EXPECT_EQ(number("TTripLogDurationColumn"), static_cast<double>(expected.speeds.size() - 1));
        EXPECT_EQ(number("TTripLogTimeInTopSpeedBandColumn"), expected.bands[3]);
        {
            TQuobrixDocument document;
            ASSERT_TRUE(document.open(folder_ / "Drive.car", TDocument::Access::Read));
            const TTripLogTable& trip = document.trips();
            const auto expectOwned = [](const auto& column, const auto& values) {
                EXPECT_TRUE(std::ranges::equal(column.object(0)->values(), values)) << column.spec().key;
            };
            expectOwned(trip.column<TTripLogHardBrakeTimesColumnColumn>(), expected.hardBrakes);
            expectOwned(trip.column<TTripLogPanicBrakeTimesColumnColumn>(), expected.extremeBrakes);
            expectOwned(trip.column<TTripLogHardAccelerationTimesColumnColumn>(), expected.hardAccelerations);
            expectOwned(trip.column<TTripLogPanicAccelerationTimesColumnColumn>(), expected.extremeAccelerations);
            expectOwned(
                trip.column<TTripLogTimePerSpeedBandColumnColumn>(),
                std::array{expected.idle, expected.bands[0], expected.bands[1], expected.bands[2], expected.bands[3]});
            const auto& samples = *trip.column<TTripLogSampleTableColumn>().object(0);
            EXPECT_TRUE(std::ranges::equal(samples.speed().values(), expected.speeds));
            std::vector<double> standstills;
            for (const JsonRecord& stop : listed("accidents"))
                standstills.push_back(std::get<double>(stop.at("TAccidentLogTableTimestampColumn")) - 1709280000);
            std::ranges::sort(standstills);
            EXPECT_TRUE(std::ranges::equal(standstills, expected.stops));
        }
        const std::size_t stops = expected.stops.size();
        const std::string records = "1 trip" + (stops == 0   ? std::string()
                                                : stops == 1 ? ", 1 severe stop"
                                                             : ", " + std::to_string(stops) + " severe stops");
        EXPECT_EQ(downloaded.out, "New: " + records + ".\n");
        EXPECT_EQ(download("Drive.car").out, "Nothing new. Already present: " + records + ".\n");

        // Downloaded in the middle of the drive and again at its end it is one trip.
        const std::string whole = textOf(path);
        std::ofstream(folder_ / "half.csv", std::ios::binary)
            << whole.substr(0, whole.find('\n', whole.find('\n') + whole.size() / 2) + 1);
        ASSERT_EQ(sim({"attach", "COM4", "--serial", "K-0042-B"}).exitCode, 0);
        ASSERT_EQ(sim({"record", "COM4", "half.csv", "--start", "2024-03-01 08:00:00"}).exitCode, 0);
        std::filesystem::remove(folder_ / "Half.car");
        EXPECT_TRUE(download("Half.car", "COM4").out.starts_with("New: 1 trip"));
        const std::string replaced = download("Half.car").out;
        EXPECT_NE(replaced.find("Replaced: 1 trip."), std::string::npos) << replaced;
        EXPECT_TRUE(download("Half.car", "COM4").out.starts_with("Nothing new. Already present: 1 trip"));
    }

    void compareText(const std::string& name, const std::string& csv) {
        std::ofstream(folder_ / name, std::ios::binary) << csv;
        compare(folder_ / name);
    }
};

TEST_F(MainJob, MadeUpDrivesComeOutAsComputed) {
    // Pulling away and braking on both sides of both thresholds, and a severe stop from 90 km/h.
    compareText("hard.csv", steadyDrive({0, 9,  19, 29, 38, 48, 65, 75, 75, 65, 56, 39, 23, 13, 13, 3, 0,
                                         0, 17, 30, 42, 55, 70, 80, 90, 90, 75, 60, 44, 28, 12, 0,  0}));
    // Gaps hold the last speed; whole seconds between the readings; the end within a second.
    compareText("gaps.csv", "seconds,engine_rpm,speed_kmh\n0,700,0\n0.4,,9.5\n1.0,900,20.5\n7.25,,61\n30,2500,61.49\n"
                            "45.5,2600,58\n61,,30\n61.9,800,4\n70.7,700,0\n");
    compareText("ticks.csv", "seconds,speed_kmh\n0,0\n0.4,9.5\n0.999,10.49\n1.0,20.5\n5.5,300e-1\n9.99,254.6\n");
    // Both sides of every limit of the speed bands.
    compareText("bands.csv",
                steadyDrive({0, 0, 36, 72, 73, 96, 97, 112, 113, 118, 112, 130, 125, 113, 96, 72, 50, 30}));
}

TEST_F(MainJob, SavedAgainItIsTheSame) {
    attachHistory("COM3", "K-0042-B", 20);
    ASSERT_EQ(download("Doc.car").exitCode, 0);
    const Streams before = streamsOf(folder_ / "Doc.car");
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(folder_ / "Doc.car", TDocument::Access::Edit));
    for (const ObjectId id : document.store().objectIds()) {
        ASSERT_NE(document.store().find(id), nullptr) << id;
        document.store().find(id)->setModified();
    }
    ASSERT_TRUE(document.save());
    EXPECT_TRUE(streamsOf(folder_ / "Doc.car") == before);
    ASSERT_TRUE(document.saveAs(folder_ / "Copy.car"));
    EXPECT_TRUE(streamsOf(folder_ / "Copy.car") == before);
    // What a download without news leaves: only its time.
    auto* const downloads = document.store().existingSingleton<TDownloadTable>();
    ASSERT_TRUE(downloads);
    const std::string time = std::to_string(downloads->column<TDownloadTableMostRecentDownloadColumn>().id());
    document.newDocument();
    EXPECT_TRUE(download("Doc.car").out.starts_with("Nothing new. Already present: 20 trips"));
    Streams after = streamsOf(folder_ / "Doc.car");
    after[time] = before.at(time);
    EXPECT_TRUE(after == before);
}

TEST_F(MainJob, RealDrivesComeOutAsComputed) {
    const char* const given = std::getenv("QUOBRIX_DRIVES");
    const std::filesystem::path folder = std::string(QUOBRIX_ROOT) + (given ? given : "");
    if (!given || !std::filesystem::is_directory(folder))
        GTEST_SKIP() << "QUOBRIX_DRIVES names no folder of drives";
    std::vector<std::filesystem::path> drives;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".csv")
            drives.push_back(std::filesystem::absolute(entry.path()));
    ASSERT_FALSE(drives.empty());
#ifdef _WIN32 // for which Wine takes a second to start a program; the shortest one does
    std::ranges::nth_element(drives, drives.begin(), {}, [](const auto& drive) { return file_size(drive); });
    drives.resize(1);
#endif
    for (const std::filesystem::path& drive : drives)
        compare(drive);
}

} // namespace
} // namespace quobrix
