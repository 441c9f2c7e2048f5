#include "device/merge.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <unordered_map>

namespace quobrix {
namespace {

/// A record's identity within its log, as one text.
std::string identityKey(std::string_view serialNumber, RecordIdentity identity, std::string_view code) {
    return fmt::format("{}/{}/{}/{}", serialNumber, code, identity.loggerTime, identity.occurrence);
}

/// A logger time with a shift, within what a time can hold.
std::int32_t shifted(std::int32_t time, std::int64_t shift) {
    constexpr std::int64_t kFirst = std::numeric_limits<std::int32_t>::min() + 1; // the smallest means "no time"
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{time} + shift, kFirst, std::numeric_limits<std::int32_t>::max()));
}

/// From one time to the other; 0 when the second is missing or before the first.
std::uint64_t elapsed(std::int32_t from, std::int32_t to) {
    return static_cast<std::uint64_t>(std::max<std::int64_t>(std::int64_t{to} - from, 0));
}

double kph(double value) { return toBaseFrom(UnitId::KilometrePerHour, value); }

double metric(UnitId unit, double value) { return toBaseFrom(unit, value); }

std::int32_t count(std::size_t value) { return static_cast<std::int32_t>(value); }

std::int32_t code(std::int32_t value) { return value == QUOBRIX_NO_CODE ? Element<std::int32_t>::kNone : value; }

std::vector<std::int32_t> toSigned(const std::vector<std::uint32_t>& values) { return {values.begin(), values.end()}; }

void resize(Table& table, RowIndex rows) {
    if (rows > table.rowCount())
        table.insertRows(table.rowCount(), rows - table.rowCount());
    else
        table.removeRows(rows, table.rowCount() - rows);
}

/// The bands in force, from standstill upward: 0 to 0, then between the limits, the last one open.
template <class From, class To>
void fillBands(Table& table, const std::array<double, QUOBRIX_BAND_COUNT - 1>& limits) {
    resize(table, QUOBRIX_BAND_COUNT + 1);
    std::vector<double> from{0.0, 0.0}, to{0.0};
    for (const double limit : limits) {
        from.push_back(kph(limit));
        to.push_back(kph(limit));
    }
    to.push_back(kNoValue);
    table.column<From>().setAll(std::move(from));
    table.column<To>().setAll(std::move(to));
}

// One log each: what its records are known again by (key columns), when they happened, how much they hold, and how they
// become a row. mergeLog() below is the same for all four.

struct TripLog {
    using Record = TripRecord;
    using TableType = TTripLogTable;
    using RecordNumber = TTripLogRecordColumn;
    using Serial = TTripLogQuobrixSerialNumberColumn;
    using Time = TTripLogStartTimeColumn;
    static constexpr auto kKeys = kTypesOf<RecordNumber, Serial, Time>;

    static std::int32_t time(const Record& record) { return record.startTime; }
    static std::string code(const Record&) { return {}; }
    static std::string codeAt(const TableType&, RowIndex) { return {}; }

    static std::uint64_t content(const Record& record) {
        std::uint64_t size = elapsed(record.startTime, record.endTime) + record.speedSamples.size() +
                             record.hardBrakes.size() + record.extremeBrakes.size() + record.hardAccelerations.size() +
                             record.extremeAccelerations.size();
        for (const ParameterSeries& series : record.series)
            size += series.samples.size();
        return size;
    }
    static std::uint64_t contentAt(const TableType& table, RowIndex row) {
        std::uint64_t size =
            elapsed(table.column<TTripLogStartTimeColumn>().at(row), table.column<TTripLogEndTimeColumn>().at(row));
        for (const IntegerColumn* events : std::initializer_list<const IntegerColumn*>{
                 &table.column<TTripLogHardBrakesColumn>(), &table.column<TTripLogPanicBrakesColumn>(),
                 &table.column<TTripLogHardAccelerationsColumn>(), &table.column<TTripLogPanicAccelerationsColumn>()})
            size += static_cast<std::uint32_t>(std::max(events->at(row), 0));
        if (const TTripLogSampleTable* samples = table.column<TTripLogSampleTableColumn>().object(row)) {
            size += samples->rowCount();
            for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
                size += samples->series(i).sampleCount();
        }
        return size;
    }

