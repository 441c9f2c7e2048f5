#include "model/trip_log.h"

#include "model/logs.h"
#include "model/names.h"
#include "texts/text.h"
#include "units/unit_system.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kTripColumns[] = {
#define COLUMN(Name, ...) &Name::kType,
#include "model/trip_log.def"
#undef COLUMN
};
static_assert(std::size(kTripColumns) == 45);

template <class C>
C& sibling(const Column& column) {
    return column.table()->column<C>();
}

} // namespace

const TableSpec& TTripLogTable::spec() const {
    static const TableSpec spec{kType, kTripColumns, {}, logSpec(LogId::Trips).title, {.removable = true}};
    return spec;
}

RecordedOrigin TTripLogTable::recorded(RowIndex row) const {
    const RecordedOrigin& kept = column<TTripLogRecordedOriginColumn>().at(row);
    return kept.known
               ? kept
               : RecordedOrigin{true, column<TTripLogVinColumn>().at(row), column<TTripLogDriverIDColumn>().at(row)};
}

void TTripLogTable::setRecorded(RowIndex row, const std::string& vin, std::int32_t driver) {
    const RecordedOrigin before = recorded(row);
    RecordedOrigin now = before;
    if (isVin(vin) || now.vin.empty())
        now.vin = vin;
    if (!Element<std::int32_t>::isNone(driver))
        now.driver = driver;
    auto& vins = column<TTripLogVinColumn>();
    if (vins.at(row) == before.vin)
        vins.set(row, now.vin);
    auto& drivers = column<TTripLogDriverIDColumn>();
    if (drivers.at(row) == before.driver)
        drivers.set(row, now.driver);
    column<TTripLogRecordedOriginColumn>().set(row, std::move(now));
}

void TTripLogTable::keepRecorded(RowIndex row) {
    if (RecordedOrigin origin = recorded(row); origin != column<TTripLogRecordedOriginColumn>().at(row))
        column<TTripLogRecordedOriginColumn>().set(row, std::move(origin));
}

bool TTripLogTable::hasOtherParts(RowIndex row) const {
    return column<TTripLogRecordedSampleTableColumn>().has(row) ||
           column<TTripLogRecordedSpeedBandsTableColumn>().has(row);
}

const TableSpec& TTripLogSampleTable::spec() const {
    static constexpr TableSpec spec{
        kType,
        kTypesOf<TTripLogSampleRecordColumn, TTripLogSampleSpeedColumn, TTripLogParameter1Column,
                 TTripLogParameter2Column, TTripLogParameter3Column, TTripLogParameter4Column>,
        kTypesOf<TTripLogSampleElapsedTimeColumn>, SourceText("Trip Samples")};
    return spec;
}

ParameterSeriesColumn& TTripLogSampleTable::series(std::size_t series) const {
    return static_cast<ParameterSeriesColumn&>(column(2 + series));
}

const TableSpec& TTripLogSpeedBandsTable::spec() const {
    static constexpr TableSpec spec{
        kType, kTypesOf<TTripLogSpeedBandFromColumn, TTripLogSpeedBandToColumn>, {}, SourceText("Trip Speed Bands")};
    return spec;
}

const TableSpec& TTripLogParametersTable::spec() const {
    static constexpr TableSpec spec{kType,
                                    kTypesOf<TTripLogParameterColumn, TTripLogParameterSamplingIntervalColumn>,
                                    {},
                                    SourceText("Trip Parameters")};
    return spec;
}

Value SampleElapsedTimeColumn::value(RowIndex row) const {
    return static_cast<std::int64_t>(row) * sibling<TTripLogSampleSpeedColumn>(*this).interval();
}

Value TripVinColumn::value(RowIndex row) const { return sibling<TTripLogVinColumn>(*this).at(row); }

std::string_view TripVinColumn::textView(RowIndex row, const TextContext&, TextBuffer&) const {
    return sibling<TTripLogVinColumn>(*this).at(row);
}

std::string_view TripEndTimeColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const std::string_view time = DateTimeColumn::textView(row, context, buffer);
    if (!sibling<TTripLogDisconnectedDuringTripColumn>(*this).at(row))
        return time;
    buffer.words = quobrix::text(TextId::DisconnectedDuringTrip, std::string(time));
    return buffer.words;
}

Value TripDurationColumn::value(RowIndex row) const {
    const auto seconds = between(sibling<TTripLogStartTimeColumn>(*this), sibling<TTripLogEndTimeColumn>(*this), row);
    return seconds ? Value(*seconds) : Value();
}

Value TripAverageSpeedColumn::value(RowIndex row) const {
    const Value seconds = sibling<TTripLogDurationColumn>(*this).value(row);
    const auto& distance = sibling<TTripLogDistanceColumn>(*this);
    if (!distance.has(row) || !std::holds_alternative<std::int64_t>(seconds) || std::get<std::int64_t>(seconds) <= 0)
        return {};
    return distance.at(row) / static_cast<double>(std::get<std::int64_t>(seconds));
}

std::string_view TripAverageSpeedColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const Value speed = value(row);
    return std::holds_alternative<double>(speed)
               ? context.units.formatValueWithUnits(spec().unit, std::get<double>(speed), buffer.figure)
               : "";
}

const PersistentType* TripDurationAgainColumn::repeats() const { return &TTripLogDurationColumn::kType; }
#define COUNT(Name, Source)                                                                                            \
    const PersistentType* Name::repeats() const { return &Source::kType; }
COUNT(TripHardBrakesColumn, TTripLogHardBrakesColumn)
COUNT(TripPanicBrakesColumn, TTripLogPanicBrakesColumn)
COUNT(TripHardAccelerationsColumn, TTripLogHardAccelerationsColumn)
COUNT(TripPanicAccelerationsColumn, TTripLogPanicAccelerationsColumn)
#undef COUNT

} // namespace quobrix
