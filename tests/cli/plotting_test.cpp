#include "cli/program.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

class PlottingOnTheCommandLine : public testing::Test {
protected:
    void SetUp() override {
        TQuobrixDocument document;
        addTrip(document, kStart);
        addTrip(document, kStart + 3600);
        document.trips().insertRows(2, 1);
        auto& stops = document.store().singleton<TAccidentLogTable>();
        stops.insertRows(0, 1);
        stops.column<TAccidentLogTableStartTimeColumn>().set(0, kStart);
        stops.column<TAccidentLogSpeedSamplesColumn>().makeObject(0).setAll({40, 40, 20, 0});
        ASSERT_TRUE(document.saveAs(folder_ / "A.car"));
    }
    Outcome cli(const Arguments& arguments) { return runProgram(folder_.path(), QUOBRIX_CLI, arguments); }
    Outcome plot(Arguments arguments, const std::string& out) {
        arguments.insert(arguments.begin(), "plot");
        arguments.insert(arguments.end(), {"-o", out});
        return cli(arguments);
    }
    /// What an independent reader finds in the plot that ARGUMENTS ask for.
    std::string read(const Arguments& arguments) {
        const Outcome drawn = plot(arguments, "Plot.svg");
        EXPECT_EQ(drawn.exitCode, 0) << drawn.error;
        EXPECT_EQ(drawn.error, "");
        const Outcome outcome = runProgram(folder_.path(), "/usr/bin/python3", {QUOBRIX_READ_SVG, "Plot.svg"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return outcome.out;
    }

    TemporaryFolder folder_;
};

#ifndef _WIN32 // where no such reader is at hand
TEST_F(PlottingOnTheCommandLine, DrawsWhatAnotherProgramReads) {
    const auto expect = [&](const Arguments& arguments, const Arguments& words, const Arguments& others = {}) {
        const std::string found = read(arguments);
        for (const std::string& word : words)
            EXPECT_NE(found.find(word), std::string::npos) << word << " in " << found;
        for (const std::string& word : others)
            EXPECT_EQ(found.find(word), std::string::npos) << word << " in " << found;
    };
    expect({"trip", "1", "A.car"},
           {"1200 700\n", "title: Trip 1, 11/14/2023 10:13 PM\n",
            "Speed: least 0 MPH, mean 19 MPH, greatest 37 MPH; rising on the whole.", "text: Speed (MPH)\n",
            "text: Engine Speed (RPM)\n", "text: Fuel System Status 2\n", "text: O\n", "text: C\n", "text: 00:08:00\n",
            "text: Elapsed Time\n", "text: Hard Brake\n", "text: Extreme Brake\n", "text: Hard Acceleration\n",
            "text: Idle\n"},
           {"Extreme Acceleration"});
    expect({"trip", "1", "A.car", "--no-events", "--no-bands", "--units", "Metric", "--size", "640x400", "--lines"},
           {"640 400\n", "text: Speed (kph)\n"}, {"Brake", "Idle"});
    expect({"trip", "1", "A.car", "--from", "00:00:10", "--to", "00:02:40"}, {"text: 00:00:30\n", "text: 00:02:30\n"},
           {"00:03:00", "least 0 MPH"});
    expect({"trip", "1", "A.car", "--normalize", "160 kph"}, {"text: 80\n"}, {"text: 100\n"}); // 99.4 MPH
    expect({"trip", "2", "1", "A.car"},
           {"title: Comparison of Trip 2, Trip 1\n", "text: Trip 1\n", "Speed of Trip 2: "});
    expect({"trip", "2", "1", "A.car", "--by", "distance"}, {"text: Distance (Miles)\n"}, {"Elapsed Time"});
    expect({"accident", "1", "A.car", "--units", "Metric"},
           {"title: Stop 1, ", "text: 00:00:03\n", "text: 00:00:00\n", "text: 40\n"});
}
#endif

TEST_F(PlottingOnTheCommandLine, SaysWhatItDrawsLarger) {
    const Outcome drawn = plot({"trip", "1", "A.car", "--size", "100x100"}, "Plot.svg");
    EXPECT_EQ(drawn.exitCode, 0);
    EXPECT_NE(drawn.error.find("is the least that Trip 1"), std::string::npos) << drawn.error;
}

TEST_F(PlottingOnTheCommandLine, RefusesWhatItCannotDraw) {
    const struct {
        Arguments arguments;
        const char* out;
        int exitCode;
        const char* words;
    } cases[] = {
        {{"trip", "A.car"}, "New.svg", 2, "a plot is of one record"},
        {{"trip", "1", "2", "1", "2", "1", "2", "1", "A.car"}, "New.svg", 2, "up to 6 trips"},
        {{"accident", "1", "1", "A.car"}, "New.svg", 2, "a plot is of one record"},
        {{"trouble", "1", "A.car"}, "New.svg", 2, "trouble not in"},
        {{"trip", "one", "A.car"}, "New.svg", 2, "is no number of a record"},
        {{"trip", "4", "A.car"}, "New.svg", 1, "no trip 4"},
        {{"trip", "3", "A.car"}, "New.svg", 1, "No samples were recorded"},
        {{"trip", "1", "Missing.car"}, "New.svg", 1, "does not exist"},
        {{"trip", "1", "A.car"}, "New.txt", 2, "let its name end in .svg, .png, .pdf, or name it"},
        {{"trip", "1", "A.car"}, "A.car", 2, "is a Quobrix data file"},
        {{"trip", "1", "A.car"}, "", 1, "without a name"},
        {{"trip", "1", "A.car"}, "Nowhere/New.svg", 1, "its folder does not exist"},
        {{"trip", "1", "A.car", "--size", "640"}, "New.svg", 2, "\"640\" is no size"},
        {{"trip", "1", "A.car", "--size", "640x4000000"}, "New.svg", 2, "is no size"},
        {{"trip", "1", "A.car", "--size", "640x400x"}, "New.svg", 2, "is no size"},
        {{"trip", "1", "A.car", "--lines", "--areas"}, "New.svg", 2, "--lines"},
        {{"trip", "1", "A.car", "--by", "fuel"}, "New.svg", 2, "fuel"},
        {{"trip", "1", "A.car", "--normalize", "256 kph"}, "New.svg", 2, "is not within 0 and 158"},
        {{"trip", "1", "A.car", "--normalize", "fast"}, "New.svg", 2, "fast"},
        {{"trip", "1", "A.car", "--from", "soon"}, "New.svg", 2, "soon"},
        {{"trip", "1", "A.car", "--from", "00:05:00", "--to", "00:05:00"}, "New.svg", 2, "nothing lies between"},
        {{"trip", "1", "A.car", "--from", "09:00:00"}, "New.svg", 2, "nothing lies between 09:00:00 and 00:08:20"},
        {{"trip", "1", "A.car", "--from", "09:00:00", "--to", "10:00:00"},
         "New.svg",
         2,
         "choose --from and --to, which is behind it, from 00:00:00 to 00:08:20"},
        {{"trip", "1", "2", "01", "A.car"}, "New.svg", 2, "trip 01 is named twice"},
        {{"trip", "1", "A.car", "--by", "distance"}, "New.svg", 2, "--by is for trips that are compared"},
        {{"trip", "1", "A.car", "--from", "00:00:05", "--to", "00:00:09"},
         "New.svg",
         2,
         "Maximum magnification reached. Nothing shorter than 00:0"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = plot(c.arguments, c.out);
        EXPECT_EQ(outcome.exitCode, c.exitCode) << c.words << ": " << outcome.error;
        EXPECT_NE(outcome.error.find(c.words), std::string::npos) << c.words << ": " << outcome.error;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"A.car", "home"}));
}

} // namespace
} // namespace quobrix
