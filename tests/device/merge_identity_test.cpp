// Which records are the same, and what becomes of what a person has made of them.
#include "merge_records.h"

#include "model/record_edits.h"
#include "support/document_streams.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <functional>
#include <set>

namespace quobrix::testing {
namespace {

TEST(Merge, TheSameIfOneContinuesTheOther) {
    using Change = std::function<void(TripRecord&)>;
    const Change longer = [](TripRecord& r) {
        r.endTime += 30;
        r.speedSamples.resize(91, 70);
        r.bandSeconds[3] += 30;
        r.hardBrakes.push_back(80);
        r.series[0] = {2, 5, false, {800, kNoValue, 1200, 900}};
    };
    const auto series = [](std::int32_t parameter, std::int32_t interval, std::vector<double> samples) -> Change {
        return [=](TripRecord& r) { r.series[0] = {parameter, interval, false, samples}; };
    };
    const auto longerAnd = [&](const Change& change) {
        return [=](TripRecord& r) {
            longer(r);
            change(r);
        };
    };
    const struct {
        const char* what;
        Change change;
        std::string outcome, theOtherWayRound;
    } cases[] = {
        {"nothing", [](TripRecord&) {}, "present", "present"},
        {"longer", longer, "replaced", "present"},
        {"longer, now without VIN", longerAnd([](auto& r) { r.origin.vin = ""; }), "replaced", "replaced"},
        {"longer, of another vehicle", longerAnd([](auto& r) { r.origin.vin = kOtherVin; }), "new", "new"},
        {"longer, but began otherwise", longerAnd([](auto& r) { r.speedSamples[0] = 49; }), "new", "new"},
        {"longer, without the first event", longerAnd([](auto& r) {
             r.hardBrakes = {20, 80};
         }),
         "new", "new"},
        {"longer, with one event less", longerAnd([](auto& r) { r.hardBrakes = {5}; }), "new", "new"},
        {"longer, less time at standstill", longerAnd([](auto& r) { r.idleSeconds = 9; }), "new", "new"},
        {"longer, more hard accelerations", longerAnd([](auto& r) { r.hardAccelerations = {70}; }), "replaced",
         "present"},
        {"longer, one series more", longerAnd([](auto& r) {
             r.series[1] = {4, 60, false, {82}};
         }),
         "replaced", "present"},
        {"longer, another series", longerAnd(series(3, 5, {800, kNoValue, 1200, 900})), "new", "new"},
        {"longer, series at another pace", longerAnd(series(2, 6, {800, kNoValue, 1200, 900})), "new", "new"},
        {"longer, another reading", longerAnd(series(2, 5, {800, kNoValue, 1201, 900})), "new", "new"},
        {"a reading where there was none", series(2, 5, {800, 0, 1200}), "new", "new"},
        {"a reading that is kept alike", series(2, 5, {800.1, kNoValue, 1200}), "present", "present"},
        {"another sampling interval", [](auto& r) { r.speedSamplingInterval = 2; }, "new", "new"},
        {"a distance computed anew", [](auto& r) { r.distance += 1e-9; }, "present", "present"},
        {"another logger", [](auto& r) { r.origin.serialNumber = "K-0043-B"; }, "new", "new"},
        {"a second later", [](auto& r) { ++r.startTime, ++r.endTime; }, "new", "new"},
        {"without VIN", [](auto& r) { r.origin.vin = ""; }, "present", "replaced"},
        {"without driver", [](auto& r) { r.driverId = 0; }, "present", "replaced"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TripRecord changed = trip(kNoon);
        c.change(changed);
        EXPECT_EQ(outcome(trips({trip(kNoon)}), trips({changed})), c.outcome);
        EXPECT_EQ(outcome(trips({changed}), trips({trip(kNoon)})), c.theOtherWayRound);
    }

    const auto with = [](const std::function<void(LogRecords&)>& change) {
        LogRecords records = oneOfEach();
        records.trips.clear();
        change(records);
        return records;
    };
    const struct {
        const char* what;
        std::function<void(LogRecords&)> change;
        std::string outcome, theOtherWayRound;
    } others[] = {
        {"a figure more", [](auto& r) { r.troubles[0].engineSpeed = 900; }, "replaced", "present"},
        {"a status more", [](auto& r) { r.troubles[0].fuelSystemStatus[1] = 2; }, "replaced", "present"},
        {"another figure", [](auto& r) { r.troubles[0].coolantTemperature = 89; }, "new", "new"},
        {"another status", [](auto& r) { r.troubles[0].fuelSystemStatus[0] = 2; }, "new", "new"},
        {"another code", [](auto& r) { r.troubles[0].code = "P0301"; }, "new", "new"},
        {"another vehicle's trouble", [](auto& r) { r.troubles[0].origin.vin = kOtherVin; }, "new", "new"},
        {"a vehicle's activity", [](auto& r) { r.activities[0].origin.vin = kVin; }, "replaced", "present"},
        {"another event", [](auto& r) { r.activities[0].eventType = 4; }, "new", "new"},
        {"another stop", [](auto& r) { r.stops[0].speedSamples[0] = 61; }, "new", "new"},
        {"a longer stop", [](auto& r) { ++r.stops[0].timestamp; }, "new", "new"},
        {"a stop of which only the samples count", [](auto& r) { r.stops[0].maximumSpeed = 61; }, "present", "present"},
        {"a stop without samples, at another speed",
         [](auto& r) {
             r.stops[0].speedSamples.clear();
             r.stops[0].maximumSpeed = 61;
         },
         "present", "new"},
        {"a stop without samples", [](auto& r) { r.stops[0].speedSamples.clear(); }, "present", "replaced"},
    };
    for (const auto& c : others) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(outcome(with([](auto&) {}), with(c.change)), c.outcome);
        EXPECT_EQ(outcome(with(c.change), with([](auto&) {})), c.theOtherWayRound);
    }
}

// The clock of a logger that was never set starts over with each power-up, so that many drives begin at the same time.
TEST(Merge, DrivesOfOneRecordedTime) {
    const auto drive = [](std::vector<std::uint8_t> speeds) {
        TripRecord record;
        record.origin = {"K-0042-B", ""};
        record.startTime = 946'684'800;
        record.endTime = record.startTime + static_cast<std::int32_t>(speeds.size()) - 1;
        record.speedSamplingInterval = 1;
        record.speedSamples = std::move(speeds);
        return record;
    };
    const auto speedsIn = [](const TQuobrixDocument& document) {
        std::multiset<std::vector<std::uint8_t>> speeds;
        for (RowIndex row = 0; row < document.trips().rowCount(); ++row)
            speeds.insert(document.trips().column<TTripLogSampleTableColumn>().object(row)->speed().values());
        return speeds;
    };
    TQuobrixDocument document;
    EXPECT_EQ(merge(trips({drive({0, 9, 20})}), document).summary(), "New: 1 trip.");
    EXPECT_EQ(merge(trips({drive({0, 8, 20, 30})}), document).summary(), "New: 1 trip.");
    EXPECT_EQ(merge(trips({drive({0, 7})}), document).summary(), "New: 1 trip.");
    EXPECT_EQ(merge(trips({drive({0, 8, 20, 30, 40}), drive({0, 9, 20})}), document).summary(),
              "Replaced: 1 trip. Already present: 1 trip.");
    // What may be the beginning of any must not take the row of the one that continues it.
    const LogRecords four = trips({drive({0}), drive({0, 7, 8}), drive({0, 8, 20, 30, 40}), drive({0, 9, 20})});
    EXPECT_EQ(merge(four, document).summary(), "New: 1 trip. Replaced: 1 trip. Already present: 2 trips.");
    // Of two rows that it may continue the longer one is meant.
    EXPECT_EQ(merge(trips({drive({0, 7, 8, 9})}), document).summary(), "Replaced: 1 trip.");
    EXPECT_EQ(speedsIn(document),
              (std::multiset<std::vector<std::uint8_t>>{{0}, {0, 7, 8, 9}, {0, 8, 20, 30, 40}, {0, 9, 20}}));
    // Two records of one download are two, however alike.
    LogRecords twice = four;
    twice.trips.push_back(drive({0}));
    EXPECT_EQ(merge(twice, document).summary(), "New: 1 trip. Already present: 4 trips.");
    EXPECT_EQ(merge(twice, document).summary(), "Nothing new. Already present: 5 trips.");
    const auto& numbers = document.trips().column<TTripLogRecordColumn>().values();
    std::set<std::uint32_t> occurrences;
    for (const RecordIdentity& identity : numbers)
        occurrences.insert(identity.occurrence);
    EXPECT_EQ(occurrences.size(), numbers.size());
}

TEST(Merge, WhatAPersonGaveATripStays) {
    const auto shown = [](const TQuobrixDocument& document) {
        const TTripLogTable& table = document.trips();
        return fmt::format("{} {} {} {}", table.column<TTripLogVinColumn>().at(0),
                           table.column<TTripLogDriverIDColumn>().at(0), table.column<TTripLogTripTypeColumn>().at(0),
                           table.column<TTripLogCommentsColumn>().at(0));
    };
    const test::TemporaryFolder folder;
    const std::filesystem::path path = folder / "Test.car";
    for (const bool olderFile : {false, true}) {
        SCOPED_TRACE(olderFile);
        ObjectId table = kNoObject;
        {
            TQuobrixDocument made;
            merge(trips({trip(kNoon, 59)}), made);
            table = made.trips().id();
            ASSERT_TRUE(made.saveAs(path));
        }
        if (olderFile) // one of before the vehicle and driver were kept as recorded
            test::tamper(path, [&](CompoundFile& file) {
                const Bytes stream = *file.read(std::to_string(table));
                ByteReader in(ByteView(stream).subspan(5));
                TableContent content;
                ASSERT_TRUE(content.read(in));
                std::erase_if(content.columns, [](const Reference& c) {
                    return c.typeId == TTripLogRecordedOriginColumn::kType.id() ||
                           c.typeId == TTripLogTripTypeColumn::kType.id();
                });
                ByteWriter out;
                content.write(out);
                Bytes changed(stream.begin(), stream.begin() + 5);
                const Bytes rest = out.take();
                changed.insert(changed.end(), rest.begin(), rest.end());
                file.write(std::to_string(table), changed);
            });
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
        TTripLogTable& stored = document.trips();
        stored.column<TTripLogCommentsColumn>().set(0, "rain");
        ASSERT_TRUE(giveTripType(document, {0}, "Work").ok());
        if (olderFile) {
            TripRecord fuller = trip(kNoon);
            fuller.driverId = 3;
            EXPECT_EQ(merge(trips({fuller}), document).logs[0].replaced, 1u);
            EXPECT_EQ(shown(document), kVin + " 3 Work rain") << "what it shows is what was recorded";
        }
        stored.column<TTripLogVinColumn>().set(0, kOtherVin);
        TripRecord fuller = trip(kNoon, 90);
        EXPECT_EQ(merge(trips({fuller}), document).logs[0].replaced, 1u);
        EXPECT_EQ(shown(document), kOtherVin + " 2 Work rain");
        EXPECT_EQ(stored.recorded(0), (RecordedOrigin{true, kVin, 2}));
        stored.column<TTripLogDriverIDColumn>().set(0, 7);
        fuller = trip(kNoon, 100);
        fuller.driverId = 4;
        EXPECT_EQ(merge(trips({fuller}), document).logs[0].replaced, 1u);
        EXPECT_EQ(shown(document), kOtherVin + " 7 Work rain");
        EXPECT_EQ(stored.recorded(0), (RecordedOrigin{true, kVin, 4}));
        ASSERT_TRUE(document.save());
        ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
        EXPECT_EQ(merge(trips({fuller}), document).logs[0].present, 1u) << "and not a trip of the other vehicle";
        EXPECT_EQ(document.trips().column<TTripLogSampleTableColumn>().object(0)->rowCount(), 101u);
        document.newDocument();
        std::filesystem::remove(path);
    }
}

/// What an edit of a person leaves of a record that is downloaded again: as it was, with more, or as another one.
TEST(Merge, StopsAreOfTheVehicleThatAPersonGaveTheirTrips) {
    const std::string vin = "WVWZZZ1KZAW000001";
    LogRecords records = trips({trip(kNoon)});
    records.trips[0].origin.vin = "XX";
    for (const RecordOrigin& origin : {RecordOrigin{"K-0042-B", "XX"}, {"K-0042-B", ""}, {"K-0043-B", "XX"}}) {
        records.stops.push_back(stop(kNoon + 30));
        records.stops.back().origin = origin;
    }
    TQuobrixDocument document;
    Result<Merge> plan = Merge::plan(records, document);
    plan->identify("XX", vin);
    ASSERT_TRUE(plan->apply(0));
    EXPECT_EQ(document.accidents()->column<TAccidentLogTableVinColumn>().values(),
              (std::vector<std::string>{vin, "", "XX"}));
    EXPECT_EQ(mergeRecords(records, document)->summary(), "Nothing new. Already present: 1 trip, 3 severe stops.");
}

TEST(Merge, WhatAPersonHasEditedIsKnownAgain) {
    const TUnitSystem units;
    const TimeZone zone;
    const TextContext context{units, zone};
    struct Edit {
        const char* name;
        LogId log;
        const PersistentType* column; ///< none: samples or bands
        Value value;
        const char* fuller; ///< what becomes of a fuller record
    };
    const Value time = std::int64_t{kNoon - 5000};
    const Edit edits[] = {
        {"start", LogId::Trips, &TTripLogStartTimeColumn::kType, time, "replaced"},
        {"end", LogId::Trips, &TTripLogEndTimeColumn::kType, std::int64_t{kNoon + 30}, "replaced"},
        {"VIN", LogId::Trips, &TTripLogVinColumn::kType, kOtherVin, "replaced"},
        {"driver", LogId::Trips, &TTripLogDriverIDColumn::kType, std::int64_t{9}, "replaced"},
        {"count", LogId::Trips, &TTripLogHardBrakesColumn::kType, std::int64_t{7}, "replaced"},
        {"distance", LogId::Trips, &TTripLogDistanceColumn::kType, 77.5, "replaced"},
        {"samples", LogId::Trips, nullptr, {}, "present"},
        {"bands", LogId::Trips, nullptr, {}, "present"},
        {"code", LogId::Troubles, &TTroubleLogTroubleCodeColumn::kType, "P0420", "replaced"},
        {"code time", LogId::Troubles, &TTroubleLogTimeRecordedColumn::kType, time, "replaced"},
        {"code VIN", LogId::Troubles, &TTroubleLogVinColumn::kType, kOtherVin, "replaced"},
        {"figure", LogId::Troubles, &TTroubleLogEngineCoolantTemperatureColumn::kType, 300.0, "replaced"},
        {"status", LogId::Troubles, &TTroubleLogFuelSystemOneStatusColumn::kType, std::int64_t{2}, "replaced"},
        {"event", LogId::Activity, &TSecurityLogEventTypeColumn::kType, std::int64_t{5}, "replaced"},
        {"event time", LogId::Activity, &TSecurityLogTimeRecordedColumn::kType, time, "replaced"},
        {"event VIN", LogId::Activity, &TSecurityLogVinColumn::kType, kOtherVin, "replaced"},
    };
    LogRecords fuller = oneOfEach(), other = oneOfEach();
    fuller.trips[0] = trip(kNoon, 90);
    fuller.trips[0].distance = 900;
    fuller.trips[0].hardBrakes = {5, 20, 70};
    fuller.troubles[0].engineSpeed = 900;
    fuller.activities[0].origin.vin = kVin;
    other.trips[0].speedSamples[3] = 51;
    other.troubles[0].coolantTemperature = 89;
    other.activities[0].eventType = 4;
    for (const Edit& edit : edits)
        for (const char* later : {"same", "fuller", "other"}) {
            SCOPED_TRACE(std::string(edit.name) + ", then the " + later);
            test::TemporaryFolder folder;
            TQuobrixDocument document;
            merge(oneOfEach(), document);
            const LogSpec& log = logSpec(edit.log);
            const auto cell = [&] { return document.log(log)->columnOf(*edit.column).value(0); };
            const auto samples = [&] { return document.trips().column<TTripLogSampleTableColumn>().object(0); };
            const EditOutcome done =
                edit.column ? correctRecord(document, log, 0,
                                            {{document.log(log)->indexOf(edit.column->name), 0, edit.value}}, context)
                : edit.name == std::string("samples")
                    ? correctSamples(document, 0, std::vector<std::uint8_t>(61, 3))
                    : correctSpeedBands(document, 0, {0, 1, 2, 3, 4}, {0, 2, 3, 4, 5});
            ASSERT_TRUE(done.ok()) << std::string(done.refusal);
            ASSERT_TRUE(document.saveAs(folder.path() / "Edited.car"));
            ASSERT_TRUE(document.open(folder.path() / "Edited.car", TDocument::Access::Edit));
            const LogRecords& records = later == std::string("same")     ? oneOfEach()
                                        : later == std::string("fuller") ? fuller
                                                                         : other;
            const MergeCounts counts = merge(records, document).logs[static_cast<std::size_t>(edit.log)];
            const std::string become = counts.added ? "new" : counts.replaced ? "replaced" : "present";
            EXPECT_EQ(become, later == std::string("same")    ? "present"
                              : later == std::string("other") ? "new"
                                                              : edit.fuller);
            if (edit.column) {
                EXPECT_TRUE(cell() == edit.value) << "what a person has entered stays";
            } else if (samples()->rowCount() == 61) {
                EXPECT_EQ(samples()->speed().at(3), edit.name == std::string("samples") ? 3 : 50);
            } else {
                ADD_FAILURE() << "the samples were replaced";
            }
            if (become == "replaced" && edit.log == LogId::Trips) {
                EXPECT_EQ(samples()->rowCount(), 91u);
            }
            EXPECT_EQ(merge(records, document).logs[static_cast<std::size_t>(edit.log)].added, 0u);
        }
}

TEST(Merge, WhatIsEditedBackIsAsItWasRecorded) {
    TQuobrixDocument document;
    merge(trips({trip(kNoon)}), document);
    const TTripLogTable& table = document.trips();
    const auto speeds = table.column<TTripLogSampleTableColumn>().object(0)->speed().values();
    const auto& bands = *table.column<TTripLogSpeedBandsTableColumn>().object(0);
    const auto from = bands.column<TTripLogSpeedBandFromColumn>().values();
    const auto to = bands.column<TTripLogSpeedBandToColumn>().values();
    const std::size_t objects = document.store().objectCount();
    const auto edit = [&] {
        ASSERT_TRUE(correctSamples(document, 0, std::vector<std::uint8_t>(speeds.size(), 3)).ok());
        ASSERT_TRUE(correctSpeedBands(document, 0, {0, 1, 2, 3, 4}, {0, 2, 3, 4, 5}).ok());
    };
    edit();
    EXPECT_GT(document.store().objectCount(), objects);
    EXPECT_EQ(merge(trips({trip(kNoon, 90)}), document).logs[0].replaced, 0u);
    ASSERT_TRUE(correctSamples(document, 0, speeds).ok());
    ASSERT_TRUE(correctSpeedBands(document, 0, from, to).ok());
    EXPECT_EQ(document.store().objectCount(), objects);
    document.edits().undo();
    document.edits().undo();
    EXPECT_EQ(merge(trips({trip(kNoon, 90)}), document).logs[0].replaced, 0u) << "edited, as before";
    document.edits().redo();
    document.edits().redo();
    EXPECT_EQ(merge(trips({trip(kNoon, 90)}), document).logs[0].replaced, 1u);
}

} // namespace
} // namespace quobrix::testing
