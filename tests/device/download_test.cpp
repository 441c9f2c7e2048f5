#include "device/download.h"

#include "device/clear_flow.h"
#include "device/log_file_import.h"
#include "model/trip_rules.h"

#include "support/document_streams.h"
#include "support/fake_logger_library.h"
#include "support/fault_folder.h"
#include "support/forwarding_files.h"
#include "support/record_set_builder.h"
#include "support/scripted_prompter.h"
#include "support/set_variable.h"
#include "support/temporary_folder.h"

#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <utility>

namespace quobrix::testing {
namespace {

class Downloading : public ::testing::Test {
protected:
    Downloading() {
        fake_.loggers["COM1"] = "K-0042-B";
        fake_.trips = RecordSetBytes().add(plainTrip(), {10, 20, 30}).take();
        fake_.troubles = RecordSetBytes().add(plainTrouble()).take();
        LockedLogger(link_).openPort("COM1");
        setClearAfterDownload(settings_, ClearAfterDownload::Never);
    }

    Download flow(ScriptedPrompter& prompter) {
        return Download(context(prompter), {units_, zone_}, hooks(), *recoveries_,
                        {.chooseAnomalousVehicle = [this] { ++anomalous_; },
                         .log = [this](const std::string& line) { log_.push_back(line); }});
    }
    FlowContext context(ScriptedPrompter& prompter) { return {calls_, prompter, settings_, progress_, {}, document_}; }
    MergeFlow::Hooks hooks() {
        return {.startNewDocument =
                    [this] {
                        ++begun_;
                        document_.newDocument();
                        return true;
                    },
                .mayStartNewDocument = [this] { return mayBegin_; }};
    }
    std::optional<MergeResult> download(ScriptedPrompter& prompter) { return flow(prompter).run(); }
    /// A download is kept in a file of its own.
    bool kept() const {
        return std::filesystem::exists(folder_ / "kept") && !std::filesystem::is_empty(folder_ / "kept");
    }

    /// The example, or another document with one trip and OBJECTS objects.
    void open(const std::string& name, std::size_t objects = 0) {
        TQuobrixDocument made;
        made.trips().insertRows(0, 1);
        while (made.store().objectCount() < objects)
            made.store().create<TTripLogTimesColumn>();
        ASSERT_TRUE(made.saveAs(folder_ / name));
        made.newDocument();
        ASSERT_TRUE(document_.open(folder_ / name, TDocument::Access::Edit));
        ASSERT_TRUE(objects == 0 || document_.store().objectCount() == objects);
    }

