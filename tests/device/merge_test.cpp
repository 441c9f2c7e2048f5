#include "device/merge.h"

#include "support/document_streams.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace quobrix;

namespace {

constexpr std::int32_t kNoon = 1'700'000'000;

TripRecord trip(std::int32_t start, std::size_t seconds = 60) {
    TripRecord record;
    record.origin = {"K-0042-B", "1HGCM82633A004352"};
    record.driverId = 2;
    record.startTime = start;
    record.endTime = start + static_cast<std::int32_t>(seconds);
    record.distance = 1234.5;
    record.maximumSpeed = 108;
    record.bandLimits = {72, 96, 112};
    record.idleSeconds = 10;
    record.bandSeconds = {20, 15, 10, 5};
    record.speedSamplingInterval = 1;
    record.speedSamples.assign(seconds + 1, 50);
    record.hardBrakes = {5, 40};
    record.series[0] = {2, 5, false, {800, kNoValue, 1200}};
    return record;
}

TroubleRecord trouble(std::int32_t time, const char* code) {
    TroubleRecord record;
    record.origin = {"K-0042-B", "1HGCM82633A004352"};
    record.time = time;
    record.code = code;
    record.fuelSystemStatus = {QUOBRIX_NO_CODE, QUOBRIX_NO_CODE};
    return record;
}

LogRecords oneOfEach() {
    LogRecords records;
    records.trips = {trip(kNoon), trip(kNoon + 1000)};
    records.troubles = {trouble(kNoon + 5, "P0300")};
    records.activities = {{{"K-0042-B", ""}, kNoon, 0}, {{"K-0042-B", ""}, kNoon, 0}};
    StopRecord stop;
    stop.origin = {"K-0042-B", ""};
    stop.startTime = kNoon;
    stop.timestamp = kNoon + 20;
    stop.samplingInterval = 1;
    stop.speedSamples = {60, 30, 0};
    records.stops = {stop};
    return records;
}

} // namespace

TEST(Merge, FillsTheLogsAndTheNames) {
    TQuobrixDocument document;
    const MergeResult result = mergeRecords(oneOfEach(), document);
    EXPECT_EQ(result.summary(), "6 new, 0 already present, 0 refused.");
    EXPECT_TRUE(document.dataChanged());
    ASSERT_EQ(document.trips().rowCount(), 2u);
    EXPECT_DOUBLE_EQ(document.trips().column<TTripLogMaximumSpeedColumn>().at(0), 30.0);
    EXPECT_EQ(document.trips().column<TTripLogHardBrakesSummaryColumn>().value(0), Value(std::int64_t{2}));
    EXPECT_EQ(document.trips().column<TTripLogTimeInTopSpeedBandColumn>().at(0), 5);
    const TTripLogSampleTable* samples = document.trips().column<TTripLogSampleTableColumn>().object(0);
    ASSERT_NE(samples, nullptr);
    EXPECT_EQ(samples->rowCount(), 61u);
    const ParameterSeriesColumn& rpm = samples->series(0);
    EXPECT_DOUBLE_EQ(std::get<double>(rpm.value(0)), 800.0 / 60);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(rpm.value(5))) << "a sample without a value";
    EXPECT_TRUE(std::holds_alternative<std::monostate>(rpm.value(7))) << "between samples";
    EXPECT_DOUBLE_EQ(std::get<double>(rpm.value(10)), 20.0);
    ASSERT_NE(document.accidents(), nullptr);
    EXPECT_EQ(document.accidents()->column<TAccidentLogSpeedSamplesColumn>().object(0)->at(1), 30);
    EXPECT_EQ(document.vehicles().displayName("1HGCM82633A004352"), "Unknown #1");
    EXPECT_EQ(document.loggers().displayName("K-0042-B"), "Unknown");
    EXPECT_EQ(document.drivers().key(0), "2");
    EXPECT_TRUE(document.vehicles().column<TVehicleNamesVinInUseColumn>().inUse(0));
}

TEST(Merge, TripOwnsAsManyObjectsAsStated) {
    TQuobrixDocument document;
    LogRecords one, two;
    one.trips = {trip(kNoon)};
    two.trips = {trip(kNoon + 5000)};
    mergeRecords(one, document);
    const std::size_t before = document.store().objectCount();
    mergeRecords(two, document);
    EXPECT_EQ(document.store().objectCount() - before, TTripLogTable::kObjectsPerTrip);

    document.trips().removeRows(0, 1);
    EXPECT_EQ(document.store().objectCount(), before) << "a trip takes what it owns along";
}

TEST(Merge, AddsNothingTheSecondTime) {
    TQuobrixDocument document;
    mergeRecords(oneOfEach(), document);
    document.trips().column<TTripLogCommentsColumn>().set(0, "school run");
    const std::size_t objects = document.store().objectCount();
    const MergeResult again = mergeRecords(oneOfEach(), document);
    EXPECT_EQ(again.summary(), "0 new, 6 already present, 0 refused.");
    EXPECT_EQ(again.replaced, 0u);
    EXPECT_EQ(document.store().objectCount(), objects);
}

