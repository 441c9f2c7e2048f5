#include "device/records.h"

#include "model/logs.h"
#include "model/serial_number.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace quobrix {
namespace {

// What no vehicle reaches. A vehicle tells its speed in one byte of whole km/h (SAE J1979, PID 0D); the figures that
// the logger makes of it are rounded at most to the next one.
constexpr double kSpeedLimit = 256; // km/h

/// Reads one record. The records are C structures of this very process, so the fixed part is copied as it is; nothing
/// in it is believed before it has been checked. The first complaint is kept, and all that follows is empty.
class RecordReader {
public:
    explicit RecordReader(ByteView bytes) : bytes_(bytes) {}

    template <class Record>
    Record fixedPart() {
        static_assert(std::is_trivially_copyable_v<Record>);
        Record record{};
        fixedSize_ = sizeof(Record);
        require(bytes_.size() >= sizeof(Record), SourceText("it is shorter than its kind"));
        if (good())
            std::memcpy(&record, bytes_.data(), sizeof(Record));
        return record;
    }

    void require(bool condition, SourceText complaint) {
        if (!condition && good())
            complaint_ = complaint;
    }

    template <std::size_t N>
    std::string text(const char (&field)[N], SourceText complaint) {
        const char* end = std::find(field, field + N, '\0');
        const bool printable = std::all_of(field, end, [](char c) { return c >= ' ' && c <= '~'; });
        require(end != field + N && printable, complaint);
        return good() ? std::string(field, end) : std::string();
    }

    template <class Record>
    RecordOrigin origin(const Record& record) {
        RecordOrigin origin;
        origin.serialNumber = text(record.serialNumber, SourceText("its serial number is not a text"));
        require(isSerialNumber(origin.serialNumber), SourceText("its serial number is malformed"));
        origin.vin = text(record.vin, SourceText("its VIN is not a text"));
        return origin;
    }

    /// The smallest number means "no time" wherever times are kept.
    static std::int32_t time(std::int32_t told) { return std::max(told, std::numeric_limits<std::int32_t>::min() + 1); }

    void finite(double value, SourceText complaint) { require(std::isfinite(value), complaint); }
    /// A figure that every record of the kind has.
    void measured(double value, SourceText complaint) { require(std::isfinite(value) && value >= 0, complaint); }
    /// The highest speed, km/h.
    void topSpeed(double value) {
        measured(value, SourceText("its maximum speed is not a speed"));
        require(value < kSpeedLimit, SourceText("its maximum speed is beyond what a vehicle can tell (255 km/h)"));
    }

    template <class Element>
    std::vector<Element> array(const QuobrixArray& place) {
        if (place.count == 0)
            return {};
        require(place.offset >= fixedSize_ && place.offset <= bytes_.size() && place.offset % sizeof(Element) == 0 &&
                    place.count <= (bytes_.size() - place.offset) / sizeof(Element),
                SourceText("an array lies outside of it"));
        if (!good())
            return {};
        std::vector<Element> elements(place.count);
        std::memcpy(elements.data(), bytes_.data() + place.offset, place.count * sizeof(Element));
        return elements;
    }

    /// COUNT samples an INTERVAL apart, the first at the start, fit into DURATION; all in s.
    void fits(std::size_t count, std::int64_t interval, std::int64_t duration) {
        if (count == 0)
            return;
        require(interval > 0, SourceText("its sampling interval is not positive"));
        require(static_cast<std::int64_t>(count - 1) <= duration / std::max<std::int64_t>(interval, 1),
                SourceText("it has more samples than its duration holds"));
    }

