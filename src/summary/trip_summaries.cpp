#include "summary/trip_summaries.h"

#include "model/parameter_thresholds.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

namespace quobrix {
namespace {

/// As zip and others compute it.
std::uint32_t crc32(ByteView bytes) {
    std::uint32_t crc = ~0u;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0u);
    }
    return ~crc;
}

/// By the first seconds of driving a trip is told from others, also while more of it is still being recorded.
std::uint32_t sumOf(const std::vector<std::uint8_t>& speeds) {
    constexpr int kMoving = 10;
    int moving = 0;
    for (std::size_t i = 0; i < speeds.size(); ++i)
        if (speeds[i] > 0 && ++moving == kMoving)
            return crc32(ByteView(speeds).first(i + 1));
    return 0;
}

template <class C>
float figure(const Table& trips, RowIndex row) {
    const Value value = trips.column<C>().value(row);
    const auto* real = std::get_if<double>(&value);
    return real && hasValue(*real) && std::isfinite(*real) ? static_cast<float>(*real) : 0;
}

template <class Count>
std::uint16_t countOf(const Table& trips, RowIndex row) {
    const auto& counts = trips.column<Count>();
    return counts.has(row) ? static_cast<std::uint16_t>(
                                 std::clamp<std::int32_t>(counts.at(row), 0, std::numeric_limits<std::uint16_t>::max()))
                           : std::uint16_t{0};
}

template <class Times>
std::uint32_t lastOf(const Table& trips, RowIndex row) {
    std::uint32_t last = 0;
    if (const TTripLogTimesColumn* times = trips.column<Times>().object(row))
        for (const std::int32_t time : times->values())
            last = std::max(last, static_cast<std::uint32_t>(std::max(time, 0)));
    return last;
}

/// COUNT samples (SAMPLE gives each in base units, kNoValue: none), each standing for INTERVAL (s), beside the
/// threshold of PARAMETER.
template <class Sample>
SummaryRecord::Slot slotOf(const Settings& settings, std::int32_t parameter, std::size_t count, std::uint32_t interval,
                           const Sample& sample) {
    SummaryRecord::Slot slot;
    if (parameter < 1 || parameter > kParameterCount || parameter == kFuelSystemStatusParameter)
        return slot;
    const double threshold = parameterThreshold(settings, parameter);
    if (threshold == 0 && parameterThresholdSpec(parameter).requirements.defaultValue == 0)
        return slot; // nobody has set one
    slot.used = 1;
    slot.parameter = static_cast<std::uint8_t>(parameter);
    slot.threshold = threshold;
    for (std::size_t i = 0; i < count; ++i) {
        const double value = sample(i);
        if (!hasValue(value) || !std::isfinite(value))
            continue;
        if (value > threshold) {
            slot.timeOver += interval;
            slot.highest = hasValue(slot.highest) ? std::max(slot.highest, value) : value;
        } else if (value < threshold) {
            slot.timeUnder += interval;
            slot.lowest = hasValue(slot.lowest) ? std::min(slot.lowest, value) : value;
        }
    }
    return slot;
}

/// What SERIES says of the air that the engine took in, each sample standing for its interval.
void addAir(SampledTrip& trip, const ParameterSeriesColumn& series) {
    if (series.parameter() != kAirFlowParameter)
        return;
    double air = 0;
    std::int64_t time = 0;
    for (std::size_t i = 0; i < series.sampleCount(); ++i)
        if (const double flow = series.metric(i); hasValue(flow)) {
            air += flow * series.interval();
            time += series.interval();
        }
    if (time > trip.airTime) { // should it have been recorded twice
        trip.air = air;
        trip.airTime = time;
    }
}

/// US gallons of petrol burnt with AIR (g): closed loop control keeps 14.7 times as much air as petrol, of which a
/// gallon is 6.17 lb.
double petrolBurntWith(double air) {
    constexpr double kAirToPetrol = 14.7, kGramsAGallon = 2'798.7;
    return air / kAirToPetrol / kGramsAGallon;
}

/// The part of a trip in which air flow must have been measured.
constexpr double kLeastMeasured = 0.9;

/// How many of TIMES, ascending, lie within.
std::uint32_t countWithin(const std::vector<std::int32_t>& times, std::int32_t from, std::int32_t through) {
    const auto first = std::ranges::lower_bound(times, from), end = std::ranges::upper_bound(times, through);
    return first < end ? static_cast<std::uint32_t>(end - first) : 0;
}

} // namespace

TripSummaries::TripSummaries(TQuobrixDocument& document, const Settings& settings, SampledTrips* known)
    : document_(document), settings_(settings), trips_(document.trips()), known_(known),
      troubles_(timesOf(logSpec(LogId::Troubles), document.log(logSpec(LogId::Troubles)))),
      accidents_(timesOf(logSpec(LogId::Accidents), document.log(logSpec(LogId::Accidents)))) {}

