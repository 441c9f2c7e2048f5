#include "device/logger_link.h"

#include "platform/paths.h"
#include "support/fake_logger_library.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace quobrix::testing {
namespace {

TEST(LoggerLibrary, MissingOrAnotherLibrary) {
    const test::TemporaryFolder folder;
    const auto missing = loadLoggerLibrary(folder / "libQuobrix.so");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().kind, ErrorKind::NotFound);
    EXPECT_EQ(missing.error().detail, "The logger library " + utf8(folder / "libQuobrix.so") + " was not found.");

    const auto incomplete = loadLoggerLibrary(INCOMPLETE_LIBRARY);
    ASSERT_FALSE(incomplete);
    EXPECT_EQ(incomplete.error().kind, ErrorKind::Unsupported);
    EXPECT_EQ(incomplete.error().detail, INCOMPLETE_LIBRARY " is not the logger library that this program needs: it "
                                                            "lacks 27 of its 28 functions (QuobrixClosePort, ...).");
}

TEST(LoggerLibrary, IsNotTakenFromTheCurrentFolder) {
    const std::filesystem::path before = std::filesystem::current_path();
    const test::TemporaryFolder folder;
    std::filesystem::copy_file(INCOMPLETE_LIBRARY, folder / "libQuobrix.so");
    std::filesystem::current_path(folder.path());
    for (const auto& path :
         {loggerLibraryPath(programFolder({}), std::nullopt), std::filesystem::path("libQuobrix.so")}) {
        const auto loaded = loadLoggerLibrary(path);
        ASSERT_FALSE(loaded);
        EXPECT_EQ(loaded.error().detail.find("28 functions"), std::string::npos) << "it has been loaded";
    }
    EXPECT_TRUE(loggerLibraryPath("/program", ".").is_absolute()) << "what a person names may be relative";
    std::filesystem::current_path(before);
}

TEST(LoggerLink, WorksWithoutLibraryAndSaysWhatIsWrong) {
    LoggerLink link(Error{ErrorKind::NotFound, ShownText::asItIs("There is none.")});
    LockedLogger logger(link);
    EXPECT_EQ(logger.openPort("COM1"), kNoLibrary);
    EXPECT_EQ(logger.probe(), kNoLibrary);
    EXPECT_EQ(logger.identity().code, kNoLibrary);
    EXPECT_EQ(logger.readLogs(LogMode::Ordinary).code, kNoLibrary);
    EXPECT_FALSE(logger.isArmed().ok());
    EXPECT_EQ(logger.outcome(kNoLibrary).description, "There is none.");
    EXPECT_FALSE(logger.status().loggerPresent());
}

class Link : public ::testing::Test {
protected:
    FakeLoggerLibrary fake_;
    std::int64_t now_ = 1000;
    LoggerLink link_{FakeLoggerLibrary::library(), [this] { return now_; }};
    LockedLogger logger_{link_};
};

TEST_F(Link, ATimeOutLeavesThePortOpen) {
    logger_.openPort("COM3");
    EXPECT_EQ(logger_.probe(), QUOBRIX_TIMEOUT);
    EXPECT_EQ(fake_.openPort, "COM3");

    fake_.results["GetSerialNumberAndTime"] = -5;
    EXPECT_EQ(logger_.probe(), -5);
    EXPECT_EQ(fake_.openPort, "");
    EXPECT_FALSE(logger_.status().portOpen);
    EXPECT_EQ(logger_.status().probeDescription, "error -5");
    EXPECT_EQ(logger_.status().port, "COM3") << "the port last opened stays the current one";
    EXPECT_EQ(logger_.probe(), -5) << "and says why it is closed";
}

TEST_F(Link, AProbeOfAPortThatCannotBeOpenedSaysWhy) {
    EXPECT_EQ(logger_.probe(), QUOBRIX_PORT_NOT_OPENED);
    fake_.portProblems["COM4"] = QUOBRIX_PORT_IN_USE;
    EXPECT_EQ(logger_.openPort("COM4"), QUOBRIX_PORT_IN_USE);
    EXPECT_EQ(logger_.probe(), QUOBRIX_PORT_IN_USE);
    logger_.closePort();
    EXPECT_EQ(logger_.probe(), QUOBRIX_PORT_NOT_OPENED);
}

TEST_F(Link, NoVinModeAnswerMeansDisabled) {
    fake_.loggers["COM1"] = "K-0042-B";
    logger_.openPort("COM1");
    EXPECT_TRUE(logger_.vinModeIsEnabled().value);
    fake_.results["VinModeIsEnabled"] = QUOBRIX_NO_VIN_MODE_ANSWER;
    EXPECT_TRUE(logger_.vinModeIsEnabled().ok());
    EXPECT_FALSE(logger_.vinModeIsEnabled().value);
    fake_.results["VinModeIsEnabled"] = QUOBRIX_TIMEOUT;
    EXPECT_EQ(logger_.vinModeIsEnabled().code, QUOBRIX_TIMEOUT);
}

