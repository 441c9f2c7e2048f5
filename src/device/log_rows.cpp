#include "device/log_rows.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace quobrix {
namespace {

double kph(double value) { return toBaseFrom(UnitId::KilometrePerHour, value); }

double metric(UnitId unit, double value) { return toBaseFrom(unit, value); }

std::int32_t count(std::size_t value) { return static_cast<std::int32_t>(value); }

/// A number that columns without a value and old files may lack.
std::uint64_t natural(std::int32_t value) { return static_cast<std::uint64_t>(std::max(value, 0)); }

std::int32_t storedCode(std::int32_t value) { return value == QUOBRIX_NO_CODE ? Element<std::int32_t>::kNone : value; }

std::int32_t driverOf(const TripRecord& record) {
    return record.driverId == 0 ? Element<std::int32_t>::kNone : record.driverId;
}

std::vector<std::int32_t> toSigned(const std::vector<std::uint32_t>& values) { return {values.begin(), values.end()}; }

/// Seconds at standstill, then in each band.
std::vector<std::int32_t> secondsOf(const TripRecord& record) {
    std::vector<std::int32_t> seconds{static_cast<std::int32_t>(record.idleSeconds)};
    for (const std::uint32_t band : record.bandSeconds)
        seconds.push_back(static_cast<std::int32_t>(band));
    return seconds;
}

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

/// The values of the list that the cell owns: none if it owns none, nothing if they cannot be read.
template <class List>
const auto* valuesOf(const ObjectColumnOf<List>& column, RowIndex row) {
    static const std::remove_cvref_t<decltype(std::declval<List>().values())> none;
    const List* list = column.object(row);
    return list ? &list->values() : column.has(row) ? nullptr : &none;
}

/// Whether the object of the cell, if it has one, can be read with all that it is made of.
template <class Object>
bool readable(const ObjectColumnOf<Object>& column, RowIndex row) {
    const Object* object = column.object(row);
    if constexpr (std::is_base_of_v<Table, Object>)
        return object ? object->unreadableColumns().empty() && object->rowLock().empty() : !column.has(row);
    else
        return object || !column.has(row);
}

/// A column that was read, and does not stand in for one that was not.
bool isThere(const Column& column) { return column.store() != nullptr; }

/// The four kinds of events of a trip: how many, when, and the record's.
template <class Count, class Times>
void compareEvents(const TTripLogTable& table, RowIndex row, const std::vector<std::uint32_t>& record, Comparison& c) {
    c.growing(natural(table.column<Count>().at(row)), record.size());
    if (!c.same())
        return;
    if (const auto* times = valuesOf(table.column<Times>(), row))
        c.sequence(*times, toSigned(record));
}

void compareSamples(const TTripLogSampleTable& samples, const TripRecord& record, Comparison& c) {
    const TTripLogSampleSpeedColumn& speed = samples.speed();
    if (isThere(speed)) {
        c.require(speed.values().empty() || record.speedSamples.empty() ||
                  speed.interval() == record.speedSamplingInterval);
        c.sequence(speed.values(), record.speedSamples);
    }
    for (std::size_t i = 0; c.same() && i < TTripLogSampleTable::kSeriesCount; ++i) {
        const ParameterSeriesColumn& stored = samples.series(i);
        const ParameterSeries& series = record.series[i];
        if (!isThere(stored))
            continue;
        TTripLogParameter1Column recorded; // samples are compared as they are stored
        recorded.setSeries(series.parameter, series.twoValues, std::max(series.samplingInterval, 1), series.samples);
        c.require(stored.agreesWith(recorded));
        c.growing(stored.sampleCount(), recorded.sampleCount());
    }
}

/// The freeze frame's figures in the order of their columns, from the short-term trim of bank 1, in base units.
std::array<double, 10> figuresOf(const TroubleRecord& r) {
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

std::array<RealColumn*, 10> figureColumns(const TTroubleLogTable& t) {
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

} // namespace

void Comparison::vin(std::string_view row, std::string_view record) {
    require(row.empty() || record.empty() || row == record);
}

void Comparison::growing(std::uint64_t row, std::uint64_t record) {
    recordHasMore = recordHasMore || record > row;
    rowHasMore = rowHasMore || row > record;
    common += std::min(row, record);
}

void Comparison::figure(double row, double record) {
    if (hasValue(row) && hasValue(record))
        require(std::abs(row - record) <= 1e-12 * std::max(std::abs(row), std::abs(record)));
    growing(hasValue(row), hasValue(record));
}

void Comparison::code(std::int32_t row, std::int32_t record) {
    const bool rowHas = !Element<std::int32_t>::isNone(row), recordHas = !Element<std::int32_t>::isNone(record);
    require(!rowHas || !recordHas || row == record);
    growing(rowHas, recordHas);
}

std::int32_t shifted(std::int32_t time, std::int64_t shift) {
    constexpr std::int64_t kFirst = std::numeric_limits<std::int32_t>::min() + 1; // the smallest means "no time"
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{time} + shift, kFirst, std::numeric_limits<std::int32_t>::max()));
}