TripSummaries::Times TripSummaries::timesOf(const LogSpec& log, const Table* table) {
    Times result;
    if (!table)
        return result;
    const DateTimeColumn& times = log.timesOf(*table);
    const LoggerColumn& loggers = log.loggersOf(*table);
    for (RowIndex row = 0; row < table->rowCount(); ++row)
        if (times.has(row))
            result[loggers.at(row)].push_back(times.at(row));
    for (auto& [logger, of] : result)
        std::ranges::sort(of);
    return result;
}

std::optional<SampledTrip> TripSummaries::read(RowIndex row) const {
    const auto& sampleTables = trips_.column<TTripLogSampleTableColumn>();
    const auto& recordedTables = trips_.column<TTripLogRecordedSampleTableColumn>();
    const auto& bandTimes = trips_.column<TTripLogTimePerSpeedBandColumnColumn>();
    const auto unreadable = [&](const auto& column) { return column.has(row) && !column.object(row); };
    if (unreadable(sampleTables) || unreadable(recordedTables) || unreadable(bandTimes) ||
        unreadable(trips_.column<TTripLogHardBrakeTimesColumnColumn>()) ||
        unreadable(trips_.column<TTripLogPanicBrakeTimesColumnColumn>()) ||
        unreadable(trips_.column<TTripLogHardAccelerationTimesColumnColumn>()) ||
        unreadable(trips_.column<TTripLogPanicAccelerationTimesColumnColumn>()))
        return {};
    SampledTrip sampled;
    if (const TTripLogTimePerSpeedBandColumn* times = bandTimes.object(row)) { // idle, then from the lowest band
        const auto secondsIn = [&](RowIndex band) {
            return times->has(band) ? static_cast<float>(times->at(band)) : 0.0f;
        };
        sampled.idleTime = secondsIn(0);
        for (std::size_t band = 0; band < sampled.bandTimes.size(); ++band)
            sampled.bandTimes[band] = secondsIn(band + 1);
    }
    if (const TTripLogSampleTable* samples = sampleTables.object(row)) {
        const SpeedSamplesColumn& speeds = samples->speed();
        const std::size_t count = speeds.values().size();
        const std::uint32_t interval = std::max(speeds.interval(), 1u);
        for (std::size_t i = 1; i < count; ++i) {
            const auto change = static_cast<float>((speeds.speed(i) - speeds.speed(i - 1)) / interval);
            sampled.largestAcceleration = std::max(sampled.largestAcceleration, change);
            sampled.largestDeceleration = std::max(sampled.largestDeceleration, -change);
        }
        sampled.samples = static_cast<std::uint32_t>(count);
        sampled.parameters[SummaryRecord::kSpeedSlot] =
            slotOf(settings_, 1, count, interval, [&](std::size_t i) { return speeds.speed(i); });
        for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i) {
            const ParameterSeriesColumn& series = samples->series(i);
            sampled.parameters[i] = slotOf(settings_, series.parameter(), series.sampleCount(),
                                           static_cast<std::uint32_t>(series.interval()),
                                           [&](std::size_t sample) { return series.base(sample); });
            addAir(sampled, series);
        }
        const TTripLogSampleTable* recorded = recordedTables.object(row);
        sampled.samplesSum = sumOf((recorded ? recorded : samples)->speed().values());
    }
    sampled.lastEvents = {lastOf<TTripLogHardBrakeTimesColumnColumn>(trips_, row),
                          lastOf<TTripLogPanicBrakeTimesColumnColumn>(trips_, row),
                          lastOf<TTripLogHardAccelerationTimesColumnColumn>(trips_, row),
                          lastOf<TTripLogPanicAccelerationTimesColumnColumn>(trips_, row)};
    return sampled;
}