    static void fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
        t.column<TTripLogVinColumn>().set(row, r.origin.vin);
        t.column<TTripLogDriverIDColumn>().set(row, r.driverId == 0 ? Element<std::int32_t>::kNone : r.driverId);
        t.column<TTripLogStartTimeColumn>().set(row, shifted(r.startTime, shift));
        t.column<TTripLogEndTimeColumn>().set(row, shifted(r.endTime, shift));
        t.column<TTripLogDisconnectedDuringTripColumn>().set(row, r.disconnected);
        t.column<TTripLogDistanceColumn>().set(row, r.distance);
        t.column<TTripLogMaximumSpeedColumn>().set(row, kph(r.maximumSpeed));
        t.column<TTripLogHardBrakesColumn>().set(row, count(r.hardBrakes.size()));
        t.column<TTripLogPanicBrakesColumn>().set(row, count(r.extremeBrakes.size()));
        t.column<TTripLogHardBrakeThresholdColumn>().set(row, r.hardBrakeThreshold);
        t.column<TTripLogPanicBrakeThresholdColumn>().set(row, r.extremeBrakeThreshold);
        t.column<TTripLogHardAccelerationsColumn>().set(row, count(r.hardAccelerations.size()));
        t.column<TTripLogPanicAccelerationsColumn>().set(row, count(r.extremeAccelerations.size()));
        t.column<TTripLogHardAccelerationThresholdColumn>().set(row, r.hardAccelerationThreshold);
        t.column<TTripLogPanicAccelerationThresholdColumn>().set(row, r.extremeAccelerationThreshold);
        t.column<TTripLogSamplingIntervalColumn>().set(row, r.speedSamplingInterval == 0 ? kNoValue
                                                                                         : r.speedSamplingInterval);
        t.column<TTripLogTimeInTopSpeedBandColumn>().set(row, count(r.bandSeconds.back()));

        TTripLogSampleTable& samples = t.column<TTripLogSampleTableColumn>().makeObject(row);
        resize(samples, r.speedSamples.size());
        samples.speed().setInterval(std::max(r.speedSamplingInterval, 1u));
        samples.speed().setAll(r.speedSamples);
        TTripLogParametersTable& parameters = t.column<TTripLogParametersTableColumn>().makeObject(row);
        resize(parameters, 0);
        for (std::size_t i = 0; i < r.series.size(); ++i) {
            const ParameterSeries& series = r.series[i];
            samples.series(i).setSeries(series.parameter, series.twoValues, std::max(series.samplingInterval, 1),
                                        series.samples);
            if (series.parameter == 0)
                continue;
            const RowIndex at = parameters.rowCount();
            parameters.insertRows(at, 1);
            parameters.column<TTripLogParameterColumn>().set(at, series.parameter);
            parameters.column<TTripLogParameterSamplingIntervalColumn>().set(at, series.samplingInterval);
        }
        fillBands<TTripLogSpeedBandFromColumn, TTripLogSpeedBandToColumn>(
            t.column<TTripLogSpeedBandsTableColumn>().makeObject(row), r.bandLimits);
        std::vector<std::int32_t> seconds{static_cast<std::int32_t>(r.idleSeconds)};
        for (const std::uint32_t band : r.bandSeconds)
            seconds.push_back(static_cast<std::int32_t>(band));
        t.column<TTripLogTimePerSpeedBandColumnColumn>().makeObject(row).setAll(std::move(seconds));
        t.column<TTripLogHardBrakeTimesColumnColumn>().makeObject(row).setAll(toSigned(r.hardBrakes));
        t.column<TTripLogPanicBrakeTimesColumnColumn>().makeObject(row).setAll(toSigned(r.extremeBrakes));
        t.column<TTripLogHardAccelerationTimesColumnColumn>().makeObject(row).setAll(toSigned(r.hardAccelerations));
        t.column<TTripLogPanicAccelerationTimesColumnColumn>().makeObject(row).setAll(toSigned(r.extremeAccelerations));
    }
};

struct TroubleLog {
    using Record = TroubleRecord;
    using TableType = TTroubleLogTable;
    using RecordNumber = TTroubleLogRecordColumn;
    using Serial = TTroubleLogQuobrixSerialNumberColumn;
    using Time = TTroubleLogTimeRecordedColumn;
    static constexpr auto kKeys = kTypesOf<RecordNumber, Serial, Time, TTroubleLogTroubleCodeColumn>;