// The end, the seconds in the speed bands, the samples and the events grow while a trip lasts. The other figures follow
// from these and may be rounded anew by another library. From what costs little to what must be loaded.
Comparison TripRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    Comparison c;
    const std::int32_t start = t.column<TTripLogStartTimeColumn>().at(row);
    const auto duration = [start](std::int32_t end) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(std::int64_t{end} - start, 0));
    };
    c.growing(duration(t.column<TTripLogEndTimeColumn>().at(row)), duration(shifted(r.endTime, shift)));
    c.vin(t.recorded(row).vin, r.origin.vin);
    if (c.differs)
        return c;
    if (const auto* stored = valuesOf(t.column<TTripLogTimePerSpeedBandColumnColumn>(), row)) {
        const std::vector<std::int32_t> seconds = secondsOf(r);
        for (std::size_t i = 0; i < seconds.size(); ++i)
            c.growing(i < stored->size() ? natural((*stored)[i]) : 0, natural(seconds[i]));
    }
    if (c.same())
        compareEvents<TTripLogHardBrakesColumn, TTripLogHardBrakeTimesColumnColumn>(t, row, r.hardBrakes, c);
    if (c.same())
        compareEvents<TTripLogPanicBrakesColumn, TTripLogPanicBrakeTimesColumnColumn>(t, row, r.extremeBrakes, c);
    if (c.same())
        compareEvents<TTripLogHardAccelerationsColumn, TTripLogHardAccelerationTimesColumnColumn>(
            t, row, r.hardAccelerations, c);
    if (c.same())
        compareEvents<TTripLogPanicAccelerationsColumn, TTripLogPanicAccelerationTimesColumnColumn>(
            t, row, r.extremeAccelerations, c);
    if (!c.same())
        return c;
    const auto& tables = t.column<TTripLogSampleTableColumn>();
    if (const TTripLogSampleTable* samples = tables.object(row))
        compareSamples(*samples, r, c);
    else if (!tables.has(row)) // all that there is of it was lost, or it never had any
        c.growing(0, r.speedSamples.size());
    return c;
}

bool TripRows::completes(const TableType& table, RowIndex row, const Record& record) {
    const RecordedOrigin origin = table.recorded(row);
    return (origin.vin.empty() && !record.origin.vin.empty()) ||
           (Element<std::int32_t>::isNone(origin.driver) && record.driverId != 0);
}

void TripRows::complete(TableType& table, RowIndex row, const Record& record) {
    table.setRecorded(row, record.origin.vin, driverOf(record));
}

bool TripRows::replaceable(const TableType& t, RowIndex row) {
    return readable(t.column<TTripLogSampleTableColumn>(), row) &&
           readable(t.column<TTripLogParametersTableColumn>(), row) &&
           readable(t.column<TTripLogSpeedBandsTableColumn>(), row) &&
           readable(t.column<TTripLogTimePerSpeedBandColumnColumn>(), row) &&
           readable(t.column<TTripLogHardBrakeTimesColumnColumn>(), row) &&
           readable(t.column<TTripLogPanicBrakeTimesColumnColumn>(), row) &&
           readable(t.column<TTripLogHardAccelerationTimesColumnColumn>(), row) &&
           readable(t.column<TTripLogPanicAccelerationTimesColumnColumn>(), row);
}

void TripRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
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
    t.column<TTripLogSamplingIntervalColumn>().set(row,
                                                   r.speedSamplingInterval == 0 ? kNoValue : r.speedSamplingInterval);
    t.column<TTripLogTimeInTopSpeedBandColumn>().set(row, static_cast<std::int32_t>(r.bandSeconds.back()));

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
    t.column<TTripLogTimePerSpeedBandColumnColumn>().makeObject(row).setAll(secondsOf(r));
    t.column<TTripLogHardBrakeTimesColumnColumn>().makeObject(row).setAll(toSigned(r.hardBrakes));
    t.column<TTripLogPanicBrakeTimesColumnColumn>().makeObject(row).setAll(toSigned(r.extremeBrakes));
    t.column<TTripLogHardAccelerationTimesColumnColumn>().makeObject(row).setAll(toSigned(r.hardAccelerations));
    t.column<TTripLogPanicAccelerationTimesColumnColumn>().makeObject(row).setAll(toSigned(r.extremeAccelerations));
}