TEST(Merge, TellsRecordsOfOtherLoggersAndCodesApart) {
    TQuobrixDocument document;
    LogRecords records;
    records.trips = {trip(kNoon), trip(kNoon)};
    records.trips[1].origin.serialNumber = "A-0001-A";
    records.troubles = {trouble(kNoon, "P0300"), trouble(kNoon, "P0301"), trouble(kNoon, "P0300")};
    EXPECT_EQ(mergeRecords(records, document).added, 5u);
    EXPECT_EQ(mergeRecords(records, document).added, 0u);
    records.troubles.push_back(trouble(kNoon, "P0300")); // a third equal one is another record
    EXPECT_EQ(mergeRecords(records, document).added, 1u);
}

TEST(Merge, FullerRecordReplacesTheOldOneAndKeepsItsComments) {
    TQuobrixDocument document;
    LogRecords records;
    records.trips = {trip(kNoon, 30)};
    mergeRecords(records, document);
    document.trips().column<TTripLogCommentsColumn>().set(0, "unfinished");
    const std::size_t objects = document.store().objectCount();
    records.trips = {trip(kNoon, 90)};
    const MergeResult result = mergeRecords(records, document);
    EXPECT_EQ(result.replaced, 1u);
    EXPECT_EQ(document.trips().rowCount(), 1u);
    EXPECT_EQ(document.trips().column<TTripLogEndTimeColumn>().at(0), kNoon + 90);
    EXPECT_EQ(document.trips().column<TTripLogSampleTableColumn>().object(0)->rowCount(), 91u);
    EXPECT_EQ(document.trips().column<TTripLogCommentsColumn>().at(0), "unfinished");
    EXPECT_EQ(document.store().objectCount(), objects);

    records.trips = {trip(kNoon, 30)}; // less than is there already
    EXPECT_EQ(mergeRecords(records, document).replaced, 0u);
}

TEST(Merge, ShiftMovesWhatIsShownAndNotWhatIsRecognised) {
    TQuobrixDocument document;
    LogRecords records;
    records.trips = {trip(kNoon)};
    mergeRecords(records, document, 3600);
    EXPECT_EQ(document.trips().column<TTripLogStartTimeColumn>().at(0), kNoon + 3600);
    EXPECT_EQ(mergeRecords(records, document, 0).present, 1u);
    records.trips = {trip(kNoon, 120)};
    EXPECT_EQ(mergeRecords(records, document, 0).replaced, 1u);
    EXPECT_EQ(document.trips().column<TTripLogStartTimeColumn>().at(0), kNoon + 3600);
}

TEST(Merge, RowsStandInOrderOfTimeHoweverTheyArrive) {
    std::vector<std::int32_t> starts;
    for (std::int32_t i = 0; i < 200; ++i)
        starts.push_back(kNoon + i * 100);
    std::shuffle(starts.begin(), starts.end(), std::mt19937(7));
    TQuobrixDocument document;
    for (std::size_t at = 0; at < starts.size(); at += 40) {
        LogRecords records;
        for (std::size_t i = at; i < at + 40; ++i)
            records.trips.push_back(trip(starts[i], static_cast<std::size_t>((starts[i] - kNoon) / 100 + 1)));
        mergeRecords(records, document);
    }
    const auto& shown = document.trips().column<TTripLogStartTimeColumn>().values();
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
    for (RowIndex row = 0; row < document.trips().rowCount(); ++row) // and each kept what it owns
        ASSERT_EQ(document.trips().column<TTripLogSampleTableColumn>().object(row)->rowCount(), row + 2);
}

TEST(Merge, OfADamagedDocumentIsDoneWholeOrRefused) {
    const struct {
        const char* what;
        ObjectId (*id)(TQuobrixDocument&);
        bool fits;
    } damages[] = {
        {"VIN", [](TQuobrixDocument& d) { return d.trips().column<TTripLogVinColumn>().id(); }, true},
        {"time of download",
         [](TQuobrixDocument& d) {
             return d.store().singleton<TDownloadTable>().column<TDownloadTableMostRecentDownloadColumn>().id();
         },
         true},
        {"record number", [](TQuobrixDocument& d) { return d.trips().column<TTripLogRecordColumn>().id(); }, false},
        {"event", [](TQuobrixDocument& d) { return d.activity().column<TSecurityLogEventTypeColumn>().id(); }, false},
        {"accident log", [](TQuobrixDocument& d) { return d.accidents()->id(); }, false},
    };
    for (const auto& damage : damages) {
        SCOPED_TRACE(damage.what);
        const test::TemporaryFolder folder;
        const std::filesystem::path path = folder / "Test.car";
        std::string stream;
        {
            TQuobrixDocument made;
            mergeRecords(oneOfEach(), made);
            made.store().singleton<TDownloadTable>().record("K-0042-B", kNoon);
            stream = std::to_string(damage.id(made));
            ASSERT_TRUE(made.saveAs(path));
        }
        test::tamper(path, [&](CompoundFile& file) { file.write(stream, {1, 2, 3}); });
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
        ASSERT_EQ(bool(canMerge(document)), damage.fits);
        if (!damage.fits)
            continue;
        LogRecords longer = oneOfEach();
        longer.trips = {trip(kNoon, 90)};
        EXPECT_EQ(mergeRecords(longer, document).replaced, 1u);
        document.store().singleton<TDownloadTable>().record("K-0042-B", kNoon + 60);
        EXPECT_EQ(document.trips().column<TTripLogVinColumn>().at(0), longer.trips[0].origin.vin);
        EXPECT_EQ(document.store().singleton<TDownloadTable>().rowCount(), 1u);
    }
}
