#include "model/parameter_thresholds.h"
#include "model/record_edits.h"
#include "settings/settings.h"
#include "summary/summary_log.h"
#include "summary/trip_summaries.h"
#include "support/fault_folder.h"
#include "support/sample_trip.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace quobrix {
namespace {

using namespace test;

const std::filesystem::path kDatabase = "/Summaries/Quobrix.cdb";

/// A trip as a logger records it at START by its clock.
RowIndex record(TQuobrixDocument& document, std::int32_t start) {
    const RowIndex row = addTrip(document, start);
    document.trips().column<TTripLogRecordColumn>().set(row, {start, 0});
    return row;
}

TTripLogSampleTable& samplesOf(TQuobrixDocument& document, RowIndex row) {
    return *document.trips().column<TTripLogSampleTableColumn>().object(row);
}

void setSpeeds(TQuobrixDocument& document, RowIndex row, const std::vector<std::uint8_t>& speeds) {
    TTripLogSampleTable& samples = samplesOf(document, row);
    samples.removeRows(0, samples.rowCount());
    samples.insertRows(0, speeds.size());
    samples.speed().setAll(speeds);
}

TEST(TripSummaries, EveryFigureIsThatOfTheTrip) {
    TQuobrixDocument document;
    Settings settings(std::make_unique<MemorySettings>());
    setParameterThreshold(settings, 2, 40);
    const RowIndex row = record(document, kStart);
    document.trips().column<TTripLogStartTimeColumn>().set(row, kStart + 60); // clocks were shifted
    document.trips().column<TTripLogEndTimeColumn>().set(row, kStart + 660);
    document.trips().column<TTripLogDriverIDColumn>().set(row, 7);
    document.vehicles().nameAll(std::vector<std::string>{kVin}, "Wagon");
    document.drivers().addMissing(std::vector<std::string>{"7"});
    document.drivers().nameAll(std::vector<std::string>{"7"}, "Anna");
    TTroubleLogTable& troubles = document.troubles();
    troubles.insertRows(0, 4);
    for (RowIndex i = 0; i < 4; ++i) { // one before the trip, one of another logger
        troubles.column<TTroubleLogTimeRecordedColumn>().set(i, kStart + 300 * static_cast<std::int32_t>(i));
        troubles.column<TTroubleLogQuobrixSerialNumberColumn>().set(i, i == 2 ? "K-0001-A" : "K-0042-B");
    }
    troubles.column<TTroubleLogTimeRecordedColumn>().set(3, kStart + 660);

    const std::optional<SummaryRecord> r = TripSummaries(document, settings).record(row);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->loggerName.view(), "---");
    EXPECT_EQ(r->vin.view(), kVin);
    EXPECT_EQ(r->vehicleName.view(), "Wagon");
    EXPECT_EQ(r->logger.view(), "K-0042-B");
    EXPECT_EQ(r->driverName.view(), "Anna");
    EXPECT_EQ(r->driver.view(), "7");
    EXPECT_EQ(r->start, kStart + 60);
    EXPECT_EQ(r->end, kStart + 660);
    EXPECT_EQ(r->recordedStart, kStart);
    EXPECT_EQ(r->fuel, 0);
    EXPECT_EQ(r->topBandTime, 60);
    EXPECT_EQ(r->idleTime, 60);
    EXPECT_EQ(r->bandTimes, (std::array{240.0f, 150.0f, 90.0f}));
    EXPECT_EQ(r->largestDeceleration, 0);
    EXPECT_NEAR(r->largestAcceleration, 1 / 3.6, 1e-6);
    EXPECT_EQ(r->distance, 12000);
    EXPECT_EQ(r->averageSpeed, 20);
    EXPECT_NEAR(r->topSpeed, 75 * kMph, 1e-5);
    const std::uint32_t events[][2] = {{2, 500}, {1, 61}, {1, 5}, {0, 0}};
    for (std::size_t kind = 0; kind < 4; ++kind) {
        EXPECT_EQ(r->events[kind].count, events[kind][0]);
        EXPECT_EQ(r->events[kind].last, events[kind][1]);
    }
    const SummaryRecord::Slot &engine = r->parameters[0], &speed = r->parameters[4];
    EXPECT_EQ(engine.used + speed.used, 2);
    EXPECT_EQ(engine.parameter, 2);
    EXPECT_EQ(engine.threshold, 40);
    EXPECT_NEAR(engine.highest, 50, 1e-9); // 3000 rpm
    EXPECT_NEAR(engine.lowest, 800 / 60.0, 1e-9);
    EXPECT_EQ(engine.timeOver, 2u);
    EXPECT_EQ(engine.timeUnder, 4u); // a sample is missing
    EXPECT_EQ(speed.parameter, 1);
    EXPECT_FALSE(hasValue(speed.highest));
    EXPECT_EQ(speed.lowest, 0);
    EXPECT_EQ(speed.timeUnder, 61u);
    EXPECT_EQ(r->parameters[1].used, 0); // codes are no figures
    EXPECT_EQ(r->mark, 0x5142);
    EXPECT_EQ(r->samplesSum, 0xAD2D8EE1u); // of the bytes 0 to 10
    EXPECT_EQ(r->trips, 1u);
    EXPECT_EQ(r->troubles, 2u);
    EXPECT_EQ(r->accidents, 0u);
    EXPECT_EQ(r->samples, 61u);

