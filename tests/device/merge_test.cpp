#include "merge_records.h"

#include "support/document_streams.h"
#include "support/record_set_builder.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <variant>

namespace quobrix::testing {
namespace {

// The records as the library hands them over, with another value in every field; what must become of each.
TEST(Merge, EveryFigureArrivesInItsOwnCell) {
    QuobrixTripRecord rawTrip = recordOf<QuobrixTripRecord>(QUOBRIX_RECORD_TRIP);
    std::snprintf(rawTrip.serialNumber, sizeof rawTrip.serialNumber, "A-0001-T");
    std::snprintf(rawTrip.vin, sizeof rawTrip.vin, "TRIP VIN");
    rawTrip.driverId = 3;
    rawTrip.startTime = kNoon + 1;
    rawTrip.endTime = kNoon + 601;
    rawTrip.disconnected = 1;
    rawTrip.distance = 1234.5;
    rawTrip.maximumSpeed = 101;
    rawTrip.hardBrakeThreshold = 3.1;
    rawTrip.extremeBrakeThreshold = 5.2;
    rawTrip.hardAccelerationThreshold = 2.3;
    rawTrip.extremeAccelerationThreshold = 4.4;
    std::ranges::copy(std::array{31.0, 61.0, 91.0}, rawTrip.bandLimit);
    rawTrip.idleSeconds = 11;
    std::ranges::copy(std::array{21u, 32u, 43u, 54u}, rawTrip.bandSeconds);
    rawTrip.speedSamplingInterval = 5;
    Bytes tail;
    const auto place = [&]<class T>(std::vector<T> values) {
        tail.resize((tail.size() + 7) / 8 * 8);
        const auto offset = static_cast<std::uint32_t>(sizeof rawTrip + tail.size());
        const auto* raw = reinterpret_cast<const std::uint8_t*>(values.data());
        tail.insert(tail.end(), raw, raw + values.size() * sizeof(T));
        return QuobrixArray{offset, static_cast<std::uint32_t>(values.size())};
    };
    rawTrip.speedSamples = place(std::vector<std::uint8_t>{13, 17, 19});
    rawTrip.hardBrakes = place(std::vector<std::uint32_t>{70});
    rawTrip.extremeBrakes = place(std::vector<std::uint32_t>{81, 82});
    rawTrip.hardAccelerations = place(std::vector<std::uint32_t>{93, 94, 95});
    rawTrip.extremeAccelerations = place(std::vector<std::uint32_t>{106, 107, 108, 109});
    rawTrip.series[0] = {2, 10, 0, 0, place(std::vector{801.0, QUOBRIX_NO_VALUE})};
    rawTrip.series[1] = {4, 20, 0, 0, place(std::vector{82.0})};
    rawTrip.series[2] = {11, 30, 1, 0, place(std::vector{515.0})};
    rawTrip.series[3] = {24, 60, 0, 0, place(std::vector{0.02266 * 601})};

    QuobrixTroubleRecord rawTrouble = recordOf<QuobrixTroubleRecord>(QUOBRIX_RECORD_TROUBLE);
    std::snprintf(rawTrouble.serialNumber, sizeof rawTrouble.serialNumber, "A-0002-C");
    std::snprintf(rawTrouble.vin, sizeof rawTrouble.vin, "TROUBLE VIN");
    rawTrouble.time = kNoon + 2;
    std::snprintf(rawTrouble.code, sizeof rawTrouble.code, "P0301");
    rawTrouble.fuelSystemStatus[0] = 1;
    rawTrouble.fuelSystemStatus[1] = 4;
    rawTrouble.calculatedLoad = 21;
    rawTrouble.coolantTemperature = 22;
    std::ranges::copy(std::array{1.23, 2.24}, rawTrouble.shortTermFuelTrim);
    std::ranges::copy(std::array{3.25, 4.26}, rawTrouble.longTermFuelTrim);
    rawTrouble.fuelPressure = 327;
    rawTrouble.intakeManifoldPressure = 28;
    rawTrouble.engineSpeed = 1290;
    rawTrouble.vehicleSpeed = 36;

    QuobrixActivityRecord rawActivity = recordOf<QuobrixActivityRecord>(QUOBRIX_RECORD_ACTIVITY);
    std::snprintf(rawActivity.serialNumber, sizeof rawActivity.serialNumber, "A-0003-A");
    std::snprintf(rawActivity.vin, sizeof rawActivity.vin, "ACTIVITY VIN");
    rawActivity.time = kNoon + 3;
    rawActivity.eventType = -6;

    QuobrixStopRecord rawStop = recordOf<QuobrixStopRecord>(QUOBRIX_RECORD_STOP);
    std::snprintf(rawStop.serialNumber, sizeof rawStop.serialNumber, "A-0004-S");
    std::snprintf(rawStop.vin, sizeof rawStop.vin, "STOP VIN");
    rawStop.startTime = kNoon + 4;
    rawStop.timestamp = kNoon + 24;
    rawStop.maximumSpeed = 72;
    std::ranges::copy(std::array{32.0, 62.0, 92.0}, rawStop.bandLimit);
    rawStop.samplingInterval = 10;

    LogRecords records;
    parseMainRecords(RecordSetBytes().add(rawTrip, tail).take(),
                     RecordSetBytes().add(rawTrouble).add(rawActivity).take(), records);
    parseAccidentRecords(RecordSetBytes().add(rawStop).take(),
                         RecordSetBytes().add(samplesOf(0, 3), {72, 36, 0}).take(), records);
    TQuobrixDocument document;
    const MergeResult result = merge(records, document);
    EXPECT_EQ(result.summary(), "New: 1 trip, 1 trouble code, 1 event, 1 severe stop.");
    EXPECT_TRUE(document.dataChanged());
    ASSERT_EQ(document.trips().rowCount(), 1u);
    ASSERT_TRUE(document.accidents());

    struct Cell {
        const Table& table;
        std::string_view key;
        std::variant<double, std::string> value; // times and codes as numbers
        RowIndex row = 0;
    };
    const Table& t = document.trips();
    const Table& c = document.troubles();
    const Table& a = document.activity();
    const Table& s = *document.accidents();
    const auto& samples = *document.trips().column<TTripLogSampleTableColumn>().object(0);
    const auto& parameters = *document.trips().column<TTripLogParametersTableColumn>().object(0);
    const auto& bands = *document.trips().column<TTripLogSpeedBandsTableColumn>().object(0);
    const auto& stopBands = *document.accidents()->column<TAccidentLogSpeedBandsTableColumn>().object(0);
    const double kmh = 1 / 3.6; // m/s
    const Cell cells[] = {
        {t, "TTripLogVinColumn", "TRIP VIN"},
        {t, "TTripLogDriverIDColumn", 3.0},
        {t, "TTripLogQuobrixSerialNumberColumn", "A-0001-T"},
        {t, "TTripLogStartTimeColumn", kNoon + 1.0},
        {t, "TTripLogEndTimeColumn", kNoon + 601.0},
        {t, "TTripLogDisconnectedDuringTripColumn", 1.0},
        {t, "TTripLogDistanceColumn", 1234.5},
        {t, "TTripLogMaximumSpeedColumn", 101 * kmh},
        {t, "TTripLogHardBrakesColumn", 1.0},
        {t, "TTripLogPanicBrakesColumn", 2.0},
        {t, "TTripLogHardAccelerationsColumn", 3.0},
        {t, "TTripLogPanicAccelerationsColumn", 4.0},
        {t, "TTripLogHardBrakeThresholdColumn", 3.1},
        {t, "TTripLogPanicBrakeThresholdColumn", 5.2},
        {t, "TTripLogHardAccelerationThresholdColumn", 2.3},
        {t, "TTripLogPanicAccelerationThresholdColumn", 4.4},
        {t, "TTripLogSamplingIntervalColumn", 5.0},
        {t, "TTripLogTimeInTopSpeedBandColumn", 54.0},
        {c, "TTroubleLogVinColumn", "TROUBLE VIN"},
        {c, "TTroubleLogQuobrixSerialNumberColumn", "A-0002-C"},
        {c, "TTroubleLogTimeRecordedColumn", kNoon + 2.0},
        {c, "TTroubleLogTroubleCodeColumn", "P0301"},
        {c, "TTroubleLogFuelSystemOneStatusColumn", 1.0},
        {c, "TTroubleLogFuelSystemTwoStatusColumn", 4.0},
        {c, "TTroubleLogCalculatedLoadValueColumn", 21.0},
        {c, "TTroubleLogEngineCoolantTemperatureColumn", 22 + 273.15},
        {c, "TTroubleLogShortTermFuelTrimBankOneColumn", 1.23},
        {c, "TTroubleLogShortTermFuelTrimBankTwoColumn", 2.24},
        {c, "TTroubleLogLongTermFuelTrimBankOneColumn", 3.25},
        {c, "TTroubleLogLongTermFuelTrimBankTwoColumn", 4.26},
        {c, "TTroubleLogFuelPressureColumn", 327'000.0},
        {c, "TTroubleLogIntakeManifoldPressureColumn", 28'000.0},
        {c, "TTroubleLogEngineSpeedColumn", 1290 / 60.0},
        {c, "TTroubleLogVehicleSpeedColumn", 36 * kmh},
        {a, "TSecurityLogVinColumn", "ACTIVITY VIN"},
        {a, "TSecurityLogQuobrixIdColumn", "A-0003-A"},
        {a, "TSecurityLogTimeRecordedColumn", kNoon + 3.0},
        {a, "TSecurityLogEventTypeColumn", -6.0},
        {s, "TAccidentLogTableVinColumn", "STOP VIN"},
        {s, "TAccidentLogTableQuobrixSerialNumberColumnName", "A-0004-S"},
        {s, "TAccidentLogTableStartTimeColumn", kNoon + 4.0},
        {s, "TAccidentLogTableTimestampColumn", kNoon + 24.0},
        {s, "TAccidentLogTableMaximumSpeedColumn", 72 * kmh},
        // what the trip and the stop own
        {samples, "TTripLogSampleSpeedColumn", 17 * kmh, 1},
        {samples, "TTripLogParameter1Column", 801 / 60.0},
        {samples, "TTripLogParameter2Column", 82 + 273.15},
        {samples, "TTripLogParameter3Column", 515.0},
        {samples, "TTripLogParameter4Column", 0.02266 * 601},
        {parameters, "TTripLogParameterColumn", 2.0, 0},
        {parameters, "TTripLogParameterColumn", 4.0, 1},
        {parameters, "TTripLogParameterColumn", 11.0, 2},
        {parameters, "TTripLogParameterColumn", 24.0, 3},
        {parameters, "TTripLogParameterSamplingIntervalColumn", 10.0, 0},
        {parameters, "TTripLogParameterSamplingIntervalColumn", 20.0, 1},
        {parameters, "TTripLogParameterSamplingIntervalColumn", 30.0, 2},
        {parameters, "TTripLogParameterSamplingIntervalColumn", 60.0, 3},
        {bands, "TTripLogSpeedBandFromColumn", 0.0, 1},
        {bands, "TTripLogSpeedBandFromColumn", 31 * kmh, 2},
        {bands, "TTripLogSpeedBandFromColumn", 61 * kmh, 3},
        {bands, "TTripLogSpeedBandFromColumn", 91 * kmh, 4},
        {bands, "TTripLogSpeedBandToColumn", 0.0, 0},
        {bands, "TTripLogSpeedBandToColumn", 31 * kmh, 1},
        {bands, "TTripLogSpeedBandToColumn", 61 * kmh, 2},
        {bands, "TTripLogSpeedBandToColumn", 91 * kmh, 3},
        {stopBands, "TAccidentLogSpeedBandFromColumn", 32 * kmh, 2},
        {stopBands, "TAccidentLogSpeedBandToColumn", 92 * kmh, 3},
    };
    std::set<std::pair<const Table*, std::string_view>> compared;
    for (const Cell& cell : cells) {
        SCOPED_TRACE(cell.key);
        compared.emplace(&cell.table, cell.key);
        ASSERT_LT(cell.table.indexOf(cell.key), cell.table.columnCount());
        const Column& column = cell.table.column(cell.table.indexOf(cell.key));
        const Value value = column.value(cell.row);
        if (const auto* text = std::get_if<std::string>(&cell.value)) {
            EXPECT_EQ(value, Value(*text));
            continue;
        }
        const double number = std::visit(
            [](const auto& v) -> double {
                if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(v)>>)
                    return static_cast<double>(v);
                else
                    return NAN;
            },
            value);
        EXPECT_NEAR(number, std::get<double>(cell.value), 1e-9);
    }
    for (const Table* table : {&t, &c, &a, &s}) // every column that holds what was recorded is among them
        for (std::size_t i = 0; i < table->columnCount(); ++i) {
            const Column& column = table->column(i);
            EXPECT_TRUE(!column.stored() || column.kind() == ColumnKind::Table || column.editable() ||
                        compared.contains({table, column.spec().key}) || column.type().name.ends_with("RecordColumn"))
                << column.spec().key;
        }

    using Times = std::vector<std::int32_t>;
    const TTripLogTable& tripTable = document.trips();
    EXPECT_EQ(tripTable.column<TTripLogTimePerSpeedBandColumnColumn>().object(0)->values(),
              (Times{11, 21, 32, 43, 54}));
    EXPECT_EQ(tripTable.column<TTripLogHardBrakeTimesColumnColumn>().object(0)->values(), Times{70});
    EXPECT_EQ(tripTable.column<TTripLogPanicBrakeTimesColumnColumn>().object(0)->values(), (Times{81, 82}));
    EXPECT_EQ(tripTable.column<TTripLogHardAccelerationTimesColumnColumn>().object(0)->values(), (Times{93, 94, 95}));
    EXPECT_EQ(tripTable.column<TTripLogPanicAccelerationTimesColumnColumn>().object(0)->values(),
              (Times{106, 107, 108, 109}));
    EXPECT_EQ(samples.speed().values(), (std::vector<std::uint8_t>{13, 17, 19}));
    EXPECT_EQ(samples.speed().interval(), 5u);
    EXPECT_EQ(samples.series(0).sampleCount(), 2u);
    EXPECT_FALSE(hasValue(samples.series(0).metric(1)));
    EXPECT_EQ(samples.series(3).interval(), 60);
    EXPECT_TRUE(samples.series(2).twoValues());
    EXPECT_FALSE(hasValue(bands.column<TTripLogSpeedBandToColumn>().at(4)));
    const auto& stopSamples = *document.accidents()->column<TAccidentLogSpeedSamplesColumn>().object(0);
    EXPECT_EQ(stopSamples.values(), (std::vector<std::uint8_t>{72, 36, 0}));
    EXPECT_EQ(stopSamples.interval(), 10u);

    EXPECT_EQ(result.newKeys.loggers, (std::vector<std::string>{"A-0001-T", "A-0002-C", "A-0003-A", "A-0004-S"}));
    std::string buffer;
    EXPECT_EQ(document.vehicles().displayName("TROUBLE VIN", buffer), "Unknown #2");
    EXPECT_EQ(document.loggers().displayName("A-0004-S", buffer), "Unknown");
    EXPECT_EQ(document.drivers().key(0), "3");
}

TEST(Merge, RecordsOwnAsManyObjectsAsStated) {
    TQuobrixDocument document;
    merge(oneOfEach(), document);
    const std::size_t withOneStop = document.store().objectCount();
    LogRecords another;
    another.stops = {stop(kNoon + 5000)};
    merge(another, document);
    EXPECT_EQ(document.store().objectCount() - withOneStop, TAccidentLogTable::kObjectsPerStop);

    const std::size_t before = document.store().objectCount();
    merge(trips({trip(kNoon + 5000)}), document);
    EXPECT_EQ(document.store().objectCount() - before, TTripLogTable::kObjectsPerTrip);
    EXPECT_EQ(merge(trips({trip(kNoon + 5000, 90)}), document).logs[0].replaced, 1u);
    EXPECT_EQ(document.store().objectCount() - before, TTripLogTable::kObjectsPerTrip);

    document.trips().removeRows(0, 1);
    EXPECT_EQ(document.store().objectCount(), before) << "a trip takes what it owns along";
}

TEST(Merge, NothingNewChangesNothing) {
    const test::TemporaryFolder folder;
    TQuobrixDocument document;
    merge(oneOfEach(), document);
    ASSERT_TRUE(document.saveAs(folder / "Test.car"));
    ASSERT_TRUE(document.open(folder / "Test.car", TDocument::Access::Edit));
    EXPECT_EQ(merge(oneOfEach(), document).summary(),
              "Nothing new. Already present: 1 trip, 1 trouble code, 1 event, 1 severe stop.");
    EXPECT_FALSE(document.modified());
    EXPECT_FALSE(document.dataChanged());
}

TEST(Merge, ResultCountsByOutcomeAndLog) {
    MergeResult result;
    EXPECT_EQ(result.summary(), "Nothing new.");
    result.logs = {MergeCounts{9, 2, 38}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    result.refused = {
        {RecordKind::Trip, 3, 1, "…"}, {RecordKind::Activity, 4, 2, "…"}, {RecordKind::StopSamples, 1, 1, "…"}};
    EXPECT_EQ(result.summary(),
              "New: 9 trips, 1 trouble code. Replaced: 2 trips. Already present: 38 trips, 1 event. Refused: 1 trip, "
              "2 events, 1 set of stop samples.");
    EXPECT_EQ(result.refusedLines()[1], "event 4 and 1 more: …");
}

TEST(Merge, ShiftMovesOnlyWhatIsShown) {
    TQuobrixDocument document;
    merge(oneOfEach(), document, 3600);
    EXPECT_EQ(document.trips().column<TTripLogStartTimeColumn>().at(0), kNoon + 3600);
    auto& stamps = document.accidents()->column<TAccidentLogTableTimestampColumn>();
    EXPECT_EQ(document.accidents()->column<TAccidentLogTableStartTimeColumn>().at(0), kNoon + 3600);
    EXPECT_EQ(stamps.at(0), kNoon + 20) << "by the logger's own clock";
    stamps.set(0, kNoon + 3620); // as older documents have it
    EXPECT_TRUE(merge(oneOfEach(), document, 0).summary().starts_with("Nothing new."));
    EXPECT_EQ(merge(trips({trip(kNoon, 120)}), document, 0).logs[0].replaced, 1u);
    EXPECT_EQ(document.trips().column<TTripLogStartTimeColumn>().at(0), kNoon + 3600);
    EXPECT_EQ(document.trips().column<TTripLogEndTimeColumn>().at(0), kNoon + 3720);
}

TEST(Merge, TheLargestSampleIsTheMaximumSpeed) {
    const std::pair<std::vector<std::uint8_t>, double> cases[] = {{{60, 30, 0}, 60}, {{10, 62, 0}, 62}, {{}, 61.4}};
    for (const auto& [samples, speed] : cases) {
        LogRecords records;
        records.stops = {stop(kNoon)};
        records.stops[0].maximumSpeed = 61.4;
        records.stops[0].speedSamples = samples;
        TQuobrixDocument document;
        merge(records, document);
        EXPECT_NEAR(document.accidents()->column<TAccidentLogTableMaximumSpeedColumn>().at(0), speed / 3.6, 1e-12);
    }
}

TEST(Merge, RowsStandInOrderOfTime) {
    std::vector<std::int32_t> starts;
    for (std::int32_t i = 0; i < 200; ++i)
        starts.push_back(kNoon + i * 100);
    std::shuffle(starts.begin(), starts.end(), std::mt19937(7));
    TQuobrixDocument document;
    for (std::size_t at = 0; at < starts.size(); at += 40) {
        LogRecords records;
        for (std::size_t i = at; i < at + 40; ++i)
            records.trips.push_back(trip(starts[i], static_cast<std::size_t>((starts[i] - kNoon) / 100 + 1)));
        merge(records, document);
    }
    const auto& shown = document.trips().column<TTripLogStartTimeColumn>().values();
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
    for (RowIndex row = 0; row < document.trips().rowCount(); ++row) // and each kept what it owns
        ASSERT_EQ(document.trips().column<TTripLogSampleTableColumn>().object(row)->rowCount(), row + 2);
}

// A download must not take the place of what could not be read.
TEST(Merge, RefusedIntoWhatCannotBeRead) {
    using Document = TQuobrixDocument&;
    enum class Takes { Nothing, WhatReplacesNothing, Everything };
    const struct {
        const char* what;
        ObjectId (*id)(Document);
        std::string log;
        Takes takes = Takes::Nothing;
    } damages[] = {
        {"record number", [](Document d) { return d.trips().column<TTripLogRecordColumn>().id(); }, "Trip Log"},
        {"distance", [](Document d) { return d.trips().column<TTripLogDistanceColumn>().id(); }, "Trip Log"},
        {"comments", [](Document d) { return d.troubles().column<TTroubleLogCommentsColumn>().id(); },
         "Vehicle Trouble Log"},
        {"event", [](Document d) { return d.activity().column<TSecurityLogEventTypeColumn>().id(); }, "Activity Log"},
        {"VINs of vehicles", [](Document d) { return d.vehicles().column<TVehicleNamesVinColumn>().id(); },
         "Vehicle ID"},
        {"names of drivers", [](Document d) { return d.drivers().column<DriverNamesNameColumn>().id(); }, "Driver ID"},
        {"accident log", [](Document d) { return d.accidents()->id(); }, "Accident Log"},
        {"a trip's samples", [](Document d) { return d.trips().column<TTripLogSampleTableColumn>().at(0); }, "Trip Log",
         Takes::WhatReplacesNothing},
        {"a trip's speeds",
         [](Document d) { return d.trips().column<TTripLogSampleTableColumn>().object(0)->speed().id(); }, "Trip Log",
         Takes::WhatReplacesNothing},
        {"a trip's bands", [](Document d) { return d.trips().column<TTripLogSpeedBandsTableColumn>().at(0); },
         "Trip Log", Takes::WhatReplacesNothing},
        {"time of download",
         [](Document d) {
             return d.store().singleton<TDownloadTable>().column<TDownloadTableMostRecentDownloadColumn>().id();
         },
         "", Takes::Everything},
    };
    LogRecords fuller = oneOfEach();
    fuller.trips = {trip(kNoon, 90)};
    LogRecords more = oneOfEach();
    more.trips.push_back(trip(kNoon + 1000));
    for (const auto& damage : damages) {
        SCOPED_TRACE(damage.what);
        const test::TemporaryFolder folder;
        const std::filesystem::path path = folder / "Test.car";
        std::string stream;
        {
            TQuobrixDocument made;
            merge(oneOfEach(), made);
            made.store().singleton<TDownloadTable>().record("K-0042-B", kNoon);
            stream = std::to_string(damage.id(made));
            ASSERT_TRUE(made.saveAs(path));
        }
        const Bytes ruin{1, 2, 3};
        test::tamper(path, [&](CompoundFile& file) { file.write(stream, ruin); });
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
        const Result<MergeResult> result = mergeRecords(fuller, document);
        EXPECT_EQ(bool(canMerge(document)), damage.takes != Takes::Nothing);
        EXPECT_EQ(bool(result), damage.takes == Takes::Everything);
        if (!result) {
            EXPECT_EQ(result.error().kind, ErrorKind::Corrupt);
            EXPECT_EQ(result.error().detail, damage.log);
            EXPECT_FALSE(document.modified());
        }
        EXPECT_EQ(bool(mergeRecords(more, document)), damage.takes != Takes::Nothing);
        document.store().singleton<TDownloadTable>().record("K-0042-B", kNoon + 60);
        ASSERT_TRUE(!document.modified() || document.save());
        document.newDocument();
        EXPECT_EQ(test::streamsOf(path)[stream], ruin);
        ASSERT_TRUE(document.open(path, TDocument::Access::Read));
        EXPECT_EQ(document.trips().unreadableColumns().empty(),
                  damage.log != "Trip Log" || damage.takes != Takes::Nothing);
    }
}

TEST(Merge, AnEmptiedLogTakesRecords) {
    const test::TemporaryFolder folder;
    const std::filesystem::path path = folder / "Test.car";
    TQuobrixDocument document;
    const std::string table = std::to_string(document.troubles().id());
    ASSERT_TRUE(document.saveAs(path));
    document.newDocument();
    // As a repair leaves a log of which nothing is left: a table without columns and rows.
    Bytes content = test::streamsOf(path)[table];
    content.resize(5); // class and schema
    content.resize(13);
    test::tamper(path, [&](CompoundFile& file) { file.write(table, content); });
    ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
    EXPECT_TRUE(canMerge(document));
    EXPECT_TRUE(mergeRecords(oneOfEach(), document));
    ASSERT_TRUE(document.save());
    ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
    EXPECT_EQ(document.troubles().rowCount(), 1u);
    const Result<MergeResult> again = mergeRecords(oneOfEach(), document);
    ASSERT_TRUE(again);
    EXPECT_FALSE(document.modified());
}

} // namespace
} // namespace quobrix::testing
