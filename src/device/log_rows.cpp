#include "device/log_rows.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace quobrix {
namespace {

std::int32_t storedCode(std::int32_t value) { return value == QUOBRIX_NO_CODE ? Element<std::int32_t>::kNone : value; }

double kph(double value) { return toBaseFrom(UnitId::KilometrePerHour, value); }

/// A number that columns without a value and old files may lack.
std::uint64_t natural(std::int32_t value) { return static_cast<std::uint64_t>(std::max(value, 0)); }

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

// What of a record goes into which cell of its row: a table for each log, of column, member and, for figures that are
// not handed over in base units, unit. By it rows are written, and those tables that are a log's content are compared.

/// The cells that hold the record itself.
template <class C, class Record, class Member>
struct Plain {
    using InColumn = C;
    Member Record::*member;

    auto of(const Record& record, std::int64_t) const { return record.*member; }
};
template <class C, class Record>
struct Moment {
    using InColumn = C;
    std::int32_t Record::*member;

    std::int32_t of(const Record& record, std::int64_t shift) const { return shifted(record.*member, shift); }
    static void compare(std::int32_t row, std::int32_t record, Comparison& c) { c.require(row == record); }
};
template <class C, class Record, class Member>
struct Figure {
    using InColumn = C;
    Member Record::*member;
    std::size_t index;
    std::optional<UnitId> unit;

    double of(const Record& record, std::int64_t) const {
        double value = kNoValue;
        if constexpr (std::is_same_v<Member, double>)
            value = record.*member;
        else
            value = (record.*member)[index];
        return unit ? toBaseFrom(*unit, value) : value;
    }
    static void compare(double row, double record, Comparison& c) { c.figure(row, record); }
};
template <class C, class Record, class Member>
struct Code {
    using InColumn = C;
    Member Record::*member;
    std::size_t index;