    setParameterThreshold(settings, 2, 0); // set by somebody, unlike the 0 that others are delivered with
    samplesOf(document, row).series(2).setSeries({6, 1, false, {10, 20}});
    setSpeeds(document, row, {9, 9, 50, 20, 9, 9, 9, 9, 9});
    const std::optional<SummaryRecord> other = TripSummaries(document, settings).record(row);
    EXPECT_EQ(other->parameters[0].timeOver, 6u);
    EXPECT_EQ(other->parameters[2].used, 0);
    EXPECT_EQ(other->samplesSum, 0u); // too few to tell it from others
    EXPECT_NEAR(other->largestDeceleration, 30 / 3.6, 1e-5);
}

TEST(TripSummaries, PetrolIsEstimatedFromTheAirThatWasMeasured) {
    TQuobrixDocument document;
    const Settings settings(std::make_unique<MemorySettings>());
    const RowIndex row = record(document, kStart); // of 600 s
    const auto fuelWith = [&](std::size_t samples, std::size_t gaps) {
        std::vector<double> air(samples, 12.0);
        std::fill_n(air.begin(), gaps, kNoValue);
        samplesOf(document, row).series(2).setSeries({kAirFlowParameter, 5, false, air});
        return TripSummaries(document, settings).record(row)->fuel;
    };
    EXPECT_EQ(fuelWith(120, 0), 0) << "what it burns is not known";
    auto& fuels = document.vehicles().column<TVehicleNamesFuelColumn>();
    fuels.set(0, static_cast<std::int32_t>(Fuel::Diesel)); // which runs on far more air than it needs
    EXPECT_EQ(fuelWith(120, 0), 0);
    fuels.set(0, static_cast<std::int32_t>(Fuel::Petrol));
    EXPECT_NEAR(fuelWith(120, 0), 7200 / 14.7 / 2798.7, 1e-7); // 12 g/s in 600 s
    EXPECT_NEAR(fuelWith(120, 12), 6480 / 14.7 / 2798.7, 1e-7);
    EXPECT_EQ(fuelWith(120, 13), 0) << "less than nine tenths";
    EXPECT_EQ(fuelWith(107, 0), 0);
    document.trips().column<TTripLogEndTimeColumn>().set(row, kStart);
    EXPECT_EQ(fuelWith(120, 0), 0) << "no time has passed";
}