    static std::int32_t time(const Record& record) { return record.time; }
    static std::string code(const Record& record) { return record.code; }
    static std::string codeAt(const TableType& table, RowIndex row) {
        return table.column<TTroubleLogTroubleCodeColumn>().at(row);
    }

    /// The freeze frame's figures in the order of their columns, from the short-term trim of bank 1, in base units.
    static std::array<double, 10> figures(const Record& r) {
        return {r.shortTermFuelTrim[0],
                r.longTermFuelTrim[0],
                r.shortTermFuelTrim[1],
                r.longTermFuelTrim[1],
                metric(UnitId::Kilopascal, r.fuelPressure),
                metric(UnitId::Kilopascal, r.intakeManifoldPressure),
                metric(UnitId::Celsius, r.coolantTemperature),
                r.calculatedLoad,
                metric(UnitId::RevolutionPerMinute, r.engineSpeed),
                kph(r.vehicleSpeed)};
    }
    static std::array<RealColumn*, 10> figureColumns(const TableType& t) {
        return {&t.column<TTroubleLogShortTermFuelTrimBankOneColumn>(),
                &t.column<TTroubleLogLongTermFuelTrimBankOneColumn>(),
                &t.column<TTroubleLogShortTermFuelTrimBankTwoColumn>(),
                &t.column<TTroubleLogLongTermFuelTrimBankTwoColumn>(),
                &t.column<TTroubleLogFuelPressureColumn>(),
                &t.column<TTroubleLogIntakeManifoldPressureColumn>(),
                &t.column<TTroubleLogEngineCoolantTemperatureColumn>(),
                &t.column<TTroubleLogCalculatedLoadValueColumn>(),
                &t.column<TTroubleLogEngineSpeedColumn>(),
                &t.column<TTroubleLogVehicleSpeedColumn>()};
    }

    static std::uint64_t content(const Record& record) {
        std::uint64_t size = !record.origin.vin.empty();
        for (const std::int32_t status : record.fuelSystemStatus)
            size += status != QUOBRIX_NO_CODE;
        for (const double figure : figures(record))
            size += hasValue(figure);
        return size;
    }
    static std::uint64_t contentAt(const TableType& table, RowIndex row) {
        std::uint64_t size = table.column<TTroubleLogVinColumn>().has(row);
        size += table.column<TTroubleLogFuelSystemOneStatusColumn>().has(row);
        size += table.column<TTroubleLogFuelSystemTwoStatusColumn>().has(row);
        for (const RealColumn* figure : figureColumns(table))
            size += figure->has(row);
        return size;
    }

    static void fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
        t.column<TTroubleLogTimeRecordedColumn>().set(row, shifted(r.time, shift));
        t.column<TTroubleLogVinColumn>().set(row, r.origin.vin);
        t.column<TTroubleLogTroubleCodeColumn>().set(row, r.code);
        t.column<TTroubleLogFuelSystemOneStatusColumn>().set(row, quobrix::code(r.fuelSystemStatus[0]));
        t.column<TTroubleLogFuelSystemTwoStatusColumn>().set(row, quobrix::code(r.fuelSystemStatus[1]));
        const std::array<double, 10> values = figures(r);
        const std::array<RealColumn*, 10> columns = figureColumns(t);
        for (std::size_t i = 0; i < values.size(); ++i)
            columns[i]->set(row, values[i]);
    }
};

struct ActivityLog {
    using Record = ActivityRecord;
    using TableType = TSecurityLogTable;
    using RecordNumber = TSecurityLogRecordColumn;
    using Serial = TSecurityLogQuobrixSerialNumberColumn;
    using Time = TSecurityLogTimeRecordedColumn;
    static constexpr auto kKeys = kTypesOf<RecordNumber, Serial, Time, TSecurityLogEventTypeColumn>;

    static std::int32_t time(const Record& record) { return record.time; }
    static std::string code(const Record& record) { return std::to_string(quobrix::code(record.eventType)); }
    static std::string codeAt(const TableType& table, RowIndex row) {
        return std::to_string(table.column<TSecurityLogEventTypeColumn>().at(row));
    }
    static std::uint64_t content(const Record& record) { return !record.origin.vin.empty(); }
    static std::uint64_t contentAt(const TableType& table, RowIndex row) {
        return table.column<TSecurityLogVinColumn>().has(row);
    }