    std::int32_t of(const Record& record, std::int64_t) const {
        if constexpr (std::is_same_v<Member, std::int32_t>)
            return storedCode(record.*member);
        else
            return storedCode((record.*member)[index]);
    }
    static void compare(std::int32_t row, std::int32_t record, Comparison& c) { c.code(row, record); }
};
/// How many events there were, and when: a number, and a list that the row owns.
template <class C, class Times>
struct Events {
    std::vector<std::uint32_t> TripRecord::*member;
};

template <class C, class Record, class Member>
constexpr Plain<C, Record, Member> plain(Member Record::*member) {
    return {member};
}
template <class C, class Record>
constexpr Moment<C, Record> moment(std::int32_t Record::*member) {
    return {member};
}
template <class C, class Record>
constexpr Figure<C, Record, double> figure(double Record::*member, std::optional<UnitId> unit = {}) {
    return {member, 0, unit};
}
template <class C, class Record>
constexpr Figure<C, Record, std::array<double, 2>> figure(std::array<double, 2> Record::*member, std::size_t index) {
    return {member, index, {}};
}
template <class C, class Record>
constexpr Code<C, Record, std::int32_t> code(std::int32_t Record::*member) {
    return {member, 0};
}
template <class C, class Record>
constexpr Code<C, Record, std::array<std::int32_t, 2>> code(std::array<std::int32_t, 2> Record::*member,
                                                            std::size_t index) {
    return {member, index};
}
template <class C, class Times>
constexpr Events<C, Times> events(std::vector<std::uint32_t> TripRecord::*member) {
    return {member};
}

constexpr std::tuple kTripCells{
    moment<TTripLogStartTimeColumn>(&TripRecord::startTime),
    moment<TTripLogEndTimeColumn>(&TripRecord::endTime),
    plain<TTripLogDisconnectedDuringTripColumn>(&TripRecord::disconnected),
    figure<TTripLogDistanceColumn>(&TripRecord::distance),
    figure<TTripLogMaximumSpeedColumn>(&TripRecord::maximumSpeed, UnitId::KilometrePerHour),
    figure<TTripLogHardBrakeThresholdColumn>(&TripRecord::hardBrakeThreshold),
    figure<TTripLogPanicBrakeThresholdColumn>(&TripRecord::extremeBrakeThreshold),
    figure<TTripLogHardAccelerationThresholdColumn>(&TripRecord::hardAccelerationThreshold),
    figure<TTripLogPanicAccelerationThresholdColumn>(&TripRecord::extremeAccelerationThreshold),
};
constexpr std::tuple kTripEvents{
    events<TTripLogHardBrakesColumn, TTripLogHardBrakeTimesColumnColumn>(&TripRecord::hardBrakes),
    events<TTripLogPanicBrakesColumn, TTripLogPanicBrakeTimesColumnColumn>(&TripRecord::extremeBrakes),
    events<TTripLogHardAccelerationsColumn, TTripLogHardAccelerationTimesColumnColumn>(&TripRecord::hardAccelerations),
    events<TTripLogPanicAccelerationsColumn, TTripLogPanicAccelerationTimesColumnColumn>(
        &TripRecord::extremeAccelerations),
};
constexpr std::tuple kTroubleCells{
    moment<TTroubleLogTimeRecordedColumn>(&TroubleRecord::time),
    plain<TTroubleLogTroubleCodeColumn>(&TroubleRecord::code),
};
constexpr std::tuple kTroubleContent{
    code<TTroubleLogFuelSystemOneStatusColumn>(&TroubleRecord::fuelSystemStatus, 0),
    code<TTroubleLogFuelSystemTwoStatusColumn>(&TroubleRecord::fuelSystemStatus, 1),
    figure<TTroubleLogCalculatedLoadValueColumn>(&TroubleRecord::calculatedLoad),
    figure<TTroubleLogEngineCoolantTemperatureColumn>(&TroubleRecord::coolantTemperature, UnitId::Celsius),
    figure<TTroubleLogShortTermFuelTrimBankOneColumn>(&TroubleRecord::shortTermFuelTrim, 0),
    figure<TTroubleLogLongTermFuelTrimBankOneColumn>(&TroubleRecord::longTermFuelTrim, 0),
    figure<TTroubleLogShortTermFuelTrimBankTwoColumn>(&TroubleRecord::shortTermFuelTrim, 1),
    figure<TTroubleLogLongTermFuelTrimBankTwoColumn>(&TroubleRecord::longTermFuelTrim, 1),
    figure<TTroubleLogFuelPressureColumn>(&TroubleRecord::fuelPressure, UnitId::Kilopascal),
    figure<TTroubleLogIntakeManifoldPressureColumn>(&TroubleRecord::intakeManifoldPressure, UnitId::Kilopascal),
    figure<TTroubleLogEngineSpeedColumn>(&TroubleRecord::engineSpeed, UnitId::RevolutionPerMinute),
    figure<TTroubleLogVehicleSpeedColumn>(&TroubleRecord::vehicleSpeed, UnitId::KilometrePerHour),
};
constexpr std::tuple kActivityCells{
    moment<TSecurityLogTimeRecordedColumn>(&ActivityRecord::time),
    code<TSecurityLogEventTypeColumn>(&ActivityRecord::eventType),
};
constexpr std::tuple kAccidentCells{
    moment<TAccidentLogTableStartTimeColumn>(&StopRecord::startTime),
};

template <class Cell>
using ColumnOf = typename std::remove_cvref_t<Cell>::InColumn;

template <class Cells, class Record>
void writeCells(const Cells& cells, const Table& table, RowIndex row, const Record& record, std::int64_t shift) {
    const auto one = [&](const auto& cell) {
        table.column<ColumnOf<decltype(cell)>>().set(row, cell.of(record, shift));
    };
    std::apply([&](const auto&... cell) { (one(cell), ...); }, cells);
}

template <class Cells, class Record>
void compareCells(const Cells& cells, const Table& table, const RecordedCellsColumn* kept, RowIndex row,
                  const Record& record, std::int64_t shift, Comparison& c) {
    const auto one = [&](const auto& cell) {
        cell.compare(recordedAt(table.column<ColumnOf<decltype(cell)>>(), kept, row), cell.of(record, shift), c);
    };
    std::apply([&](const auto&... cell) { (one(cell), ...); }, cells);
}

/// The bands in force into an empty TABLE, from standstill upward: 0 to 0, then between the limits, the last one open.
template <class From, class To>
void fillBands(Table& table, const std::array<double, QUOBRIX_BAND_COUNT - 1>& limits) {
    table.insertRows(0, QUOBRIX_BAND_COUNT + 1);
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

/// A column that was read, and does not stand in for one that was not.
bool isThere(const Column& column) { return column.store() != nullptr; }

const RecordedCellsColumn& recordedCells(const TTripLogTable& table) {
    return table.column<TTripLogRecordedCellsColumn>();
}

/// How many, and when.
template <class C, class Times>
void compareEvents(const Events<C, Times>& events, const TTripLogTable& table, RowIndex row, const TripRecord& record,
                   Comparison& c) {
    const std::vector<std::uint32_t>& times = record.*events.member;
    if (c.same())
        c.growing(natural(recordedAt(table.column<C>(), &recordedCells(table), row)), times.size());
    if (!c.same())
        return;
    if (const auto* stored = valuesOf(table.column<Times>(), row))
        c.sequence(*stored, toSigned(times));
}

template <class C, class Times>
void writeEvents(const Events<C, Times>& events, TTripLogTable& table, RowIndex row, const TripRecord& record) {
    table.column<C>().set(row, static_cast<std::int32_t>((record.*events.member).size()));
    table.column<Times>().replaceObject(row).setAll(toSigned(record.*events.member));
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
        const SampledSeries& recorded = record.series[i];
        if (!isThere(stored))
            continue;
        c.require(stored.series().agreesWith(recorded));
        c.growing(stored.series().size(), recorded.size());
    }
}

} // namespace