std::optional<SummaryRecord> TripSummaries::record(RowIndex row) const {
    std::optional<SampledTrip> sampled;
    if (known_ && known_->contains(row)) {
        sampled = known_->at(row);
    } else {
        // A year of driving would fill the memory: what nobody else has loaded goes again.
        std::vector<ObjectId> owned;
        ObjectStore* store = trips_.store();
        const auto own = [&](const ObjectColumn& column) {
            if (store && column.has(row) && !store->loaded(column.at(row)))
                owned.push_back(column.at(row));
        };
        own(trips_.column<TTripLogSampleTableColumn>());
        own(trips_.column<TTripLogRecordedSampleTableColumn>());
        own(trips_.column<TTripLogTimePerSpeedBandColumnColumn>());
        own(trips_.column<TTripLogHardBrakeTimesColumnColumn>());
        own(trips_.column<TTripLogPanicBrakeTimesColumnColumn>());
        own(trips_.column<TTripLogHardAccelerationTimesColumnColumn>());
        own(trips_.column<TTripLogPanicAccelerationTimesColumnColumn>());
        sampled = read(row);
        for (const ObjectId id : owned)
            store->unload(id);
        if (known_ && sampled)
            known_->insert_or_assign(row, *sampled);
    }
    if (!sampled)
        return {};
    SummaryRecord r;
    const std::string& logger = trips_.column<TTripLogQuobrixSerialNumberColumn>().at(row);
    const std::string& vin = trips_.column<TTripLogVinColumn>().at(row);
    const std::string driver = trips_.column<TTripLogDriverIDColumn>().namedKey(row);
    r.loggerName = SummaryText(document_.loggers().nameOf(logger));
    r.vin = SummaryText(vin);
    r.vehicleName = SummaryText(document_.vehicles().nameOf(vin));
    r.logger = SummaryText(logger);
    r.driverName = SummaryText(document_.drivers().nameOf(driver));
    r.driver = SummaryText(driver);

    const auto& starts = trips_.column<TTripLogStartTimeColumn>();
    const auto& ends = trips_.column<TTripLogEndTimeColumn>();
    r.start = starts.has(row) ? starts.at(row) : 0;
    r.end = ends.has(row) ? ends.at(row) : r.start;
    if (document_.vehicles().fuelOf(vin) == Fuel::Petrol && r.duration() > 0 &&
        static_cast<double>(sampled->airTime) >= kLeastMeasured * static_cast<double>(r.duration()))
        r.fuel = static_cast<float>(petrolBurntWith(sampled->air));
    r.distance = figure<TTripLogDistanceColumn>(trips_, row);
    r.averageSpeed = figure<TTripLogAverageSpeedColumn>(trips_, row);
    r.topSpeed = figure<TTripLogMaximumSpeedColumn>(trips_, row);
    const std::uint16_t counts[] = {
        countOf<TTripLogHardBrakesColumn>(trips_, row), countOf<TTripLogPanicBrakesColumn>(trips_, row),
        countOf<TTripLogHardAccelerationsColumn>(trips_, row), countOf<TTripLogPanicAccelerationsColumn>(trips_, row)};
    for (std::size_t kind = 0; kind < r.events.size(); ++kind)
        r.events[kind] = {counts[kind], sampled->lastEvents[kind]};
    const auto& topTimes = trips_.column<TTripLogTimeInTopSpeedBandColumn>();
    r.topBandTime = topTimes.has(row) ? static_cast<float>(topTimes.at(row)) : 0;
    r.idleTime = sampled->idleTime;
    r.bandTimes = sampled->bandTimes;
    r.largestAcceleration = sampled->largestAcceleration;
    r.largestDeceleration = sampled->largestDeceleration;
    r.parameters = sampled->parameters;
    r.samplesSum = sampled->samplesSum;
    r.samples = sampled->samples;

    const auto within = [&](const Times& times) {
        const auto of = times.find(logger);
        return of == times.end() ? 0 : countWithin(of->second, r.start, r.end);
    };
    r.mark = SummaryRecord::kOurs;
    r.trips = 1;
    r.troubles = within(troubles_);
    r.accidents = within(accidents_);
    r.recordedStart = trips_.column<TTripLogRecordColumn>().at(row).loggerTime;
    return r;
}

std::vector<SummaryRecord> TripSummaries::records() const {
    std::vector<SummaryRecord> all;
    for (RowIndex row = 0; row < count(); ++row)
        if (const std::optional<SummaryRecord> each = record(row))
            all.push_back(*each);
    return all;
}

std::size_t countedAmong(const SummaryRows& records, const TTripLogTable& trips, std::span<const RowIndex> rows) {
    std::set<std::pair<std::string, std::int32_t>> known;
    std::vector<std::int32_t> starts;
    for (const RowIndex row : rows) {
        const SummaryText logger(trips.column<TTripLogQuobrixSerialNumberColumn>().at(row));
        known.emplace(logger.view(), trips.column<TTripLogRecordColumn>().at(row).loggerTime);
        starts.push_back(trips.column<TTripLogStartTimeColumn>().at(row));
    }
    std::ranges::sort(starts);
    return static_cast<std::size_t>(std::ranges::count_if(records, [&](const SummaryRecord* record) {
        if (record->ours())
            return known.contains({std::string(record->logger.view()), record->recordedStart});
        const auto start = std::ranges::lower_bound(starts, record->start);
        return start != starts.end() && *start <= record->end;
    }));
}

} // namespace quobrix