    static void fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
        t.column<TSecurityLogTimeRecordedColumn>().set(row, shifted(r.time, shift));
        t.column<TSecurityLogVinColumn>().set(row, r.origin.vin);
        t.column<TSecurityLogEventTypeColumn>().set(row, quobrix::code(r.eventType));
    }
};

struct AccidentLog {
    using Record = StopRecord;
    using TableType = TAccidentLogTable;
    using RecordNumber = TAccidentLogTableRecordColumn;
    using Serial = TAccidentLogTableQuobrixSerialNumberColumn;
    using Time = TAccidentLogTableStartTimeColumn;
    static constexpr auto kKeys = kTypesOf<RecordNumber, Serial, Time>;

    static std::int32_t time(const Record& record) { return record.startTime; }
    static std::string code(const Record&) { return {}; }
    static std::string codeAt(const TableType&, RowIndex) { return {}; }
    static std::uint64_t content(const Record& record) { return record.speedSamples.size(); }
    static std::uint64_t contentAt(const TableType& table, RowIndex row) {
        const auto* samples = table.column<TAccidentLogSpeedSamplesColumn>().object(row);
        return samples ? samples->storedRows() : 0;
    }

    static void fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
        t.column<TAccidentLogTableStartTimeColumn>().set(row, shifted(r.startTime, shift));
        t.column<TAccidentLogTableTimestampColumn>().set(row, shifted(r.timestamp, shift));
        t.column<TAccidentLogTableMaximumSpeedColumn>().set(row, kph(r.maximumSpeed));
        t.column<TAccidentLogTableVinColumn>().set(row, r.origin.vin);
        TAccidentLogSamplesColumn& samples = t.column<TAccidentLogSpeedSamplesColumn>().makeObject(row);
        samples.setInterval(std::max(r.samplingInterval, 1u));
        samples.setAll(r.speedSamples);
        fillBands<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>(
            t.column<TAccidentLogSpeedBandsTableColumn>().makeObject(row), r.bandLimits);
    }
};

template <class Log>
void mergeLog(const std::vector<typename Log::Record>& records, typename Log::TableType& table, std::int32_t shift,
              MergeResult& result) {
    auto& numbers = table.template column<typename Log::RecordNumber>();
    auto& serials = table.template column<typename Log::Serial>();
    const auto& times = table.template column<typename Log::Time>();
    std::unordered_map<std::string, RowIndex> known;
    known.reserve(table.rowCount());
    for (RowIndex row = 0; row < table.rowCount(); ++row)
        known.emplace(identityKey(serials.at(row), numbers.at(row), Log::codeAt(table, row)), row);

    struct Fresh {
        const typename Log::Record* record;
        RecordIdentity identity;
        RowIndex place; // before which of the table's present rows
    };
    std::vector<Fresh> fresh;
    std::unordered_map<std::string, std::uint32_t> occurrences;
    for (const typename Log::Record& record : records) {
        const std::string code = Log::code(record);
        RecordIdentity identity{Log::time(record), 0};
        identity.occurrence = occurrences[identityKey(record.origin.serialNumber, identity, code)]++;
        const auto found = known.find(identityKey(record.origin.serialNumber, identity, code));
        if (found == known.end()) {
            fresh.push_back({&record, identity, 0});
            continue;
        }
        ++result.present;
        if (Log::content(record) > Log::contentAt(table, found->second)) {
            // The shift that the old record got stays: its place among the others depends on it.
            const RowIndex row = found->second;
            table.makeWritable();
            Log::fill(table, row, record, std::int64_t{times.at(row)} - Log::time(record));
            ++result.replaced;
        }
    }

    std::stable_sort(fresh.begin(), fresh.end(),
                     [](const Fresh& a, const Fresh& b) { return Log::time(*a.record) < Log::time(*b.record); });
    for (Fresh& entry : fresh)
        entry.place = static_cast<RowIndex>(
            std::upper_bound(times.values().begin(), times.values().end(), shifted(Log::time(*entry.record), shift)) -
            times.values().begin());
    // From the back, so that the places before stay right; runs of neighbours at once.
    for (std::size_t end = fresh.size(); end > 0;) {
        std::size_t begin = end - 1;
        while (begin > 0 && fresh[begin - 1].place == fresh[end - 1].place)
            --begin;
        const RowIndex place = fresh[begin].place;
        table.insertRows(place, end - begin);
        for (std::size_t i = begin; i < end; ++i) {
            const RowIndex row = place + (i - begin);
            numbers.set(row, fresh[i].identity);
            serials.set(row, fresh[i].record->origin.serialNumber);
            Log::fill(table, row, *fresh[i].record, shift);
        }
        end = begin;
    }
    result.added += fresh.size();
}