std::int32_t shifted(std::int32_t time, std::int64_t shift) {
    constexpr std::int64_t kFirst = std::numeric_limits<std::int32_t>::min() + 1; // the smallest means "no time"
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{time} + shift, kFirst, std::numeric_limits<std::int32_t>::max()));
}

// The end, the seconds in the speed bands, the samples and the events grow while a trip lasts. The other figures follow
// from these and may be rounded anew by another library. From what costs little to what must be loaded.
Comparison TripRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    Comparison c;
    const RecordedCellsColumn& kept = recordedCells(t);
    const std::int32_t start = recordedAt(t.column<TTripLogStartTimeColumn>(), &kept, row);
    const auto duration = [start](std::int32_t end) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(std::int64_t{end} - start, 0));
    };
    c.growing(duration(recordedAt(t.column<TTripLogEndTimeColumn>(), &kept, row)), duration(shifted(r.endTime, shift)));
    c.vin(t.recorded(row).vin, r.origin.vin);
    if (c.differs)
        return c;
    if (const auto* stored = valuesOf(t.column<TTripLogTimePerSpeedBandColumnColumn>(), row)) {
        const std::vector<std::int32_t> seconds = secondsOf(r);
        for (std::size_t i = 0; i < seconds.size(); ++i)
            c.growing(i < stored->size() ? natural((*stored)[i]) : 0, natural(seconds[i]));
    }
    std::apply([&](const auto&... events) { (compareEvents(events, t, row, r, c), ...); }, kTripEvents);
    if (!c.same())
        return c;
    const ObjectColumnOf<TTripLogSampleTable>& recorded = t.column<TTripLogRecordedSampleTableColumn>();
    const ObjectColumnOf<TTripLogSampleTable>& shown = t.column<TTripLogSampleTableColumn>();
    const auto& tables = recorded.has(row) ? recorded : shown;
    if (const TTripLogSampleTable* samples = tables.object(row))
        compareSamples(*samples, r, c);
    else if (!tables.has(row)) // all that there is of it was lost, or it never had any
        c.growing(0, r.speedSamples.size());
    return c;
}

bool TripRows::completes(const TableType& table, RowIndex row, const Record& record) {
    const RecordedOrigin origin = table.recorded(row);
    return (!isVin(origin.vin) && isVin(record.origin.vin)) ||
           (Element<std::int32_t>::isNone(origin.driver) && record.driverId != 0);
}

void TripRows::complete(TableType& table, RowIndex row, const Record& record) {
    table.setRecorded(row, record.origin.vin, driverOf(record));
}

void TripRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
    writeCells(kTripCells, t, row, r, shift);
    t.column<TTripLogSamplingIntervalColumn>().set(row,
                                                   r.speedSamplingInterval == 0 ? kNoValue : r.speedSamplingInterval);
    t.column<TTripLogTimeInTopSpeedBandColumn>().set(row, static_cast<std::int32_t>(r.bandSeconds.back()));

    TTripLogSampleTable& samples = t.column<TTripLogSampleTableColumn>().replaceObject(row);
    samples.insertRows(0, r.speedSamples.size());
    samples.speed().setInterval(std::max(r.speedSamplingInterval, 1u));
    samples.speed().setAll(r.speedSamples);
    TTripLogParametersTable& parameters = t.column<TTripLogParametersTableColumn>().replaceObject(row);
    for (std::size_t i = 0; i < r.series.size(); ++i) {
        const SampledSeries& series = r.series[i];
        samples.series(i).setSeries(series);
        if (series.parameter() == 0)
            continue;
        const RowIndex at = parameters.rowCount();
        parameters.insertRows(at, 1);
        parameters.column<TTripLogParameterColumn>().set(at, series.parameter());
        parameters.column<TTripLogParameterSamplingIntervalColumn>().set(at, series.interval());
    }
    fillBands<TTripLogSpeedBandFromColumn, TTripLogSpeedBandToColumn>(
        t.column<TTripLogSpeedBandsTableColumn>().replaceObject(row), r.bandLimits);
    t.column<TTripLogTimePerSpeedBandColumnColumn>().replaceObject(row).setAll(secondsOf(r));
    std::apply([&](const auto&... events) { (writeEvents(events, t, row, r), ...); }, kTripEvents);
}

// A freeze frame does not grow; but a figure that was not reported at first may be later.
Comparison TroubleRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    Comparison c;
    const auto& kept = t.column<TTroubleLogRecordedCellsColumn>();
    c.vin(recordedAt(t.column<TTroubleLogVinColumn>(), &kept, row), r.origin.vin);
    compareCells(kTroubleContent, t, &kept, row, r, shift, c);
    return c;
}

void TroubleRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
    writeCells(kTroubleCells, t, row, r, shift);
    writeCells(kTroubleContent, t, row, r, shift);
}

std::string ActivityRows::code(const Record& record) { return std::to_string(storedCode(record.eventType)); }

std::string ActivityRows::codeAt(const TableType& table, RowIndex row) {
    return std::to_string(
        recordedAt(table.column<TSecurityLogEventTypeColumn>(), &table.column<TSecurityLogRecordedCellsColumn>(), row));
}

Comparison ActivityRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t) {
    Comparison c;
    c.vin(recordedAt(t.column<TSecurityLogVinColumn>(), &t.column<TSecurityLogRecordedCellsColumn>(), row),
          r.origin.vin);
    return c;
}

void ActivityRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
    writeCells(kActivityCells, t, row, r, shift);
}

// A stop is recorded when it is over; only its samples may be missing at first.
Comparison AccidentRows::compare(const TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    Comparison c;
    c.vin(t.column<TAccidentLogTableVinColumn>().at(row), r.origin.vin);
    const std::int32_t timestamp = t.column<TAccidentLogTableTimestampColumn>().at(row);
    c.require(timestamp == r.timestamp || timestamp == shifted(r.timestamp, shift)); // as older documents have it
    const auto& lists = t.column<TAccidentLogSpeedSamplesColumn>();
    if (const TAccidentLogSamplesColumn* samples = c.same() ? lists.object(row) : nullptr)
        c.require(samples->values().empty() || r.speedSamples.empty() || samples->interval() == r.samplingInterval);
    if (const auto* samples = c.same() ? valuesOf(lists, row) : nullptr)
        if (c.sequence(*samples, r.speedSamples); samples->empty()) // else they tell it
            c.figure(t.column<TAccidentLogTableMaximumSpeedColumn>().at(row), kph(r.maximumSpeed));
    return c;
}

void AccidentRows::fill(TableType& t, RowIndex row, const Record& r, std::int64_t shift) {
    complete(t, row, r);
    writeCells(kAccidentCells, t, row, r, shift);
    t.column<TAccidentLogTableTimestampColumn>().set(row, r.timestamp); // by the logger's own clock
    const double fastest = r.speedSamples.empty() ? r.maximumSpeed : std::ranges::max(r.speedSamples);
    t.column<TAccidentLogTableMaximumSpeedColumn>().set(row, kph(fastest));
    TAccidentLogSamplesColumn& samples = t.column<TAccidentLogSpeedSamplesColumn>().replaceObject(row);
    samples.setInterval(std::max(r.samplingInterval, 1u));
    samples.setAll(r.speedSamples);
    fillBands<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>(
        t.column<TAccidentLogSpeedBandsTableColumn>().replaceObject(row), r.bandLimits);
}

} // namespace quobrix