    const test::TemporaryFolder folder_;
    FakeLoggerLibrary fake_;
    std::int64_t now_ = fake_.loggerTime;
    LoggerLink link_{FakeLoggerLibrary::library(), [this] { return now_; }};
    DirectCalls calls_{link_};
    Settings settings_{std::make_unique<MemorySettings>()};
    ProgressReporter progress_;
    TQuobrixDocument document_;
    TUnitSystem units_;
    const TimeZone zone_;
    std::optional<RecoveryFolder> recoveries_{folder_ / "kept"};
    std::vector<std::string> log_;
    int anomalous_ = 0;
    bool mayBegin_ = true;
    int begun_ = 0;
};

TEST_F(Downloading, ANewDocumentOnlyForRecords) {
    const struct {
        const char* name;
        std::size_t objects;
        MessageId said;
    } documents[] = {{"Example.car", 0, MessageId::DownloadIntoExample},
                     {"Large.car", 18'001, MessageId::NewFileRecommended}};
    for (const auto& [name, objects, said] : documents) {
        SCOPED_TRACE(name);
        open(name, objects);
        ScriptedPrompter prompter{{said}, {said}, {MessageId::CannotConnect, Answer::No}, {said}, {said}, {said}};
        mayBegin_ = false;
        EXPECT_FALSE(download(prompter));
        EXPECT_EQ(fake_.count("GetSerialNumberAndTime"), 0) << "the logger is not asked for nothing";
        mayBegin_ = true;
        fake_.results["GetSerialNumberAndTime"] = QUOBRIX_TIMEOUT;
        EXPECT_FALSE(download(prompter));
        fake_.results = {{"GetLogBuffer", QUOBRIX_NOT_REPORTED}};
        EXPECT_FALSE(download(prompter));
        fake_.results.clear();
        const auto trips = std::exchange(fake_.trips, {}), troubles = std::exchange(fake_.troubles, {});
        EXPECT_EQ(download(prompter).value().summary(), "Nothing new.");
        EXPECT_EQ(begun_, 0);
        EXPECT_EQ(document_.trips().rowCount(), 1u);
        EXPECT_FALSE(document_.modified());

        fake_.trips = trips;
        fake_.troubles = troubles;
        EXPECT_EQ(download(prompter).value().summary(), "New: 1 trip, 1 trouble code.");
        EXPECT_EQ(std::exchange(begun_, 0), 1);
        EXPECT_FALSE(document_.hasFile());
        fake_.calls.clear();
    }
}

TEST_F(Downloading, ANewFileIsRecommendedBeyond18000Objects) {
    open("Full.car", 18'000);
    ScriptedPrompter silent;
    EXPECT_EQ(download(silent).value().added(), 2u);
    open("Fuller.car", 18'001);
    ScriptedPrompter asked{{MessageId::NewFileRecommended, Answer::No}};
    EXPECT_EQ(download(asked).value().added(), 2u);
    EXPECT_EQ(begun_, 0);
}

TEST_F(Downloading, WhatIsCancelledIsNotCurrent) {
    /// Cancels what may be cancelled, once it has been done.
    struct Cancelling final : LoggerCalls {
        explicit Cancelling(LoggerLink& l) : link(l) {}
        bool run(const CallTitle& title, const Call& call) override {
            LockedLogger logger(link);
            call(logger);
            return !(title.what == "Downloading" && title.cancellable);
        }
        void post(Call call) override {
            LockedLogger logger(link);
            call(logger);
        }
        LoggerLink& link;
    };
    Cancelling calls(link_);
    ScriptedPrompter silent;
    EXPECT_FALSE(
        Download({calls, silent, settings_, progress_, {}, document_}, {units_, zone_}, {}, *recoveries_, {}).run());
    EXPECT_EQ(document_.trips().rowCount(), 0u);
    EXPECT_FALSE(LockedLogger(link_).status().logsCurrent) << "what was read of them went nowhere";
    EXPECT_TRUE(download(silent));
    EXPECT_TRUE(LockedLogger(link_).status().logsCurrent);
}

TEST_F(Downloading, NothingNewChangesOnlyTheTime) {
    ScriptedPrompter silent;
    const auto trips = std::exchange(fake_.trips, {}), troubles = std::exchange(fake_.troubles, {});
    EXPECT_EQ(download(silent).value().summary(), "Nothing new.");
    EXPECT_FALSE(document_.dataChanged());
    EXPECT_FALSE(document_.store().existingSingleton<TDownloadTable>()) << "there is nothing to keep";

    open("Test.car");
    EXPECT_EQ(download(silent).value().summary(), "Nothing new.");
    EXPECT_FALSE(document_.dataChanged());
    ASSERT_TRUE(document_.store().existingSingleton<TDownloadTable>());
    EXPECT_EQ(document_.store().existingSingleton<TDownloadTable>()->rowCount(), 1u);
}

using Lines = std::vector<ScriptedPrompter::Line>;

/// Every difference of the clocks that is told apart, and one second on the other side.
TEST_F(Downloading, ClocksThatDiffer) {
    const std::string zones = "a change in time zones or a change in Daylight Savings Time";
    const struct {
        std::int64_t seconds;
        std::string difference, reason;
    } cases[] = {{300, "", ""},
                 {301, "00:05:01", "clock drift"},
                 {1799, "00:29:59", "clock drift"},
                 {1800, "00:30:00", zones},
                 {5399, "01:29:59", zones},
                 {5400, "01:30:00", "a change in time zones"},
                 {86399, "23:59:59", "a change in time zones"},
                 {86400, "more than a day", "an error in your computer's clock settings or an error in your Quobrix"}};
    for (const auto& c : cases)
        for (const int ahead : {1, -1}) {
            now_ = fake_.loggerTime + ahead * c.seconds;
            std::string difference, reason;
            ScriptedPrompter prompter;
            prompter.timeDifference = [&](TimeDifferenceForm& form) {
                EXPECT_FALSE(form.synchronize || form.computer);
                difference = form.difference;
                reason = form.reason;
                return false;
            };
            EXPECT_EQ(download(prompter).has_value(), c.seconds == 300) << "cancelled";
            EXPECT_EQ(difference, c.difference);
            EXPECT_EQ(reason, c.reason);
        }
    EXPECT_EQ(fake_.count("GetLogBuffer -1"), 2);
}

TEST_F(Downloading, AClockThatWasNeverSet) {
    constexpr std::int32_t kYear2001 = 978'307'200, kYear2002 = 1'009'843'200; // their beginnings
    const auto asked = [&](std::int32_t loggerTime, Lines script, const char* choice = "&Don't Synchronize") {
        fake_.loggerTime = loggerTime;
        fake_.calls.clear();
        ScriptedPrompter prompter(std::move(script), {});
        prompter.chooses = choice;
        int forms = 0;
        prompter.timeDifference = [&](TimeDifferenceForm&) { return ++forms, true; };
        EXPECT_TRUE(download(prompter));
        return forms;
    };
    EXPECT_EQ(asked(kYear2001 - 1, {{MessageId::ClockNeverSet}}), 0);
    EXPECT_EQ(fake_.count("SetTime 1700000000"), 0);
    EXPECT_EQ(asked(kYear2001 - 1, {{MessageId::ClockNeverSet}}, "&Synchronize"), 0);
    EXPECT_EQ(fake_.count("SetTime 1700000000"), 1);
    EXPECT_EQ(asked(kYear2001, {}), 0);
    EXPECT_EQ(asked(kYear2002 - 1, {}), 0);
    EXPECT_EQ(asked(kYear2002, {}), 1);
}

TEST_F(Downloading, TheComputersTimeShiftsWhatIsShown) {
    now_ += 7200;
    ScriptedPrompter prompter;
    prompter.timeDifference = [](TimeDifferenceForm& form) {
        form.computer = form.synchronize = true;
        return true;
    };
    ASSERT_TRUE(download(prompter));
    const auto& trips = document_.trips();
    EXPECT_EQ(trips.column<TTripLogStartTimeColumn>().values()[0], plainTrip().startTime + 7200);
    EXPECT_EQ(fake_.count("SetTime " + std::to_string(now_)), 1) << "after the download";
    prompter.timeDifference = [](const TimeDifferenceForm& form) { return form.computer && form.synchronize; };
    EXPECT_EQ(download(prompter).value().summary(), "Nothing new. Already present: 1 trip, 1 trouble code.");
}

TEST_F(Downloading, ClearsOnlyWhatIsInTheDocument) {
    using enum ClearAfterDownload;
    const auto refused = [] {
        QuobrixTripRecord trip = plainTrip();
        trip.endTime = trip.startTime - 1;
        return RecordSetBytes().add(plainTrip(), {10, 20, 30}).add(trip, {1}).take();
    };
    const MessageId clear = MessageId::ClearQuobrix;
    struct : test::ForwardingFiles {
        Result<void> flushFolder(const std::filesystem::path&) override { return Error{ErrorKind::Io, {}}; }
    } unsafe;
    const auto keepOn = [&](FileSystem& files) { recoveries_.emplace(folder_ / "kept", files); };
    struct Case {
        const char* name;
        ClearAfterDownload choice;
        Lines asks;
        bool cleared;
        std::function<void()> fault{};
    };
    const Case cases[] = {
        {"ask, yes", Ask, {{clear}}, true},
        {"ask, no", Ask, {{clear, Answer::No}}, false},
        {"always", Always, {}, true},
        {"never", Never, {}, false},
        {"always, with a refused record", Always, {{clear, Answer::No}}, false, [&] { fake_.trips = refused(); }},
        {"never, with a refused record", Never, {}, false, [&] { fake_.trips = refused(); }},
        {"a part not parsed",
         Always,
         {{MessageId::LogsUnreadable}},
         false,
         [&] { fake_.results["GetAccidentLogRecords 2"] = -7; }},
        {"nothing kept",
         Always,
         {{MessageId::DownloadNotKept}},
         false,
         [&] { std::ofstream(folder_ / "kept") << "a file where the folder is to be"; }},
        {"a power cut may take what is kept", Always, {{MessageId::DownloadNotKept}}, false, [&] { keepOn(unsafe); }},
        {"another logger by then",
         Always,
         {{MessageId::AnotherLogger}},
         false,
         [&] {
             fake_.during = [&](const std::string& function) {
                 if (function == "GetAccidentLogRecords")
                     fake_.loggers["COM1"] = "K-0043-B";
             };
         }},
    };
    const auto trips = fake_.trips;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        document_.newDocument();
        recoveries_.emplace(folder_ / "kept"); // lets go of its files
        std::filesystem::remove_all(folder_ / "kept");
        fake_.trips = trips;
        fake_.results.clear();
        fake_.calls.clear();
        fake_.during = {};
        fake_.loggers["COM1"] = "K-0042-B";
        if (c.fault)
            c.fault();
        setClearAfterDownload(settings_, c.choice);
        ScriptedPrompter prompter(c.asks, {});
        EXPECT_TRUE(download(prompter));
        EXPECT_EQ(fake_.count("ClearLogs"), c.cleared ? 1 : 0);
    }
}

TEST_F(Downloading, WhatCameOfItIsToldBeforeAClearAndKeptRecordsAreAskedAboutOnce) {
    QuobrixTripRecord backward = plainTrip();
    backward.endTime = backward.startTime - 1;
    fake_.trips = RecordSetBytes().add(plainTrip(), {10, 20, 30}).add(backward, {1}).take();
    now_ += 7200;
    setClearAfterDownload(settings_, ClearAfterDownload::Ask);
    ScriptedPrompter prompter{{MessageId::ClearQuobrix, Answer::No}};
    prompter.timeDifference = [](TimeDifferenceForm& form) { return form.synchronize = true; };
    MergeFlow::Hooks telling = hooks();
    telling.tellResult = [&](const MergeResult& result) { prompter.shown.push_back(result.summary()); };
    EXPECT_TRUE(Download(context(prompter), {units_, zone_}, telling, *recoveries_, {}).run());
    ASSERT_EQ(prompter.shown.size(), 2u);
    EXPECT_EQ(prompter.shown[0], "New: 1 trip, 1 trouble code. Refused: 1 trip.");
    EXPECT_EQ(fake_.count("SetTime " + std::to_string(now_)) + fake_.count("ClearLogs"), 0)
        << "both would lose what was refused";
}

/// Trips an hour apart, each two or more seconds long, whose vehicles told TEXTS instead of their VINs.
Bytes tripsOf(std::initializer_list<std::string> texts, std::uint8_t seconds = 2) {
    RecordSetBytes set;
    std::int32_t start = plainTrip().startTime;
    for (const std::string& text : texts) {
        QuobrixTripRecord trip = plainTrip();
        trip.startTime = start += 3600;
        trip.endTime = start + seconds;
        std::memset(trip.vin, 0, sizeof trip.vin);
        std::memcpy(trip.vin, text.data(), text.size());
        trip.speedSamples.count = seconds + 1u;
        set.add(trip, Bytes(seconds + 1u, 10));
    }
    return set.take();
}

#ifndef _WIN32 // where the folder of the user's types follows no variable
TEST_F(Downloading, NewTripsGetTheTypesOfRules) {
    ASSERT_TRUE(test::setVariable("XDG_DATA_HOME", folder_ / "data"));
    ASSERT_TRUE(saveTripTypes({{{"Work"}, {"Fun"}}, {}}));
    fake_.troubles = {};
    fake_.trips = tripsOf({"1HGCM82633A004352", "1GTEK19T23E123456", "1HGCM82633A004353"}); // Tuesday, from 23:13 on
    saveTripRules(settings_, std::vector<TripRule>{{"fun", 0, {}, {}, "1GTEK19T23E123456"},
                                                   {"Gone", 0, {}, {}, "1HGCM82633A004353"},
                                                   {"Work", 4, 22 * 60, 6 * 60}});
    ScriptedPrompter prompter;
    const auto types = [&] { return document_.trips().column<TTripLogTripTypeColumn>().values(); };
    ASSERT_TRUE(download(prompter));
    EXPECT_EQ(types(), (std::vector<std::string>{"Work", "Fun", ""}));
    document_.edits().undo();
    EXPECT_EQ(types(), std::vector<std::string>()) << "in one step with the download";
    document_.edits().redo();
    ASSERT_EQ(document_.trips().rowCount(), 3u);

    document_.trips().column<TTripLogTripTypeColumn>().set(0, "");
    fake_.trips = tripsOf({"1HGCM82633A004352", "1GTEK19T23E123456", "1HGCM82633A004353", "1GTEK19T23E123456"}, 3);
    ASSERT_TRUE(download(prompter));
    EXPECT_EQ(types(), (std::vector<std::string>{"", "Fun", "", "Fun"})) << "fuller records are no new trips";
}
#endif

TEST_F(Downloading, AsksOnceInWhichVehicleTripsWereMade) {
    const std::string vin = "WVWZZZ1KZAW000001", other = "WVWZZZ1KZAW000002";
    ScriptedPrompter prompter;
    ASSERT_TRUE(download(prompter)); // one trip with a VIN
    document_.vehicles().nameAll(std::vector{vin}, "Golf");
    const auto vehicles = [&] { return document_.trips().column<TTripLogVinColumn>().values(); };

    std::vector<UnidentifiedVehicleForm> asked;
    std::string answer;
    bool forAll = false;
    prompter.unidentifiedVehicle = [&](UnidentifiedVehicleForm& form) {
        asked.push_back(form);
        form.vehicle = answer;
        form.forAll = forAll;
        return !answer.empty();
    };
    fake_.trips = tripsOf({"", "XX", "XX", vin});
    answer = "Golf";
    prompter.unidentifiedVehicle = [&, first = prompter.unidentifiedVehicle](UnidentifiedVehicleForm& form) {
        const bool yes = first(form);
        answer = {}; // the second one is cancelled
        return yes;
    };
    EXPECT_EQ(download(prompter).value().logs[0].added, 4u);
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].read, "");
    EXPECT_EQ(asked[0].trips, 1u);
    EXPECT_EQ(asked[0].firstTrip, "11/14/2023 11:13 PM");
    EXPECT_TRUE(asked[0].more && !asked[1].more);
    EXPECT_EQ(asked[1].read, "XX");
    EXPECT_EQ(asked[1].trips, 2u);
    EXPECT_EQ(asked[1].vehicle, vin) << "as before";
    EXPECT_EQ(vehicles(), (std::vector<std::string>{vin, vin, "XX", "XX", vin}));
    EXPECT_EQ(document_.vehicles().rowCount(), 2u);

    // Known again, with whatever the vehicle tells then, unless it is another VIN.
    asked.clear();
    EXPECT_EQ(download(prompter).value().summary(), "Nothing new. Already present: 4 trips, 1 trouble code.");
    fake_.trips = tripsOf({"Y", "", other, "Z"}, 5);
    EXPECT_EQ(download(prompter).value().logs[0].replaced, 4u);
    EXPECT_TRUE(asked.empty());
    EXPECT_EQ(vehicles(), (std::vector<std::string>{vin, vin, "XX", other, vin}));
    fake_.trips = tripsOf({other}, 5);
    EXPECT_EQ(download(prompter).value().summary(), "Replaced: 1 trip. Already present: 1 trouble code.");
    EXPECT_EQ(vehicles()[1], vin) << "the vehicle that a person gave it stays";
    EXPECT_EQ(document_.trips().recorded(1).vin, other);

    // One answer for all, a vehicle that nobody knew.
    document_.newDocument();
    fake_.trips = tripsOf({"XX", "", vin, "ABC"});
    fake_.troubles.clear();
    answer = " wvwzzz1kzaw000002";
    forAll = true;
    EXPECT_EQ(download(prompter).value().newKeys.vehicles, (std::vector<std::string>{vin, other}));
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].known.at(0).vin, vin) << "which comes with them";
    EXPECT_EQ(vehicles(), (std::vector<std::string>{other, other, vin, other}));
    document_.edits().undo();
    EXPECT_EQ(document_.trips().rowCount() + document_.vehicles().rowCount(), 0u);
}

TEST_F(Downloading, ALogFileTakesTheSameWay) {
    const auto import = [&](ScriptedPrompter& prompter) {
        return LogFileImport(context(prompter), {units_, zone_}, hooks()).run("log.txt");
    };
    fake_.loggers.clear(); // none is needed
    ScriptedPrompter prompter{{MessageId::NotALogFile}, {MessageId::NotALogFile}};
    for (const char* function : {"GetLogBufferFromFile", "GetLogRecords"}) {
        fake_.results = {{function, -7}};
        EXPECT_FALSE(import(prompter));
        EXPECT_FALSE(document_.dataChanged());
    }
    fake_.results.clear();
    EXPECT_EQ(import(prompter).value().summary(), "New: 1 trip, 1 trouble code.");
    EXPECT_EQ(fake_.count("GetLogBufferFromFile log.txt"), 3);
    EXPECT_EQ(fake_.count("GetSerialNumberAndTime"), 0);
    EXPECT_FALSE(document_.store().existingSingleton<TDownloadTable>());
    EXPECT_FALSE(LockedLogger(link_).status().logsCurrent);
    EXPECT_FALSE(kept());
    EXPECT_EQ(document_.edits().undoDescription(), "import");
    document_.edits().undo();
    EXPECT_EQ(document_.trips().rowCount(), 0u);
    EXPECT_TRUE(import(prompter));

    open("Example.car");
    ScriptedPrompter told{{MessageId::DownloadIntoExample}};
    EXPECT_TRUE(import(told));
    EXPECT_EQ(begun_, 1);
}

TEST_F(Downloading, EachLeavesALine) {
    ScriptedPrompter prompter{{MessageId::UnexpectedError}};
    now_ -= 20;
    fake_.during = [this](const std::string& function) { now_ += function == "GetLogBuffer" ? 7 : 0; };
    ASSERT_TRUE(download(prompter));
    fake_.results["GetLogBuffer"] = -7;
    EXPECT_FALSE(download(prompter));
    const auto line = [](const char* firmware, int records, const char* end) {
        return fmt::format("11/14/2023 - 10:13 PM; K-0042-B; firmware {0}; COM1; new: trips {1} of {1}, trouble codes "
                           "{1} of {1}, events 0 of 0, severe stops 0 of 0; {2}",
                           firmware, records, end);
    };
    EXPECT_EQ(log_[0], line("3.00.0", 1, "488 bytes; clock +20 s; 7 s; done"));
    EXPECT_EQ(log_.at(1), line("unknown", 0, "0 bytes; clock +13 s; 7 s; failed: error -7"));
}

TEST_F(Downloading, IsCurrentForOneLoggerWhileItIsWatched) {
    const auto current = [this] { return LockedLogger(link_).status().logsCurrent; };
    const auto probe = [this] { LockedLogger(link_).probe(); };
    ScriptedPrompter prompter{{MessageId::DownloadNotKept}};
    ASSERT_TRUE(download(prompter));
    now_ += 30;
    probe();
    EXPECT_TRUE(current());
    fake_.loggers["COM1"] = "K-0043-B";
    probe();
    EXPECT_FALSE(current());
    fake_.loggers["COM1"] = "K-0042-B";
    probe();
    EXPECT_FALSE(current());

    ASSERT_TRUE(download(prompter));
    now_ += 31; // and a read that fails tells nothing of that time
    fake_.results["GetLogBuffer"] = QUOBRIX_TIMEOUT;
    EXPECT_FALSE(LockedLogger(link_).readLogs(LogMode::Ordinary).ok());
    fake_.results.clear();
    probe();
    EXPECT_FALSE(current());

    recoveries_.emplace(folder_ / "kept");
    std::filesystem::remove_all(folder_ / "kept");
    std::ofstream(folder_ / "kept") << "a file where the folder is to be";
    document_.newDocument();
    ASSERT_TRUE(download(prompter));
    EXPECT_FALSE(current()) << "the only copy is in memory";
}

TEST_F(Downloading, WhicheverCallFailsNothingIsLost) {
    /// Says yes to everything.
    struct Agreeable final : ScriptedPrompter {
        Answer ask(const Message&) override { return Answer::Yes; }
        Answer askMarked(const Message&, SourceText, bool&) override { return Answer::Yes; }
        std::optional<std::size_t> chooseAction(const Message&, const std::vector<SourceText>&) override { return 0; }
        void tell(const Message&) override {}
        using ScriptedPrompter::fillIn;
        bool fillIn(SerialPortForm&) override { return false; }
    };
    setClearAfterDownload(settings_, ClearAfterDownload::Always);
    fake_.loggerTime = 900'000'000; // a clock that was never set, and is to be
    fake_.product = "QBX-4750";
    fake_.carType = 255;
    Agreeable prompter;
    for (const char* function :
         {"OpenPort", "GetSerialNumberAndTime", "ConvertSerialNumberToInt", "GetLogBuffer", "GetLogRecords",
          "GetAccidentLogRecords", "GetIdentityInformation", "GetCarType", "ClearLogs", "SetTime"})
        for (const ResultCode code : std::initializer_list<ResultCode>{
                 QUOBRIX_NOT_REPORTED, QUOBRIX_TIMEOUT, QUOBRIX_PORT_IN_USE, QUOBRIX_PORT_DOES_NOT_EXIST,
                 QUOBRIX_NO_VIN_MODE_ANSWER, QUOBRIX_PORT_NOT_OPENED, -7}) {
            SCOPED_TRACE(std::string(function) + " " + std::to_string(code));
            document_.newDocument();
            recoveries_.emplace(folder_ / "kept"); // lets go of its files
            std::filesystem::remove_all(folder_ / "kept");
            fake_.results = {{function, code}};
            fake_.calls.clear();
            const std::optional<MergeResult> result = download(prompter);
            const bool merged = document_.trips().rowCount() == 1 && document_.troubles().rowCount() == 1;
            EXPECT_TRUE(merged || (document_.trips().rowCount() == 0 && document_.troubles().rowCount() == 0));
            EXPECT_EQ(result.has_value(), merged || (result && !result->unreadable.empty()));
            const int lost = fake_.count("ClearLogs") + fake_.count("SetTime " + std::to_string(now_));
            EXPECT_TRUE(lost == 0 || (merged && result->complete())) << "what is not in the document was cleared";
            fake_.results.clear();
            EXPECT_TRUE(download(prompter)) << "and the next one is as ever";
            EXPECT_EQ(document_.trips().rowCount(), 1u);
        }
}

TEST_F(Downloading, AnAnomalousVehicleIsAskedAboutOnce) {
    fake_.product = "QBX-4750";
    fake_.carType = 255;
    ScriptedPrompter prompter{{MessageId::AnomalyVehicle}};
    ASSERT_TRUE(download(prompter));
    EXPECT_EQ(anomalous_, 1);
    fake_.carType = 7;
    ASSERT_TRUE(download(prompter));
    fake_.product = "QBX-4751";
    fake_.carType = 255;
    ASSERT_TRUE(download(prompter));
    EXPECT_EQ(anomalous_, 1);
}

TEST_F(Downloading, IsKeptUntilASavedDocumentHoldsIt) {
    const auto left = [&] { return RecoveryFolder(folder_ / "kept").left().size() + (kept() ? 10 : 0); };
    ScriptedPrompter silent;
    ASSERT_TRUE(download(silent));
    EXPECT_EQ(left(), 10u) << "there, and locked";
    document_.edits().undo();
    EXPECT_TRUE(recoveries_->undoneSince());
    ASSERT_TRUE(document_.saveAs(folder_ / "A.car"));
    recoveries_->documentSaved();
    EXPECT_EQ(left(), 10u) << "that was without it";
    {
        const auto trips = std::exchange(fake_.trips, {}), troubles = std::exchange(fake_.troubles, {});
        ASSERT_TRUE(download(silent)); // an empty logger, which says nothing of the download before
        recoveries_->documentSaved();
        EXPECT_EQ(left(), 10u);
        fake_.trips = trips;
        fake_.troubles = troubles;
    }
    document_.edits().redo();
    ASSERT_TRUE(document_.save());
    recoveries_->documentSaved();
    EXPECT_EQ(left(), 0u);
    EXPECT_FALSE(recoveries_->undoneSince());
    document_.edits().undo();
    EXPECT_TRUE(recoveries_->undoneSince()) << "saved or not";
    document_.edits().redo();

    QuobrixTripRecord later = plainTrip();
    later.startTime += 1000;
    later.endTime += 1000;
    fake_.trips = RecordSetBytes().add(later, {10, 20, 30}).take();
    ASSERT_TRUE(download(silent));
    recoveries_->documentReplaced();
    recoveries_->documentSaved(); // another one
    EXPECT_EQ(left(), 10u);
    recoveries_.emplace(folder_ / "kept"); // the next start
    ASSERT_EQ(recoveries_->left().size(), 1u);
    const auto taken = recoveries_->take(recoveries_->left()[0]);
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->serialText, "K-0042-B");
    document_.newDocument();
    EXPECT_EQ(flow(silent).recover(*taken).value().summary(), "New: 1 trip, 1 trouble code.");
    EXPECT_EQ(left(), 10u);
    ASSERT_TRUE(document_.saveAs(folder_ / "B.car"));
    recoveries_->documentSaved();
    EXPECT_EQ(left(), 0u);
    EXPECT_EQ(download(silent).value().summary(), "Nothing new. Already present: 1 trip, 1 trouble code.");
    EXPECT_EQ(left(), 0u) << "the file on the disk holds it";
    std::filesystem::remove(folder_ / "B.car");
    EXPECT_EQ(download(silent).value().summary(), "Nothing new. Already present: 1 trip, 1 trouble code.");
    EXPECT_EQ(left(), 10u) << "no file holds it";
}