/// The keys that records refer to, in the order of the records.
template <class Record>
void collectKeys(const std::vector<Record>& records, NewKeys& keys) {
    for (const Record& record : records) {
        keys.loggers.push_back(record.origin.serialNumber);
        keys.vehicles.push_back(record.origin.vin);
        if constexpr (std::is_same_v<Record, TripRecord>)
            if (record.driverId != 0)
                keys.drivers.push_back(std::to_string(record.driverId));
    }
}

/// Adds the vehicles, loggers and drivers of the records that the name tables lack.
NewKeys addNames(const LogRecords& records, TQuobrixDocument& document) {
    NewKeys keys;
    collectKeys(records.trips, keys);
    collectKeys(records.troubles, keys);
    collectKeys(records.activities, keys);
    collectKeys(records.stops, keys);
    return {document.loggers().addMissing(keys.loggers), document.vehicles().addMissing(keys.vehicles),
            document.drivers().addMissing(keys.drivers)};
}

template <class Log>
Result<void> checkKeys(const typename Log::TableType& table) {
    for (const PersistentType* type : Log::kKeys)
        if (!table.columnOf(*type).store()) // one that stands in for what the file lacks or that cannot be read
            return Error{ErrorKind::Corrupt, std::string(type->name)};
    return {};
}

} // namespace

std::uint64_t MergeResult::refusedCount() const {
    std::uint64_t sum = 0;
    for (const RefusedRecords& group : refused)
        sum += group.count;
    return sum;
}

std::string MergeResult::summary() const {
    return fmt::format("{} new, {} already present, {} refused.", added, present, refusedCount());
}

std::vector<std::string> MergeResult::refusedLines() const {
    std::vector<std::string> lines;
    for (const RefusedRecords& group : refused)
        lines.push_back(group.count == 1
                            ? fmt::format("{} {}: {}", recordKindName(group.kind), group.ordinal, group.reason)
                            : fmt::format("{} {} and {} more: {}", recordKindName(group.kind), group.ordinal,
                                          group.count - 1, group.reason));
    return lines;
}

namespace {

Result<void> keysReadable(TQuobrixDocument& document) {
    if (const auto reason = document.readOnlyReason();
        reason && (reason->kind == ErrorKind::Corrupt || reason->kind == ErrorKind::Unsupported))
        return *reason;
    QUOBRIX_TRY(checkKeys<TripLog>(document.trips()));
    QUOBRIX_TRY(checkKeys<TroubleLog>(document.troubles()));
    QUOBRIX_TRY(checkKeys<ActivityLog>(document.activity()));
    if (TAccidentLogTable* accidents = document.accidents()) // its row count may turn out to be damaged
        QUOBRIX_TRY(checkKeys<AccidentLog>(*accidents));
    if (document.accidents())
        return {};
    // There must be none: one that cannot be read, or that the index does not name, must not get another beside it.
    ObjectStore& store = document.store();
    if (store.singletonIds().contains(TAccidentLogTable::kType.id()) || store.findLostSingletons())
        return Error{ErrorKind::Corrupt, std::string(TAccidentLogTable::kType.name)};
    return {};
}

} // namespace

Result<void> canMerge(TQuobrixDocument& document) {
    const Result<void> readable = keysReadable(document);
    return document.outdated() ? Result<void>(*document.readOnlyReason()) : readable;
}

MergeResult mergeRecords(const LogRecords& records, TQuobrixDocument& document, std::int32_t shift) {
    document.edits().clear(); // the rows that its steps mean are about to move
    MergeResult result;
    result.refused = records.refused;
    mergeLog<TripLog>(records.trips, document.trips(), shift, result);
    mergeLog<TroubleLog>(records.troubles, document.troubles(), shift, result);
    mergeLog<ActivityLog>(records.activities, document.activity(), shift, result);
    if (!records.stops.empty())
        mergeLog<AccidentLog>(records.stops, document.store().singleton<TAccidentLogTable>(), shift, result);
    result.newKeys = addNames(records, document);
    if (result.added + result.replaced > 0)
        document.setDataChanged();
    return result;
}

} // namespace quobrix