class Counting : public testing::Test {
protected:
    /// "added, rewritten"
    std::pair<std::size_t, std::size_t> count(TQuobrixDocument& of) {
        SummaryLog log(folder);
        EXPECT_TRUE(log.open(kDatabase, SummaryDatabase::Access::Write));
        const Result<CountedTrips> counted = log.count(TripSummaries(of, settings).records());
        EXPECT_TRUE(counted);
        return {counted->added, counted->rewritten};
    }
    std::vector<SummaryRecord> counted() {
        SummaryDatabase database(folder);
        EXPECT_TRUE(database.open(kDatabase, SummaryDatabase::Access::Read));
        return *database.readAll();
    }
    using Counts = std::pair<std::size_t, std::size_t>;

    FaultFolder folder{1};
    Settings settings{std::make_unique<MemorySettings>()};
    TQuobrixDocument document;
};

TEST_F(Counting, ATripCountsOnceWhateverIsEdited) {
    for (int i = 0; i < 3; ++i)
        record(document, kStart + 3600 * i);
    EXPECT_EQ(count(document), Counts(3, 0));
    EXPECT_EQ(count(document), Counts(0, 0));
    ASSERT_TRUE(giveDriver(document, {1}, 7).ok());
    EXPECT_EQ(count(document), Counts(0, 1));
    document.vehicles().nameAll(std::vector<std::string>{kVin}, "Wagon");
    EXPECT_EQ(count(document), Counts(0, 3));
    document.trips().column<TTripLogStartTimeColumn>().set(0, kStart - 7200);
    std::vector<std::uint8_t> speeds(61, 33);
    ASSERT_TRUE(correctSamples(document, 2, speeds).ok());
    EXPECT_EQ(count(document), Counts(0, 2));
    EXPECT_EQ(counted()[0].start, kStart - 7200);
    document.edits().undo();
    EXPECT_EQ(count(document), Counts(0, 1));
    setParameterThreshold(settings, 1, 10);
    EXPECT_EQ(count(document), Counts(0, 3));
    document.trips().removeRows(0, 2);
    EXPECT_EQ(count(document), Counts(0, 0));
    EXPECT_EQ(counted().size(), 3u);
}