// That the blocks are freed on every path, and once, is the leak checker's to see.
TEST_F(Link, DownloadNamesUnreadableLogs) {
    fake_.loggers["COM1"] = "K-0042-B";
    logger_.openPort("COM1");
    logger_.probe();
    fake_.trips = {8, 0, 0, 0, 0, 0, 0, 0};
    fake_.stops = fake_.trips;
    const auto logs = logger_.readLogs(LogMode::Diagnostic);
    ASSERT_TRUE(logs.ok());
    EXPECT_EQ(bytesOf(logs.value.trips).size(), 8u);
    EXPECT_EQ(bytesOf(logs.value.troublesAndActivity).size(), 8u);
    EXPECT_EQ(fake_.count("GetLogBuffer 1"), 1);

    const struct {
        std::vector<std::string> failing;
        std::string unreadable;
        bool trips, first, second;
    } cases[] = {
        {{}, "", true, true, true},
        {{"GetLogRecords"}, "trips, trouble codes and activity (error -7);", false, true, true},
        {{"GetAccidentLogRecords 1"}, "first accident log (error -7);", true, false, true},
        {{"GetAccidentLogRecords 2"}, "second accident log (error -7);", true, true, false},
        {{"GetLogRecords", "GetAccidentLogRecords"},
         "trips, trouble codes and activity (error -7);first accident log (error -7);second accident log (error -7);",
         false,
         false,
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.unreadable);
        fake_.results.clear();
        for (const std::string& function : c.failing)
            fake_.results[function] = -7;
        logger_.noteLogsCurrent("K-0042-B", logger_.status().gaps);
        const auto read = logger_.readLogs(LogMode::Ordinary);
        ASSERT_TRUE(read.ok());
        std::string unreadable;
        for (const UnreadableLog& log : read.value.unreadable)
            unreadable += log.name + " (" + log.why + ");";
        EXPECT_EQ(unreadable, c.unreadable);
        EXPECT_EQ(bool(read.value.trips), c.trips);
        EXPECT_EQ(bool(read.value.accidents[0].stops), c.first);
        EXPECT_EQ(bool(read.value.accidents[1].stops), c.second);
        EXPECT_EQ(logger_.status().logsCurrent, c.failing.empty());
    }
    fake_.handsOutBuffers = false;
    EXPECT_EQ(logger_.readLogs(LogMode::Ordinary).value.unreadable.size(), 1u) << "there is always a main log";
}

TEST_F(Link, ABlockThatIsHandedOutTwiceIsTakenOnce) {
    fake_.loggers["COM1"] = "K-0042-B";
    logger_.openPort("COM1");
    fake_.handsOutOneBlock = true;
    fake_.trips = {8, 0, 0, 0, 0, 0, 0, 0};
    const auto logs = logger_.readLogs(LogMode::Ordinary);
    EXPECT_TRUE(logs.value.trips);
    EXPECT_FALSE(logs.value.troublesAndActivity);
    EXPECT_EQ(logs.value.unreadable.size(), 3u)
        << "of the main log one set, and the accident logs, whose buffer it was";
}

TEST_F(Link, ASerialNumberOfAnotherFormIsNoLogger) {
    fake_.loggers["COM1"] = "\x1B[2JK-42";
    logger_.openPort("COM1");
    EXPECT_EQ(logger_.probe(), kBadSerialNumber);
    EXPECT_EQ(logger_.status().serialText, "");
    EXPECT_EQ(logger_.status().probeDescription, "The Quobrix gave no valid serial number");
}

TEST_F(Link, WhenLogsAreCurrent) {
    fake_.loggers["COM1"] = "K-0042-B";
    logger_.openPort("COM1");
    fake_.results["ClearLogs"] = -5;
    logger_.clearLogs();
    EXPECT_FALSE(logger_.status().logsCurrent);
    logger_.readLogs(LogMode::Ordinary);
    EXPECT_FALSE(logger_.status().logsCurrent) << "what was read is nowhere yet";
    fake_.results.clear();
    logger_.clearLogs();
    EXPECT_TRUE(logger_.status().logsCurrent);
    fake_.results["GetLogBuffer"] = QUOBRIX_NOT_REPORTED;
    EXPECT_EQ(logger_.readLogs(LogMode::Ordinary).code, QUOBRIX_NOT_REPORTED);
    EXPECT_EQ(fake_.count("GetLogRecords"), 1);
    EXPECT_TRUE(logger_.status().logsCurrent) << "a failure tells nothing";
}

TEST_F(Link, RefusedLogFiles) {
    EXPECT_TRUE(logger_.readLogFile(std::string(260, 'x')).ok());
    EXPECT_EQ(logger_.readLogFile(std::string(261, 'x')).code, kPathTooLong);
    fake_.results["GetLogRecords"] = -7;
    EXPECT_EQ(logger_.readLogFile("log.txt").code, -7);
    fake_.results["GetLogBufferFromFile"] = -6;
    EXPECT_EQ(logger_.readLogFile("log.txt").code, -6);
    EXPECT_FALSE(logger_.status().logsCurrent);
}

} // namespace
} // namespace quobrix::testing
