#include "cli/program.h"
#include "device/clear_flow.h"
#include "device/download.h"
#include "device/logger_link.h"
#include "device/ports.h"
#include "device/records.h"
#include "device/reporter.h"
#include "support/scripted_prompter.h"
#include "support/set_variable.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <sstream>
#include <utility>

namespace quobrix::testing {
namespace {

/// The whole way from a logger that was driven to checked records, through a real shared library.
class SimulatedLogger : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(test::setVariable("QUOBRIX_SIMULATOR", folder_ / "ports")); // as for the programs
    }

    void simulate(const std::string& arguments) {
        std::istringstream words(arguments);
        const std::vector<std::string> list(std::istream_iterator<std::string>(words), {});
        ASSERT_EQ(test::runProgram(folder_.path(), QUOBRIX_SIM, list).exitCode, 0) << arguments;
    }

    test::TemporaryFolder folder_;
};

TEST_F(SimulatedLogger, IsFoundReadAndCleared) {
    simulate("attach COM3 --serial K-0042-B --product QBX-4751 --clock-offset 600");
    simulate("generate COM3 --trips 30 --seed 11");

    auto library = loadLoggerLibrary(QUOBRIX_SIMULATOR_LIBRARY);
    ASSERT_TRUE(library) << library.error().detail;
    LoggerLink link(std::move(library));
    DirectCalls calls(link);
    Settings settings(std::make_unique<MemorySettings>());
    ScriptedPrompter prompter{{MessageId::PortDetected, Answer::Yes}};
    PortFlows flows(calls, prompter, settings, [](const std::string&) { return ""; });
    ASSERT_EQ(flows.scan(), ScanResult::Found);
    EXPECT_EQ(prompter.shown[0], "A Quobrix (K-0042-B) was detected on COM3.\n\nUse COM3 instead of COM1?");

    LockedLogger logger(link);
    EXPECT_NEAR(static_cast<double>(logger.status().loggerTime - wallClock()), 600, 5);
    EXPECT_EQ(logger.serialNumberToText(logger.status().serialNumber).value, "K-0042-B");
    EXPECT_EQ(logger.identity().value.productNumber, "QBX-4751");

    auto configuration = logger.configuration();
    ASSERT_TRUE(configuration.ok());
    EXPECT_EQ(configuration.value.bandLimits, (std::array<double, 3>{45, 60, 70}));
    configuration.value.bandLimits[0] = 50;
    configuration.value.intervals[4] = 1;
    ASSERT_EQ(logger.setConfiguration(configuration.value), QUOBRIX_OK);
    EXPECT_EQ(logger.configuration().value, configuration.value);

    const auto logs = logger.readLogs(LogMode::Ordinary);
    ASSERT_TRUE(logs.ok()) << logger.describe(logs.code);
    const LogRecords records = parseRecords(logs.value);
    EXPECT_EQ(records.trips.size(), 30u);
    EXPECT_FALSE(records.troubles.empty());
    EXPECT_FALSE(records.activities.empty());
    EXPECT_FALSE(records.stops.empty());
    for (const StopRecord& stop : records.stops)
        EXPECT_FALSE(stop.speedSamples.empty());
    for (const RefusedRecords& refused : records.refused)
        ADD_FAILURE() << recordKindName(refused.kind) << " " << refused.ordinal << ": " << refused.reason;

    ASSERT_EQ(logger.clearLogs(), QUOBRIX_OK);
    EXPECT_TRUE(parseRecords(logger.readLogs(LogMode::Ordinary).value).trips.empty());

    simulate("detach COM3");
    EXPECT_EQ(logger.probe(), QUOBRIX_TIMEOUT);
    logger.closePort();
}

TEST_F(SimulatedLogger, ADownloadTellsOnceWhichKeysAreNew) {
    simulate("attach COM1 --serial K-0042-B");
    simulate("generate COM1 --trips 30 --seed 11"); // by two drivers
    LoggerLink link(loadLoggerLibrary(QUOBRIX_SIMULATOR_LIBRARY));
    DirectCalls calls(link);
    Settings settings(std::make_unique<MemorySettings>());
    settings.setText(kUnidentifiedDriverSection, kDefaultName, "Somebody");
    setClearAfterDownload(settings, ClearAfterDownload::Never);
    ScriptedPrompter silent;
    ProgressReporter noProgress;
    TQuobrixDocument document;
    const TUnitSystem units;
    const TimeZone zone;
    RecoveryFolder recoveries(folder_ / "kept");
    std::vector<NewKeys> added;
    Download download({calls, silent, settings, noProgress, {}, document}, {units, zone},
                      {.startNewDocument = {}, .keysAdded = [&](const NewKeys& keys) { added.push_back(keys); }},
                      recoveries, {});
    ASSERT_TRUE(LockedLogger(link).openPort("COM1") == QUOBRIX_OK);
    ASSERT_TRUE(download.run());
    EXPECT_EQ(document.drivers().name(1), "Somebody");
    document.drivers().nameAll(added.at(0).drivers, "Ann");
    ASSERT_TRUE(download.run());

    ASSERT_EQ(added.size(), 2u);
    EXPECT_EQ(added[0].loggers, std::vector<std::string>{"K-0042-B"});
    EXPECT_EQ(added[0].vehicles.size(), 1u);
    EXPECT_EQ(added[0].drivers.size(), 2u);
    EXPECT_TRUE(added[1].loggers.empty() && added[1].vehicles.empty() && added[1].drivers.empty());
    EXPECT_EQ(document.drivers().name(0), "Ann") << "only new ones get the default";
    EXPECT_EQ(document.vehicles().name(0), "Unknown #1");
}

} // namespace
} // namespace quobrix::testing
