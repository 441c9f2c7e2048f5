#include "device/clock_flow.h"
#include "device/switch_flow.h"

#include "support/fake_logger_library.h"
#include "support/scripted_prompter.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>
#include <memory>

namespace quobrix::testing {
namespace {

class CommandFlows : public ::testing::Test {
protected:
    CommandFlows() {
        fake_.loggers["COM1"] = "K-0042-B";
        LockedLogger(link_).openPort("COM1");
    }

    FlowContext context(Prompter& prompter) { return {calls_, prompter, settings_, progress_, {}, document_}; }
    ClockFlow clock(Prompter& prompter) { return {context(prompter), {units_, zone_}}; }
    void logsAreCurrent() {
        LockedLogger logger(link_);
        logger.probe();
        logger.noteLogsCurrent("K-0042-B", logger.status().gaps);
    }
    bool current() { return LockedLogger(link_).status().logsCurrent; }
    /// When the document says that the logger's memory was cleared; 0: never.
    std::int32_t cleared() {
        auto* table = document_.store().existingSingleton<TClearTable>();
        return table && table->rowCount() == 1 ? table->column<TClearTableMostRecentClearColumn>().values()[0] : 0;
    }
    /// Calls that changed something, in order.
    std::string writes() const {
        std::string writes;
        for (const std::string& call : fake_.calls)
            if (call.starts_with("Set") || call.starts_with("Clear") || call.starts_with("Enable"))
                writes += (writes.empty() ? "" : ";") + call;
        return writes;
    }

