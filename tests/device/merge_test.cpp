#include "device/merge.h"

#include "model/record_edits.h"

#include "support/document_streams.h"
#include "support/record_set_builder.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <set>
#include <stdexcept>
#include <variant>

namespace quobrix::testing {
namespace {

constexpr std::int32_t kNoon = 1'700'000'000;
const std::string kVin = "1HGCM82633A004352", kOtherVin = "WVWZZZ1KZAW000001";

TripRecord trip(std::int32_t start, std::size_t seconds = 60) {
    TripRecord record;
    record.origin = {"K-0042-B", kVin};
    record.driverId = 2;
    record.startTime = start;
    record.endTime = start + static_cast<std::int32_t>(seconds);
    record.idleSeconds = 10;
    record.bandSeconds = {20, 15, 10, 5};
    record.speedSamplingInterval = 1;
    record.speedSamples.assign(seconds + 1, 50);
    record.hardBrakes = {5, 20};
    record.series[0] = {2, 5, false, {800, kNoValue, 1200}};
    return record;
}

TroubleRecord trouble(std::int32_t time, const char* code) {
    TroubleRecord record;
    record.origin = {"K-0042-B", kVin};
    record.time = time;
    record.code = code;
    record.fuelSystemStatus = {1, QUOBRIX_NO_CODE};
    record.coolantTemperature = 88;
    return record;
}

StopRecord stop(std::int32_t start) {
    StopRecord record;
    record.origin = {"K-0042-B", ""};
    record.startTime = start;
    record.timestamp = start + 20;
    record.maximumSpeed = 60;
    record.samplingInterval = 10;
    record.speedSamples = {60, 30, 0};
    return record;
}

LogRecords oneOfEach() {
    LogRecords records;
    records.trips = {trip(kNoon)};
    records.troubles = {trouble(kNoon, "P0300")};
    records.activities = {{{"K-0042-B", ""}, kNoon, 3}};
    records.stops = {stop(kNoon)};
    return records;
}

LogRecords trips(std::vector<TripRecord> records) {
    LogRecords all;
    all.trips = std::move(records);
    return all;
}

MergeResult merge(const LogRecords& records, TQuobrixDocument& document, std::int32_t shift = 0) {
    Result<MergeResult> result = mergeRecords(records, document, shift);
    if (!result)
        throw std::runtime_error(result.error().detail);
    return *std::move(result);
}

/// What becomes of RECORDS when FIRST is in the document: "new", "replaced" or "present", for one record.
std::string outcome(const LogRecords& first, const LogRecords& second) {
    TQuobrixDocument document;
    merge(first, document);
    MergeCounts sum;
    for (const MergeCounts& log : merge(second, document).logs) {
        sum.added += log.added;
        sum.replaced += log.replaced;
        sum.present += log.present;
    }
    EXPECT_EQ(merge(second, document).summary().find("New"), std::string::npos) << "it is known from then on";
    return sum.added ? "new" : sum.replaced ? "replaced" : sum.present ? "present" : "nothing";
}

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
        return fmt::format("{} {} {}", table.column<TTripLogVinColumn>().at(0),
                           table.column<TTripLogDriverIDColumn>().at(0), table.column<TTripLogCommentsColumn>().at(0));
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
                std::erase_if(content.columns,
                              [](const Reference& c) { return c.typeId == TTripLogRecordedOriginColumn::kType.id(); });
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
        if (olderFile) {
            TripRecord fuller = trip(kNoon);
            fuller.driverId = 3;
            EXPECT_EQ(merge(trips({fuller}), document).logs[0].replaced, 1u);
            EXPECT_EQ(shown(document), kVin + " 3 rain") << "what it shows is what was recorded";
        }
        stored.column<TTripLogVinColumn>().set(0, kOtherVin);
        TripRecord fuller = trip(kNoon, 90);
        EXPECT_EQ(merge(trips({fuller}), document).logs[0].replaced, 1u);
        EXPECT_EQ(shown(document), kOtherVin + " 2 rain");
        EXPECT_EQ(stored.recorded(0), (RecordedOrigin{true, kVin, 2}));
        stored.column<TTripLogDriverIDColumn>().set(0, 7);
        fuller = trip(kNoon, 100);
        fuller.driverId = 4;
        EXPECT_EQ(merge(trips({fuller}), document).logs[0].replaced, 1u);
        EXPECT_EQ(shown(document), kOtherVin + " 7 rain");
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