TEST_F(Downloading, GoesHoweverItsRecordsCameIntoTheSavedDocument) {
    const auto left = [&] { return RecoveryFolder(folder_ / "kept").left().size() + (kept() ? 10 : 0); };
    ScriptedPrompter silent;
    ASSERT_TRUE(download(silent));
    document_.edits().undo();
    ASSERT_TRUE(download(silent)); // which the file of the first one is not told of
    recoveries_->documentReplaced();
    recoveries_.emplace(folder_ / "kept"); // the next start, at which a person does not want them yet
    EXPECT_EQ(recoveries_->left().size(), 2u);
    document_.newDocument();
    ASSERT_TRUE(document_.saveAs(folder_ / "A.car"));
    const RecoveryFolder::Document saved = heldBy(document_);
    recoveries_->documentSaved(&saved);
    EXPECT_EQ(left(), 12u);
    ASSERT_TRUE(download(silent));
    recoveries_->documentSaved(&saved);
    EXPECT_EQ(left(), 0u);

    document_.edits().undo();
    ASSERT_TRUE(download(silent)); // again, by another step
    for (int save = 0; save < 3; ++save) {
        recoveries_->documentSaved(&saved);
        EXPECT_EQ(left(), 0u) << "save " << save;
    }

    document_.edits().undo(); // when the logger may have been cleared
    recoveries_->documentSaved(&saved);
    EXPECT_EQ(left(), 10u) << "the file on the disk does not hold it any more";
    document_.edits().redo();
    recoveries_->documentSaved(&saved);
    EXPECT_EQ(left(), 0u);
}