TEST_F(Counting, AFullerTripTakesThePlaceOfALesserOne) {
    record(document, kStart);
    setSpeeds(document, 0, {0, 5, 6}); // it had only just begun
    EXPECT_EQ(count(document), Counts(1, 0));
    TQuobrixDocument later;
    record(later, kStart);
    setSpeeds(later, 0, {0, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_EQ(count(later), Counts(0, 1));
    EXPECT_EQ(count(document), Counts(0, 0));
    EXPECT_EQ(counted()[0].samples, 12u);
    // Two of one time, as of a clock that was never set: each is counted, and one that differs is another.
    record(document, kStart + 9000);
    record(document, kStart + 9000);
    setSpeeds(document, 1, {0, 7});
    setSpeeds(document, 2, {0, 8});
    record(later, kStart + 9000);
    EXPECT_EQ(count(document), Counts(2, 0));
    EXPECT_EQ(count(document), Counts(0, 0));
    setSpeeds(document, 1, {0, 8}); // one becomes as the other was: neither takes that one's record
    setSpeeds(document, 2, {0, 8, 9});
    document.trips().removeRows(0, 1);
    EXPECT_EQ(count(document), Counts(0, 1));
    document.trips().removeRows(0, 1);
    EXPECT_EQ(count(document), Counts(0, 0));
    setSpeeds(later, 1, std::vector<std::uint8_t>(30, 9));
    record(later, kStart + 9000);
    setSpeeds(later, 2, std::vector<std::uint8_t>(30, 11));
    EXPECT_EQ(count(later), Counts(0, 2));
    record(later, kStart + 9000);
    setSpeeds(later, 3, std::vector<std::uint8_t>(30, 12));
    EXPECT_EQ(count(later), Counts(1, 0));
}

TEST_F(Counting, WhatWasDeletedOrCountedElsewhereStaysSo) {
    for (int i = 0; i < 4; ++i)
        record(document, kStart + 3600 * i);
    SummaryRecord foreign; // of another program, over the first two trips
    foreign.vehicleName = SummaryText(kVin);
    foreign.start = kStart;
    foreign.end = kStart + 3600 + 600;
    SummaryRecord other = foreign;
    other.vehicleName = SummaryText("Pickup");
    other.end = kStart + 36000;
    SummaryDatabase database(folder);
    ASSERT_TRUE(database.open(kDatabase, SummaryDatabase::Access::Write));
    ASSERT_TRUE(database.append(std::vector{foreign, other}));
    database.close();
    EXPECT_EQ(count(document), Counts(2, 0));
    auto log = std::make_unique<SummaryLog>(folder);
    ASSERT_TRUE(log->open(kDatabase, SummaryDatabase::Access::Write));
    ASSERT_TRUE(log->remove(std::vector<std::size_t>{2}));
    log.reset();
    EXPECT_EQ(count(document), Counts(0, 0));
    document.trips().column<TTripLogStartTimeColumn>().set(2, kStart + 50); // and by any other time
    EXPECT_EQ(count(document), Counts(0, 0));
    log = std::make_unique<SummaryLog>(folder);
    ASSERT_TRUE(log->open(kDatabase, SummaryDatabase::Access::Write));
    ASSERT_TRUE(log->forgetDeleted(std::vector{keyOf(*TripSummaries(document, settings).record(2))}));
    log.reset();
    EXPECT_EQ(count(document), Counts(1, 0));
}

TEST_F(Counting, AnyDocumentsInAnyOrderCountEveryTripOnce) {
    std::mt19937 random(7);
    std::set<int> seen;
    for (int round = 0; round < 30; ++round) {
        TQuobrixDocument some;
        for (int trip = 0; trip < 12; ++trip)
            if (random() % 3 == 0) {
                const RowIndex row = record(some, kStart + 1800 * trip);
                some.trips().column<TTripLogDistanceColumn>().set(row, 1000 * (trip + 1));
                if (random() % 4 == 0)
                    some.trips().column<TTripLogCommentsColumn>().set(row, "seen");
                if (random() % 4 == 0) {
                    ASSERT_TRUE(giveDriver(some, {row}, static_cast<std::int32_t>(random() % 3)).ok());
                }
                seen.insert(trip);
            }
        count(some);
        double distance = 0, expected = 0;
        for (const SummaryRecord& each : counted())
            distance += each.distance;
        for (const int trip : seen)
            expected += 1000 * (trip + 1);
        ASSERT_EQ(counted().size(), seen.size());
        ASSERT_EQ(distance, expected);
        ASSERT_EQ(count(some), Counts(0, 0));
        for (int edit = 0; edit < 6; ++edit) { // whatever is done and undone, each trip's record is as the trip is
            const RowIndex rows = some.trips().rowCount();
            if (random() % 3 == 0 && some.edits().canUndo())
                some.edits().undo();
            else if (random() % 3 == 0 && some.edits().canRedo())
                some.edits().redo();
            else if (random() % 2 == 0 && rows > 0)
                some.edits().removeRows(some.trips().id(), {random() % rows});
            else if (rows > 0)
                (void)giveDriver(some, {random() % rows}, static_cast<std::int32_t>(random() % 3));
            count(some);
            const std::vector<SummaryRecord> all = counted();
            ASSERT_EQ(all.size(), seen.size());
            for (RowIndex row = 0; row < some.trips().rowCount(); ++row) {
                const SummaryRecord trip = *TripSummaries(some, settings).record(row);
                const auto found = std::ranges::find(all, trip.start, &SummaryRecord::start);
                ASSERT_NE(found, all.end());
                ASSERT_EQ(found->driver, trip.driver);
                ASSERT_EQ(found->distance, trip.distance);
            }
        }
    }
}

} // namespace
} // namespace quobrix
