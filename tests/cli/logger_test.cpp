// What is done with loggers and the files of their records.
#include "cli/command_line.h"
#include "cli/parsing.h"

#include <algorithm>
#include <fstream>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

TEST_F(CommandLine, DownloadAddsNothingTwice) {
    const std::string name = "Ausfl\u00FCge '\u8ECA'.car";
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    const Outcome first = cli({"download", "--port", "COM3", "--into", name});
    ASSERT_EQ(first.exitCode, 0) << first.error;
    EXPECT_EQ(first.error, "");
    EXPECT_TRUE(first.out.starts_with("New: 4 trips")) << first.out;
    EXPECT_EQ(parseJson(cli({"list", "trips", name, "--format", "json"}).out).size(), 4u);

    // Started without standard output, the document must not take its place and receive the result.
    // The document is saved all the same.
    for (const StandardOutput unwritable : {StandardOutput::None, StandardOutput::Refusing}) {
        if (unwritable == StandardOutput::None && kNoOutputIsNoFailure)
            continue;
        fs::remove(folder_ / name);
        const Outcome second = cli({"download", "--port", "COM3", "--into", name}, unwritable);
        EXPECT_EQ(second.exitCode, 3);
        EXPECT_TRUE(second.error.starts_with("quobrix-cli: " + name +
                                             " has been saved, but standard output cannot be written: "))
            << second.error;
        EXPECT_EQ(cli({"check", name}).exitCode, 0);
    }

    const Outcome third = cli({"download", "--port", "COM3", "--into", name});
    EXPECT_TRUE(third.out.starts_with("Nothing new. Already present: 4 trips")) << third.out;
    EXPECT_EQ(jsonLeaves(cli({"statistics", "--format", "json"}).out).at("figures.trips"), JsonValue(4.0));
    const std::string before = textOf(folder_ / name);
    ASSERT_EQ(sim({"detach", "COM3"}).exitCode, 0);
    EXPECT_EQ(cli({"download", "--port", "COM3", "--into", name}).exitCode, 1);
    EXPECT_EQ(textOf(folder_ / name), before);
    EXPECT_TRUE(
        std::ranges::none_of(fs::recursive_directory_iterator(folder_ / "home"), [](const fs::directory_entry& entry) {
            return entry.is_regular_file() && entry.path().filename() != "download.log" &&
                   entry.path().filename() != "Quobrix.cdb";
        })); // no setting was written
}

TEST_F(CommandLine, ADownloadWithoutRecordsMakesNoDocument) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    const auto expectNone = [&](int exitCode) {
        const Outcome outcome = cli({"download", "--port", "COM3", "--into", "New.car"});
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.error;
        EXPECT_NE(outcome.error.find("New.car has not been made"), std::string::npos) << outcome.error;
        EXPECT_FALSE(fs::exists(folder_ / "New.car"));
    };
    expectNone(0); // it holds none
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    ASSERT_EQ(sim({"fault", "COM3", "--fail", "GetLogRecords", "--fail", "GetAccidentLogRecords"}).exitCode, 0);
    expectNone(1);
}

TEST_F(CommandLine, LogFilesAreImported) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    ASSERT_EQ(sim({"export", "COM3", "Drives.txt"}).exitCode, 0);
    ASSERT_EQ(sim({"detach", "COM3"}).exitCode, 0);
    const Outcome first = cli({"import", "Drives.txt", "--into", "New.car"});
    EXPECT_EQ(first.exitCode, 0) << first.error;
    EXPECT_TRUE(first.out.starts_with("New: 4 trips")) << first.out;
    const Outcome again = cli({"import", "Drives.txt", "--into", "New.car"});
    EXPECT_TRUE(again.out.starts_with("Nothing new. Already present: 4 trips")) << again.out;
    const std::string before = textOf(folder_ / "New.car");
    std::ofstream(folder_ / "Letter.txt") << "Dear Sirs";
    for (const char* file : {"Letter.txt", "None.txt", ".", "New.car"}) {
        const Outcome refused = cli({"import", file, "--into", "New.car"});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_EQ(refused.error, "quobrix-cli: File selected is not a log file!\n");
    }
    EXPECT_EQ(textOf(folder_ / "New.car"), before);
}