    FakeLoggerLibrary fake_;
    std::int64_t now_ = 1'700'000'060;
    LoggerLink link_{FakeLoggerLibrary::library(), [this] { return now_; }};
    DirectCalls calls_{link_};
    Settings settings_{std::make_unique<MemorySettings>()};
    ProgressReporter progress_;
    TUnitSystem units_;
    const TimeZone zone_;
    TQuobrixDocument document_;
};

using Line = ScriptedPrompter::Line;
using Lines = std::vector<Line>;
constexpr Line kClear{MessageId::ClearQuobrix}, kClock{MessageId::SynchronizeDateAndTime};

TEST_F(CommandFlows, WhatEachWritesAndWhatComesOfFailures) {
    const std::vector<AnomalousVehicle> vehicles{{7, "Seven"}};
    const auto switches = [&](Prompter& p) { return SwitchFlow(context(p)); };
    const struct {
        const char* writes;
        Lines asks;
        std::function<void(Prompter&)> run;
        const char* failure;
    } commands[] = {
        {"ClearLogs", {kClear}, [&](auto& p) { ClearFlow(context(p)).clearMemory(); }, "Unable to clear the Quobrix"},
        {"ClearAccidentLogs",
         {{MessageId::ClearAccidentLogs}},
         [&](auto& p) { ClearFlow(context(p)).clearAccidents(); },
         "Unable to clear the accident log"},
        {"SetTime 1700000060", {kClock, kClear}, [&](auto& p) { clock(p).synchronize(); }, "Unable to set the time"},
        {"SetTime 1600000000", {kClear}, [&](auto& p) { clock(p).enter(); }, "Unable to set the time"},
        {"EnableLED 1", {}, [&](auto& p) { switches(p).toggleLed(); }, "Unable to enable the LED"},
        {"EnableVinMode 0", {}, [&](auto& p) { switches(p).toggleVinMode(); }, "Unable to disable VIN mode"},
        {"ClearTroubleCodes 1", {}, [&](auto& p) { switches(p).toggleArmed(); }, "Unable to arm the Quobrix"},
        {"SetBeepVolume 7", {}, [&](auto& p) { switches(p).setAlarm(); }, "Unable to enable alarm"},
        {"SetCarType 7", {}, [&](auto& p) { switches(p).setAnomalousVehicle(vehicles); }, "Unable to set car type"},
    };
    for (const auto& [writes, asks, run, failure] : commands) {
        SCOPED_TRACE(writes);
        const auto attempt = [&, &run = run](Lines script) {
            ScriptedPrompter prompter(std::move(script), {});
            prompter.chooses = "Seven";
            prompter.alarm = [](AlarmForm& form) { return form.volume = 7, true; };
            prompter.dateAndTime = [](DateAndTimeForm& form) { return form.logger = 1'600'000'000, true; };
            fake_.led = fake_.armed = false;
            fake_.vinMode = true;
            fake_.calls.clear();
            LockedLogger(link_).noteLogsDoubtful();
            run(prompter);
            return prompter.shown.empty() ? std::string() : prompter.shown.back();
        };
        const auto and_ = [&](MessageId told) {
            Lines script = asks;
            script.push_back({told});
            return script;
        };
        const std::string function(writes, std::string_view(writes).find(' ') == std::string_view::npos
                                               ? std::string_view(writes).size()
                                               : std::string_view(writes).find(' '));
        attempt(asks);
        EXPECT_EQ(this->writes(), writes);
        EXPECT_TRUE(LockedLogger(link_).status().readingsStale);

        constexpr std::tuple<ResultCode, MessageId, const char*> kFailures[] = {
            {QUOBRIX_PORT_NOT_OPENED, MessageId::PortNotOpened, "no serial port"},
            {QUOBRIX_TIMEOUT, MessageId::Timeout, "serial port, COM1"},
            {-9, MessageId::UnexpectedError, "error -9"}};
        for (const auto& [code, told, reason] : kFailures) {
            fake_.results = {{function, code}};
            const std::string message = attempt(and_(told));
            EXPECT_TRUE(message.starts_with(failure) && message.find(reason) != std::string::npos) << message;
            EXPECT_FALSE(current());
        }
        fake_.results.clear();

        int probes = 0; // another logger is plugged in after the first one
        fake_.during = [&](const std::string& called) {
            if (called == "GetSerialNumberAndTime" && ++probes == 2)
                fake_.loggers["COM1"] = "K-0043-B";
        };
        const bool reads = function == "SetBeepVolume" || function == "SetCarType"; // nothing is asked before that
        const std::string message = attempt(reads ? Lines{{MessageId::AnotherLogger}} : and_(MessageId::AnotherLogger));
        EXPECT_NE(message.find("K-0042-B was replaced by another, K-0043-B"), std::string::npos) << message;
        EXPECT_EQ(this->writes(), "");
        fake_.during = {};
        fake_.loggers["COM1"] = "K-0042-B";
    }
    EXPECT_EQ(cleared(), now_);
}

TEST_F(CommandFlows, ANoWritesNothing) {
    ScriptedPrompter prompter({{MessageId::ClearQuobrix, Answer::No},
                               {MessageId::ClearAccidentLogs, Answer::No},
                               {MessageId::SynchronizeDateAndTime, Answer::No},
                               kClock,
                               {MessageId::ClearQuobrix, Answer::No}});
    prompter.leaves = true;
    EXPECT_FALSE(ClearFlow(context(prompter)).clearMemory());
    EXPECT_EQ(clearAfterDownload(settings_), ClearAfterDownload::Ask) << "a mark counts with a yes only";
    EXPECT_FALSE(ClearFlow(context(prompter)).clearAccidents());
    EXPECT_FALSE(clock(prompter).synchronize());
    EXPECT_FALSE(clock(prompter).synchronize()) << "what it would lose";
    prompter.alarm = [](AlarmForm&) { return false; };
    SwitchFlow(context(prompter)).setAlarm();
    EXPECT_FALSE(SwitchFlow(context(prompter)).setAnomalousVehicle({{7, "Seven"}}));
    EXPECT_EQ(writes(), "");
    EXPECT_EQ(cleared(), 0);
}

TEST_F(CommandFlows, ClearingAsksByWhatIsDownloaded) {
    const auto question = [&](Answer answer) {
        ScriptedPrompter prompter({{MessageId::ClearQuobrix, answer}});
        ClearFlow(context(prompter)).clearMemory();
        return prompter.shown.front();
    };
    EXPECT_NE(question(Answer::No).find("even though"), std::string::npos);
    logsAreCurrent();
    EXPECT_EQ(question(Answer::No), "You are about to clear the Quobrix's memory. This cannot be undone. Continue?");
    LockedLogger(link_).noteLogsDoubtful();
    question(Answer::Yes);
    EXPECT_TRUE(current()) << "nothing is left to be downloaded";

    // What was true when it was asked.
    ScriptedPrompter prompter({kClear, {MessageId::LogsNotCurrent}});
    fake_.calls.clear();
    prompter.whileShown = [&] { LockedLogger(link_).noteLogsDoubtful(); };
    EXPECT_FALSE(ClearFlow(context(prompter)).clearMemory());
    EXPECT_EQ(writes(), "");
}

TEST_F(CommandFlows, TheClearQuestionKeepsThePreference) {
    const auto clear = [&](std::optional<bool> leaves) {
        ScriptedPrompter prompter({kClear});
        prompter.leaves = leaves;
        ClearFlow(context(prompter)).clearMemory();
        return prompter.shownMarks;
    };
    using Marks = std::vector<bool>;
    EXPECT_EQ(clear(true), Marks{false});
    EXPECT_EQ(clearAfterDownload(settings_), ClearAfterDownload::Always);
    EXPECT_EQ(clear({}), Marks{true}) << "asks although always";
    EXPECT_EQ(clear(false), Marks{true});
    EXPECT_EQ(clearAfterDownload(settings_), ClearAfterDownload::Ask);
    setClearAfterDownload(settings_, ClearAfterDownload::Never);
    EXPECT_EQ(clear({}), Marks{}) << "no box";
    EXPECT_EQ(clearAfterDownload(settings_), ClearAfterDownload::Never);
}

TEST_F(CommandFlows, SettingTheClockLosesNothingUnasked) {
    const auto set = [&](Lines script) {
        ScriptedPrompter prompter(std::move(script), {});
        prompter.whileShown = [&] { now_ += 10; };
        fake_.calls.clear();
        clock(prompter).synchronize();
        return prompter.shown;
    };
    EXPECT_EQ(set({kClock, kClear}).front(), "The Quobrix clock is currently set to 11/14/2023 10:13 PM.\n"
                                             "The computer clock is currently set to 11/14/2023 10:14 PM.\n\n"
                                             "Set the Quobrix clock equal to the computer clock?");
    EXPECT_EQ(writes(), "SetTime 1700000080") << "the time of the answer";
    EXPECT_TRUE(current());
    set({kClock});
    LockedLogger(link_).noteLogsDoubtful();
    fake_.memory.used = 300; // an empty one
    set({kClock});
    EXPECT_EQ(writes(), "SetTime 1700000100");
}

TEST_F(CommandFlows, WhatAPersonDoesNotTouchStays) {
    const struct {
        const char* product;
        std::int32_t volume, loudest;
    } alarms[] = {{"QBX-4756", 12, 10}, {"QBX-4751", 5, 1}};
    for (const auto& [product, volume, loudest] : alarms) {
        fake_.product = product;
        fake_.volume = volume;
        ScriptedPrompter prompter;
        prompter.alarm = [&](AlarmForm& form) {
            EXPECT_EQ(form.volume, volume) << product;
            EXPECT_EQ(form.loudest, loudest) << product;
            return true;
        };
        SwitchFlow(context(prompter)).setAlarm();
        EXPECT_EQ(fake_.volume, volume);
    }
    const std::vector<AnomalousVehicle> vehicles{{7, "Seven"}, {8, "Eight"}};
    for (const auto& [carType, preset] : {std::pair(0, "Normal vehicle"), std::pair(8, "Eight"),
                                          std::pair(99, "Anomalous vehicle 99"), std::pair(255, "Normal vehicle")}) {
        fake_.carType = carType;
        ScriptedPrompter prompter;
        SwitchFlow(context(prompter)).setAnomalousVehicle(vehicles);
        EXPECT_EQ(prompter.presets, std::vector<std::string>{preset});
    }
}

TEST(AnomalousVehicles, AListIsTakenWholeOrNot) {
    const auto vehicles = readAnomalousVehicles("7\tSeven\r\n\n254\tLast \xC3\xA9\n");
    ASSERT_TRUE(vehicles);
    EXPECT_EQ(*vehicles, (std::vector<AnomalousVehicle>{{7, "Seven"}, {254, "Last \xC3\xA9"}}));
    for (const char* wrong : {"0\tA", "255\tA", "x\tA", "7 A", "7\t ", "7\tA\n7\tB", "7\tA\n8\tA", "7\t\xFF", "7\tA\tB",
                              "-7\tA", "7\t\x1B[2J"}) {
        const auto read = readAnomalousVehicles(wrong);
        ASSERT_FALSE(read) << wrong;
        EXPECT_TRUE(read.error().detail.starts_with("line ")) << read.error().detail;
    }
    EXPECT_FALSE(readAnomalousVehicles("\n\n"));
}

} // namespace
} // namespace quobrix::testing