// A freeze frame does not grow; but a figure that was not reported at first may be later.
Comparison TroubleRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t) {
    Comparison c;
    c.vin(t.column<TTroubleLogVinColumn>().at(row), r.origin.vin);
    c.code(t.column<TTroubleLogFuelSystemOneStatusColumn>().at(row), storedCode(r.fuelSystemStatus[0]));
    c.code(t.column<TTroubleLogFuelSystemTwoStatusColumn>().at(row), storedCode(r.fuelSystemStatus[1]));
    const std::array<double, 10> figures = figuresOf(r);
    const std::array<RealColumn*, 10> columns = figureColumns(t);
    for (std::size_t i = 0; i < figures.size(); ++i)
        c.figure(columns[i]->at(row), figures[i]);
    return c;
}

void TroubleRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
    t.column<TTroubleLogTimeRecordedColumn>().set(row, shifted(r.time, shift));
    t.column<TTroubleLogTroubleCodeColumn>().set(row, r.code);
    t.column<TTroubleLogFuelSystemOneStatusColumn>().set(row, storedCode(r.fuelSystemStatus[0]));
    t.column<TTroubleLogFuelSystemTwoStatusColumn>().set(row, storedCode(r.fuelSystemStatus[1]));
    const std::array<double, 10> figures = figuresOf(r);
    const std::array<RealColumn*, 10> columns = figureColumns(t);
    for (std::size_t i = 0; i < figures.size(); ++i)
        columns[i]->set(row, figures[i]);
}

std::string ActivityRows::code(const Record& record) { return std::to_string(storedCode(record.eventType)); }

std::string ActivityRows::codeAt(const TableType& table, RowIndex row) {
    return std::to_string(table.column<TSecurityLogEventTypeColumn>().at(row));
}

Comparison ActivityRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t) {
    Comparison c;
    c.vin(t.column<TSecurityLogVinColumn>().at(row), r.origin.vin);
    return c;
}

void ActivityRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
    t.column<TSecurityLogTimeRecordedColumn>().set(row, shifted(r.time, shift));
    t.column<TSecurityLogEventTypeColumn>().set(row, storedCode(r.eventType));
}

// A stop is recorded when it is over; only its samples may be missing at first.
Comparison AccidentRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    Comparison c;
    c.vin(t.column<TAccidentLogTableVinColumn>().at(row), r.origin.vin);
    c.require(t.column<TAccidentLogTableTimestampColumn>().at(row) == shifted(r.timestamp, shift));
    c.figure(t.column<TAccidentLogTableMaximumSpeedColumn>().at(row), kph(r.maximumSpeed));
    const auto& lists = t.column<TAccidentLogSpeedSamplesColumn>();
    if (const TAccidentLogSamplesColumn* samples = c.same() ? lists.object(row) : nullptr)
        c.require(samples->values().empty() || r.speedSamples.empty() || samples->interval() == r.samplingInterval);
    if (const auto* samples = c.same() ? valuesOf(lists, row) : nullptr)
        c.sequence(*samples, r.speedSamples);
    return c;
}

bool AccidentRows::replaceable(const TableType& t, RowIndex row) {
    return readable(t.column<TAccidentLogSpeedSamplesColumn>(), row) &&
           readable(t.column<TAccidentLogSpeedBandsTableColumn>(), row);
}

void AccidentRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
    t.column<TAccidentLogTableStartTimeColumn>().set(row, shifted(r.startTime, shift));
    t.column<TAccidentLogTableTimestampColumn>().set(row, shifted(r.timestamp, shift));
    t.column<TAccidentLogTableMaximumSpeedColumn>().set(row, kph(r.maximumSpeed));
    TAccidentLogSamplesColumn& samples = t.column<TAccidentLogSpeedSamplesColumn>().makeObject(row);
    samples.setInterval(std::max(r.samplingInterval, 1u));
    samples.setAll(r.speedSamples);
    fillBands<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>(
        t.column<TAccidentLogSpeedBandsTableColumn>().makeObject(row), r.bandLimits);
}

} // namespace quobrix