TEST_F(Downloading, OfAnotherLoggerWithNothingNewLeavesTheHistory) {
    open("Test.car");
    ScriptedPrompter silent;
    ASSERT_TRUE(download(silent));
    ASSERT_TRUE(document_.save());
    fake_.loggers["COM1"] = "K-0043-B";
    fake_.trips.clear();
    fake_.troubles.clear();
    ASSERT_TRUE(download(silent));
    document_.edits().undo();
    EXPECT_EQ(document_.trips().rowCount(), 1u) << "the first one is taken back";
    EXPECT_TRUE(document_.edits().canRedo());
}

TEST_F(Downloading, APowerCutLeavesAllOfARecoveryFileOrNone) {
    KeptDownload download;
    download.serialText = "K-0042-B";
    download.blocks.trips.reset(static_cast<QuobrixRecordSet*>(std::malloc(fake_.trips.size())));
    std::memcpy(download.blocks.trips.get(), fake_.trips.data(), fake_.trips.size());
    const auto wholeIn = [&](const test::FaultFolder::Image& image) {
        std::size_t whole = 0;
        for (const auto& [path, bytes] : image)
            if (path.extension() == ".download") {
                EXPECT_EQ(bytes, recoveryBytes(download));
                ++whole;
            }
        return whole;
    };
    int changes = 0;
    for (unsigned seed = 0; seed < 50; ++seed) {
        test::FaultFolder disk(seed);
        disk.afterEachChange = [&] {
            ++changes;
            EXPECT_LE(wholeIn(disk.powerCut()), 1u);
        };
        RecoveryFolder kept(folder_ / "kept", disk);
        ASSERT_TRUE(kept.keep(download));
        EXPECT_EQ(wholeIn(disk.powerCut()), 1u) << "durable when it returns";
    }
    EXPECT_GE(changes, 100);
}

TEST_F(Downloading, RecoveryFilesAreNotBelieved) {
    KeptDownload download;
    download.serialText = "K-0042-B";
    download.blocks.trips.reset(static_cast<QuobrixRecordSet*>(std::malloc(fake_.trips.size())));
    std::memcpy(download.blocks.trips.get(), fake_.trips.data(), fake_.trips.size());
    const Bytes bytes = recoveryBytes(download);
    ASSERT_TRUE(readRecovery(bytes));
    EXPECT_EQ(recoveryBytes(*readRecovery(bytes)), bytes);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        Bytes changed = bytes;
        changed[i] ^= 0x40;
        EXPECT_FALSE(readRecovery(changed)) << i;
        EXPECT_FALSE(readRecovery(ByteView(bytes).first(i))) << i;
    }
}

} // namespace
} // namespace quobrix::testing
