#include "device/monitoring_probe.h"

#include "support/fake_logger_library.h"

#include <gtest/gtest.h>

namespace quobrix::testing {
namespace {

class Monitoring : public ::testing::Test {
protected:
    Monitoring() {
        fake_.loggers["COM1"] = "K-0042-B";
        logger_.openPort("COM1");
        probe_.run(logger_);
        logger_.readLogs(LogMode::Ordinary);
    }
    bool logsCurrentAfter(std::int64_t seconds) {
        now_ += seconds;
        probe_.run(logger_);
        return logger_.status().logsCurrent;
    }

    FakeLoggerLibrary fake_;
    std::int64_t now_ = 1000;
    LoggerLink link_{FakeLoggerLibrary::library(), [this] { return now_; }};
    LockedLogger logger_{link_};
    MonitoringProbe probe_;
};

TEST_F(Monitoring, AGapOfMoreThan30SecondsMakesTheLogsDoubtful) {
    EXPECT_TRUE(logsCurrentAfter(30));
    EXPECT_TRUE(logsCurrentAfter(30)) << "each successful probe counts anew";
    fake_.loggers.clear();
    EXPECT_TRUE(logsCurrentAfter(16)) << "a failed probe does not yet";
    EXPECT_FALSE(logger_.status().loggerPresent());
    fake_.loggers["COM1"] = "K-0042-B";
    EXPECT_FALSE(logsCurrentAfter(15));
}

TEST_F(Monitoring, AnotherLoggerMakesTheLogsDoubtful) {
    fake_.loggers["COM1"] = "K-0043-B";
    EXPECT_FALSE(logsCurrentAfter(1));
    EXPECT_EQ(logger_.status().serialNumber, 43);
}

TEST_F(Monitoring, ADownloadLongerThanTheGapCountsAsWatching) {
    now_ += 100;
    logger_.readLogs(LogMode::Ordinary);
    EXPECT_TRUE(logsCurrentAfter(1));
}

TEST_F(Monitoring, KeepsTheOptionFlagAndTheFamilyAndAnyFailureMarksTheLoggerAbsent) {
    EXPECT_TRUE(logger_.status().configFlag);
    EXPECT_TRUE(logger_.status().newerModel);
    fake_.flags = 0xFE;
    fake_.product = "QBX-4731";
    probe_.run(logger_);
    EXPECT_FALSE(logger_.status().configFlag);
    EXPECT_FALSE(logger_.status().newerModel);
    for (const char* function : {"GetConfiguration", "GetIdentityInformation"}) {
        fake_.results = {{function, -9}};
        probe_.run(logger_);
        EXPECT_EQ(logger_.status().probe, -9) << function;
    }
    EXPECT_FALSE(link_.probeBusy());
}

TEST_F(Monitoring, StopsBetweenTwoCallsWhenInterrupted) {
    fake_.calls.clear();
    EXPECT_FALSE(probe_.run(logger_, [] { return true; }));
    EXPECT_EQ(fake_.calls, std::vector<std::string>{"GetSerialNumberAndTime"});
}

} // namespace
} // namespace quobrix::testing