TEST_F(CommandLine, ClearsAndSetsTheClockOnlyOfWhatIsSaved) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B", "--clock-offset", "7200"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    const auto used = [&] { return sim({"memory", "COM3"}).out; };
    const std::string full = used();
    const auto download = [&](const std::string& file, std::vector<std::string> more) {
        more.insert(more.begin(), {"download", "--port", "COM3", "--into", file});
        return cli(more);
    };
    const auto starts = [&](const std::string& file) {
        return parseJson(cli({"list", "trips", file, "--format", "json"}).out).at(0).at("TTripLogStartTimeColumn");
    };
    fs::create_directories(folder_ / "Folder.car");
    EXPECT_EQ(download("Folder.car", {"--clear", "--set-clock"}).exitCode, 1);
    EXPECT_EQ(used(), full);
    EXPECT_EQ(download("Plain.car", {}).exitCode, 0);
    EXPECT_EQ(used(), full);
    EXPECT_EQ(download("Shifted.car", {"--time", "computer"}).exitCode, 0);
    EXPECT_NEAR(std::get<double>(starts("Plain.car")) - std::get<double>(starts("Shifted.car")), 7200, 2);

    ASSERT_EQ(sim({"fault", "COM3", "--fail", "ClearLogs"}).exitCode, 0);
    const Outcome failed = download("Plain.car", {"--clear"});
    EXPECT_EQ(failed.exitCode, 3) << "saved, but not cleared";
    EXPECT_NE(failed.error.find("Unable to clear the Quobrix"), std::string::npos) << failed.error;
    ASSERT_EQ(sim({"fault", "COM3", "--clear"}).exitCode, 0);
    EXPECT_EQ(used(), full);
    EXPECT_EQ(download("Plain.car", {"--clear"}).exitCode, 0);
    EXPECT_NE(used(), full);
    EXPECT_EQ(cli({"check", "Plain.car"}).exitCode, 0);

    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "2"}).exitCode, 0);
    EXPECT_EQ(download("Plain.car", {"--set-clock"}).exitCode, 0);
    EXPECT_EQ(download("None.car", {"--set-clock"}).exitCode, 0);
}

TEST_F(CommandLine, UnparsableLogsAreNamed) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "20", "--seed", "1"}).exitCode, 0);
    const std::vector<std::string> download = {"download", "--port", "COM3", "--into", "New.car"};
    const struct {
        std::vector<std::string> fault; ///< of the simulated logger
        std::string error, out;
    } cases[] = {
        {{"--fail", "GetLogRecords=-7", "--once"},
         "the trips, trouble codes and activity (Unknown result)",
         "New: 1 severe stop.\n"},
        {{"--fail", "GetAccidentLogRecords", "--after", "1"},
         "the second accident log (Unknown result)",
         "New: 20 trips, 7 events. Already present: 1 severe stop.\n"},
        {{"--garbage"},
         "trip 11 and 9 more",
         "Nothing new. Already present: 10 trips, 3 events. Refused: 10 trips, 4 events, 1 severe stop, 1 set of stop "
         "samples.\n"},
        {{"--clear"}, "", "Nothing new. Already present: 20 trips, 7 events, 1 severe stop.\n"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> fault = {"fault", "COM3"};
        fault.insert(fault.end(), c.fault.begin(), c.fault.end());
        ASSERT_EQ(sim(fault).exitCode, 0);
        const Outcome outcome = cli(download);
        EXPECT_EQ(outcome.exitCode, c.error.empty() ? 0 : 3);
        EXPECT_EQ(outcome.out, c.out);
        EXPECT_NE(outcome.error.find(c.error), std::string::npos) << outcome.error;
        EXPECT_EQ(outcome.error.empty(), c.error.empty()) << outcome.error;
    }
    const Outcome wrong = sim({"fault", "COM3", "--fail", "GetLogRecord"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_NE(wrong.error.find("GetLogRecord is no function"), std::string::npos) << wrong.error;
}

} // namespace
} // namespace quobrix