    bool good() const { return complaint_.empty(); }
    SourceText complaint() const { return complaint_; }

private:
    ByteView bytes_;
    std::size_t fixedSize_ = 0;
    SourceText complaint_;
};

std::vector<std::uint32_t> readEvents(RecordReader& in, const QuobrixArray& place, std::int64_t duration) {
    std::vector<std::uint32_t> events = in.array<std::uint32_t>(place);
    in.require(std::is_sorted(events.begin(), events.end()), SourceText("its events are not in order of time"));
    in.require(events.empty() || events.back() <= duration, SourceText("an event lies after its end"));
    return events;
}

SampledSeries readSeries(RecordReader& in, const QuobrixParameterSeries& raw, std::int64_t duration) {
    if (raw.parameter == 0)
        return {};
    in.require(raw.parameter >= 1 && raw.parameter <= 24, SourceText("a parameter is unknown"));
    in.require(raw.twoValues <= 1, SourceText("a parameter series is malformed"));
    const std::vector<double> samples = in.array<double>(raw.samples);
    in.require(std::ranges::all_of(samples, [](double sample) { return std::isfinite(sample); }),
               SourceText("a parameter sample is not a number"));
    in.fits(samples.size(), raw.samplingInterval, duration);
    return {raw.parameter, raw.samplingInterval, raw.twoValues == 1, samples};
}

template <std::size_t N, class Value>
std::array<Value, N> copyOf(const Value (&values)[N]) {
    std::array<Value, N> result;
    std::copy(std::begin(values), std::end(values), result.begin());
    return result;
}

std::int64_t durationOf(RecordReader& in, std::int32_t start, std::int32_t end) {
    in.require(end >= start, SourceText("it ends before it starts"));
    return std::int64_t{end} - start;
}

TripRecord readTrip(RecordReader& in) {
    const auto raw = in.fixedPart<QuobrixTripRecord>();
    TripRecord trip;
    trip.origin = in.origin(raw);
    trip.driverId = raw.driverId;
    trip.startTime = in.time(raw.startTime);
    trip.endTime = in.time(raw.endTime);
    const std::int64_t duration = durationOf(in, raw.startTime, raw.endTime);
    in.require(raw.disconnected <= 1, SourceText("its disconnection mark is malformed"));
    trip.disconnected = raw.disconnected == 1;
    // The last sample of a trip may count as a whole sampling interval, of at most a minute.
    const std::int64_t longest = duration + std::clamp<std::int64_t>(raw.speedSamplingInterval, 1, 60); // s
    in.measured(trip.distance = raw.distance, SourceText("its distance is not a distance"));
    in.require(trip.distance <= static_cast<double>(longest) * kSpeedLimit / 3.6,
               SourceText("its distance is more than a vehicle covers in its duration"));
    in.topSpeed(trip.maximumSpeed = raw.maximumSpeed);
    in.finite(trip.hardBrakeThreshold = raw.hardBrakeThreshold, SourceText("a threshold is not a number"));
    in.finite(trip.extremeBrakeThreshold = raw.extremeBrakeThreshold, SourceText("a threshold is not a number"));
    in.finite(trip.hardAccelerationThreshold = raw.hardAccelerationThreshold,
              SourceText("a threshold is not a number"));
    in.finite(trip.extremeAccelerationThreshold = raw.extremeAccelerationThreshold,
              SourceText("a threshold is not a number"));
    for (const double limit : trip.bandLimits = copyOf(raw.bandLimit))
        in.measured(limit, SourceText("a speed-band limit is not a speed"));
    trip.idleSeconds = raw.idleSeconds;
    trip.bandSeconds = copyOf(raw.bandSeconds);
    in.require(std::accumulate(trip.bandSeconds.begin(), trip.bandSeconds.end(), std::int64_t{trip.idleSeconds}) <=
                   longest,
               SourceText("its seconds at standstill and in the speed bands are more than its duration"));
    trip.speedSamplingInterval = raw.speedSamplingInterval;
    trip.speedSamples = in.array<std::uint8_t>(raw.speedSamples);
    in.fits(trip.speedSamples.size(), trip.speedSamplingInterval, duration);
    trip.hardBrakes = readEvents(in, raw.hardBrakes, duration);
    trip.extremeBrakes = readEvents(in, raw.extremeBrakes, duration);
    trip.hardAccelerations = readEvents(in, raw.hardAccelerations, duration);
    trip.extremeAccelerations = readEvents(in, raw.extremeAccelerations, duration);
    for (std::size_t i = 0; i < trip.series.size(); ++i)
        trip.series[i] = readSeries(in, raw.series[i], duration);
    return trip;
}

/// A text of which every character can be shown, whatever the logger has told: to its end or that of FIELD.
template <std::size_t N>
std::string printable(const char (&field)[N]) {
    std::string text(field, std::find(field, field + N, '\0'));
    std::ranges::replace_if(
        text, [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

// What the code, or a status, stands for is asked when it is shown, and a freeze-frame figure that can be none counts
// as not told: a record that was refused for it would be lost when the logger is cleared. The same goes for events of
// the activity log.
TroubleRecord readTrouble(RecordReader& in) {
    const auto raw = in.fixedPart<QuobrixTroubleRecord>();
    TroubleRecord trouble;
    trouble.origin = in.origin(raw);
    trouble.time = in.time(raw.time);
    trouble.code = printable(raw.code);
    trouble.fuelSystemStatus = copyOf(raw.fuelSystemStatus);
    const auto figure = [](double told) { return std::isfinite(told) ? told : kNoValue; };
    trouble.calculatedLoad = figure(raw.calculatedLoad);
    trouble.coolantTemperature = figure(raw.coolantTemperature);
    for (std::size_t bank = 0; bank < trouble.shortTermFuelTrim.size(); ++bank) {
        trouble.shortTermFuelTrim[bank] = figure(raw.shortTermFuelTrim[bank]);
        trouble.longTermFuelTrim[bank] = figure(raw.longTermFuelTrim[bank]);
    }
    trouble.fuelPressure = figure(raw.fuelPressure);
    trouble.intakeManifoldPressure = figure(raw.intakeManifoldPressure);
    trouble.engineSpeed = figure(raw.engineSpeed);
    trouble.vehicleSpeed = raw.vehicleSpeed < kSpeedLimit ? figure(raw.vehicleSpeed) : kNoValue;
    return trouble;
}

ActivityRecord readActivity(RecordReader& in) {
    const auto raw = in.fixedPart<QuobrixActivityRecord>();
    return {in.origin(raw), in.time(raw.time), raw.eventType};
}

StopRecord readStop(RecordReader& in) {
    const auto raw = in.fixedPart<QuobrixStopRecord>();
    StopRecord stop;
    stop.origin = in.origin(raw);
    stop.startTime = in.time(raw.startTime);
    stop.timestamp = in.time(raw.timestamp);
    durationOf(in, raw.startTime, raw.timestamp);
    in.topSpeed(stop.maximumSpeed = raw.maximumSpeed);
    for (const double limit : stop.bandLimits = copyOf(raw.bandLimit))
        in.measured(limit, SourceText("a speed-band limit is not a speed"));
    stop.samplingInterval = raw.samplingInterval;
    return stop;
}

static_assert(static_cast<int>(RecordKind::StopSamples) == QUOBRIX_RECORD_STOP_SAMPLES, "kinds are numbered alike");
RecordKind kindOf(std::uint32_t kind) {
    return kind <= QUOBRIX_RECORD_STOP_SAMPLES ? static_cast<RecordKind>(kind) : RecordKind::Unknown;
}

template <class Head>
Head headOf(ByteView bytes) {
    Head head{};
    if (bytes.size() >= sizeof(Head))
        std::memcpy(&head, bytes.data(), sizeof(Head));
    return head;
}

/// Shows VISIT(kind, index, reader) every record of SET, and lists those that it complained about.
template <class Visit>
void forEachRecord(ByteView set, LogRecords& records, Visit visit) {
    if (set.empty())
        return;
    const auto head = headOf<QuobrixRecordSet>(set);
    if (set.size() >= sizeof head && head.size == 0 && head.recordCount == 0)
        return; // an empty set whose head was left blank
    // A set too short for its own head reads as one that breaks off before its first record.
    ByteView rest = set.first(std::min<std::size_t>(head.size, set.size()));
    rest = rest.subspan(std::min(sizeof(QuobrixRecordSet), rest.size()));
    const std::uint32_t count = head.size < sizeof(QuobrixRecordSet) ? 1 : head.recordCount;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto record = headOf<QuobrixRecordHead>(rest);
        const RecordKind kind = kindOf(record.kind);
        if (record.size < sizeof(QuobrixRecordHead) || record.size % 8 != 0 || record.size > rest.size()) {
            // Where the next record begins is unknown; how many there are is believed as far as they can be there.
            const std::size_t possible = std::max<std::size_t>(rest.size() / sizeof(QuobrixRecordHead), 1);
            records.refused.push_back({kind, i + 1,
                                       static_cast<std::uint32_t>(std::min<std::size_t>(count - i, possible)),
                                       text(TextId::RecordSetDamaged)});
            return;
        }
        RecordReader in(rest.first(record.size));
        visit(kind, i, in);
        if (!in.good())
            records.refused.push_back({kind, i + 1, 1, text(in.complaint())});
        rest = rest.subspan(record.size);
    }
    if (!rest.empty()) // bytes of records that are not counted
        records.refused.push_back({RecordKind::Unknown, count + 1, 1, text(TextId::RecordSetDamaged)});
}

/// Adds RECORD, just read through IN, unless there was a complaint.
template <class Record>
void keep(const RecordReader& in, Record record, std::vector<Record>& records) {
    if (in.good())
        records.push_back(std::move(record));
}

struct RecordWords {
    SourceText one, several;
};

RecordWords wordsOf(RecordKind kind) {
    const auto ofLog = [](LogId id) { return RecordWords{logSpec(id).record, logSpec(id).records}; };
    switch (kind) {
    case RecordKind::Trip:
        return ofLog(LogId::Trips);
    case RecordKind::Trouble:
        return ofLog(LogId::Troubles);
    case RecordKind::Activity:
        return ofLog(LogId::Activity);
    case RecordKind::Stop:
        return ofLog(LogId::Accidents);
    case RecordKind::StopSamples:
        return {SourceText("set of stop samples"), SourceText("sets of stop samples")};
    case RecordKind::Unknown:
        break;
    }
    return {SourceText("record"), SourceText("records")};
}

constexpr SourceText kMisplaced("a record of its kind does not belong here");

} // namespace

std::string recordKindName(RecordKind kind) { return text(wordsOf(kind).one); }

std::string recordCountText(RecordKind kind, std::uint64_t count) {
    const RecordWords words = wordsOf(kind);
    return counted(words.one, words.several, count);
}

std::uint64_t refusedCount(const std::vector<RefusedRecords>& refused) {
    std::uint64_t count = 0;
    for (const RefusedRecords& some : refused)
        count += some.count;
    return count;
}

void parseMainRecords(ByteView trips, ByteView troublesAndActivity, LogRecords& records) {
    forEachRecord(trips, records, [&](RecordKind kind, std::size_t, RecordReader& in) {
        in.require(kind == RecordKind::Trip, kMisplaced);
        keep(in, readTrip(in), records.trips);
    });
    forEachRecord(troublesAndActivity, records, [&](RecordKind kind, std::size_t, RecordReader& in) {
        in.require(kind == RecordKind::Trouble || kind == RecordKind::Activity, kMisplaced);
        if (kind == RecordKind::Trouble)
            keep(in, readTrouble(in), records.troubles);
        else
            keep(in, readActivity(in), records.activities);
    });
}

void parseAccidentRecords(ByteView stops, ByteView samples, LogRecords& records) {
    constexpr std::size_t kRefused = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> places; // of each stop of the set in records.stops
    forEachRecord(stops, records, [&](RecordKind kind, std::size_t, RecordReader& in) {
        in.require(kind == RecordKind::Stop, kMisplaced);
        keep(in, readStop(in), records.stops);
        places.push_back(in.good() ? records.stops.size() - 1 : kRefused);
    });
    forEachRecord(samples, records, [&](RecordKind kind, std::size_t, RecordReader& in) {
        in.require(kind == RecordKind::StopSamples, kMisplaced);
        const auto raw = in.fixedPart<QuobrixStopSamplesRecord>();
        in.require(raw.stop < places.size(), SourceText("its stop is missing"));
        if (!in.good() || places[raw.stop] == kRefused)
            return; // samples go with their stop
        StopRecord& stop = records.stops[places[raw.stop]];
        in.require(stop.speedSamples.empty(), SourceText("its stop has samples already"));
        auto speeds = in.array<std::uint8_t>(raw.speeds);
        in.fits(speeds.size(), stop.samplingInterval, std::int64_t{stop.timestamp} - stop.startTime);
        if (in.good())
            stop.speedSamples = std::move(speeds);
    });
}

LogRecords parseRecords(const RecordBlocks& blocks) {
    LogRecords records;
    records.unreadable = blocks.unreadable;
    parseMainRecords(bytesOf(blocks.trips), bytesOf(blocks.troublesAndActivity), records);
    for (const RecordBlocks::Accidents& accidents : blocks.accidents)
        parseAccidentRecords(bytesOf(accidents.stops), bytesOf(accidents.samples), records);
    return records;
}

} // namespace quobrix
