#include "device/monitoring_probe.h"

#include "device/new_data.h"
#include "settings/settings.h"
#include "support/fake_logger_library.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"

#include <gtest/gtest.h>

#include <memory>

namespace quobrix::testing {
namespace {

class Monitoring : public ::testing::Test {
protected:
    Monitoring() {
        fake_.loggers["COM1"] = "K-0042-B";
        logger_.openPort("COM1");
        probe_.run(logger_);
        logger_.readLogs(LogMode::Ordinary);
        logger_.noteLogsCurrent("K-0042-B", logger_.status().gaps);
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

TEST_F(Monitoring, AGapMakesTheLogsDoubtful) {
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

TEST_F(Monitoring, WhatWasReadBeforeAGapIsNotCurrent) {
    const auto current = [&](std::int64_t away, const char* serial) {
        const std::uint32_t gaps = logger_.status().gaps;
        logsCurrentAfter(away); // while a person thinks about a name
        logger_.noteLogsCurrent(serial, gaps);
        return logger_.status().logsCurrent;
    };
    EXPECT_FALSE(current(31, "K-0042-B"));
    EXPECT_TRUE(current(30, "K-0042-B"));
    logger_.noteLogsDoubtful();
    EXPECT_FALSE(current(1, "K-0043-B"));
}

TEST_F(Monitoring, ALongDownloadCountsAsWatching) {
    now_ += 100;
    logger_.readLogs(LogMode::Ordinary);
    EXPECT_TRUE(logsCurrentAfter(1));
}

TEST_F(Monitoring, AnyFailureMarksTheLoggerAbsent) {
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

TEST_F(Monitoring, AClosedPortIsOpenedAgain) {
    const auto attempts = [&](std::int64_t seconds) {
        std::vector<std::int64_t> after;
        for (std::int64_t start = now_; now_ - start < seconds; ++now_) {
            fake_.calls.clear();
            probe_.run(logger_);
            if (fake_.count("OpenPort COM1") > 0)
                after.push_back(now_ - start);
        }
        return after;
    };
    fake_.results["GetSerialNumberAndTime"] = -9; // one bad answer
    EXPECT_TRUE(attempts(1).empty());
    EXPECT_FALSE(logger_.status().portOpen);
    fake_.results.clear();
    EXPECT_EQ(attempts(3), std::vector<std::int64_t>{0});
    EXPECT_TRUE(logger_.status().loggerPresent());

    fake_.portProblems["COM1"] = QUOBRIX_PORT_DOES_NOT_EXIST; // its adapter was unplugged
    fake_.results["GetSerialNumberAndTime"] = -9;
    EXPECT_TRUE(attempts(1).empty());
    fake_.results.clear();
    EXPECT_EQ(attempts(100), (std::vector<std::int64_t>{0, 2, 6, 14, 30, 60, 90}));
    EXPECT_EQ(logger_.status().probe, QUOBRIX_PORT_DOES_NOT_EXIST);
    now_ -= 100'000; // the clock is put right
    EXPECT_EQ(attempts(1).size(), 1u);
    fake_.portProblems.clear();
    EXPECT_EQ(attempts(31).size(), 1u);
    EXPECT_TRUE(logger_.status().loggerPresent());

    logger_.expectPort("COM2"); // as after a scan that was cancelled
    probe_.run(logger_);
    EXPECT_EQ(fake_.openPort, "COM2");
    logger_.expectPort("");
    probe_.run(logger_);
    EXPECT_EQ(fake_.openPort, "COM2") << "before the first scan there is nothing to open";
}

TEST_F(Monitoring, EventsAreNotedOnceUntilTheyChange) {
    const test::TemporaryFolder folder;
    {
        EventLog events(LogFile(folder / "events.txt"), [] { return "-"; });
        LoggerLink link(
            FakeLoggerLibrary::library(), [this] { return now_; }, &events);
        LockedLogger logger(link);
        MonitoringProbe probe;
        const auto probes = [&] {
            for (int i = 0; i < 10; ++i)
                probe.run(logger);
        };
        fake_.results["GetTroubleByte"] = -7;
        logger.openPort("COM1");
        probes();
        fake_.loggers.clear();
        probes();
        fake_.loggers["COM1"] = "K-0042-B";
        probes();
        fake_.loggers["COM1"] = "K-0043-B";
        probes();
        fake_.results["EnableLED"] = -8;
        logger.enableLed(true);
        logger.enableLed(true);
        fake_.portProblems["COM2"] = QUOBRIX_PORT_IN_USE;
        logger.openPort("COM2");
        logger.openPort("COM2");
        probes();
    }
    EXPECT_EQ(test::textOf(folder / "events.txt"), "- Quobrix K-0042-B was found on COM1.\n"
                                                   "- QuobrixGetTroubleByte failed on COM1: -7 (error -7).\n"
                                                   "- QuobrixGetSerialNumberAndTime failed on COM1: -98 (error -98).\n"
                                                   "- Quobrix K-0042-B was found on COM1.\n"
                                                   "- Quobrix K-0043-B was found on COM1.\n"
                                                   "- QuobrixEnableLED failed on COM1: -8 (error -8).\n"
                                                   "- QuobrixEnableLED failed on COM1: -8 (error -8).\n"
                                                   "- QuobrixOpenPort failed on COM2: -197 (error -197).\n");
}

TEST_F(Monitoring, NewDataIsToldOnceAConnection) {
    Settings settings(std::make_unique<MemorySettings>());
    NewDataWatch watch(settings);
    const auto sees = [&](std::int32_t used, std::int64_t seconds = 10, bool idle = true) {
        fake_.memory.used = used;
        bool saw = false;
        for (int i = 0; i < LockedLogger::kReadings; ++i) {
            now_ += i == 0 ? seconds : 0;
            probe_.run(logger_);
            saw = watch.see(logger_.status(), idle) || saw;
        }
        return saw;
    };
    EXPECT_FALSE(sees(500)) << "it has just been downloaded";
    EXPECT_TRUE(sees(700)) << "and there is more by now";
    EXPECT_FALSE(sees(500, 31)) << "as after the download";
    EXPECT_FALSE(sees(700, 31, false));
    EXPECT_TRUE(sees(700)) << "once something can be done";
    EXPECT_FALSE(sees(900));
    EXPECT_TRUE(sees(900, 31));
    EXPECT_FALSE(sees(300, 31)) << "no more than an empty one";
    fake_.loggers["COM1"] = "K-0043-B";
    EXPECT_TRUE(sees(500)) << "another one's";
    logger_.clearLogs();
    EXPECT_FALSE(sees(310));
    EXPECT_FALSE(sees(310, 31)) << "as after the clear";
}

} // namespace
} // namespace quobrix::testing
