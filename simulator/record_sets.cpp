#include "simulator/record_sets.h"

#include "simulator/fault.h"
#include "simulator/log_image.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace quobrix::sim {

namespace {

constexpr std::size_t kAlignment = 8;

template <std::size_t N>
void copyText(char (&target)[N], const std::string& text) {
    const std::size_t size = std::min(text.size(), N - 1);
    std::memcpy(target, text.data(), size);
    std::memset(target + size, 0, N - size);
}

template <class Values, class T, std::size_t N>
void copyValues(T (&target)[N], const Values& values) {
    std::copy_n(values.begin(), N, target);
}

/// Places an array behind a record of RECORD_SIZE bytes and what ARRAYS holds already.
template <class T>
QuobrixArray place(Bytes& arrays, std::size_t recordSize, const std::vector<T>& values) {
    static_assert(kAlignment % sizeof(T) == 0);
    arrays.resize((arrays.size() + sizeof(T) - 1) / sizeof(T) * sizeof(T));
    const QuobrixArray array{static_cast<std::uint32_t>(recordSize + arrays.size()),
                             static_cast<std::uint32_t>(values.size())};
    const std::size_t position = arrays.size();
    arrays.resize(position + values.size() * sizeof(T));
    if (!values.empty())
        std::memcpy(arrays.data() + position, values.data(), values.size() * sizeof(T));
    return array;
}

Error misplaced() { return fault(ErrorKind::Corrupt, "the log image holds a record of another kind of image"); }

/// Hands the image's serial number and each of its records to TAKE, which says whether the record belongs there.
template <class F>
Result<void> eachRecord(ByteView bytes, F take) {
    const auto image = openImage(bytes);
    if (!image)
        return image.error();
    const auto records = splitRecords(image->records);
    if (!records)
        return records.error();
    for (const EncodedRecord& encoded : *records) {
        const auto record = readRecord(encoded);
        if (!record)
            return record.error();
        if (!take(image->serial, *record))
            return misplaced();
    }
    return {};
}

} // namespace

RecordSetBuilder::RecordSetBuilder() : bytes_(sizeof(QuobrixRecordSet)) {}

template <class Record>
void RecordSetBuilder::append(const Record& record, Bytes arrays) {
    static_assert(sizeof(Record) % kAlignment == 0);
    arrays.resize((arrays.size() + kAlignment - 1) / kAlignment * kAlignment);
    Record head = record;
    head.head.size = static_cast<std::uint32_t>(sizeof(Record) + arrays.size());
    const auto* raw = reinterpret_cast<const std::uint8_t*>(&head);
    bytes_.insert(bytes_.end(), raw, raw + sizeof head);
    bytes_.insert(bytes_.end(), arrays.begin(), arrays.end());
    ++count_;
}

void RecordSetBuilder::add(const std::string& serial, const Trip& trip) {
    QuobrixTripRecord record{};
    Bytes arrays;
    const auto placed = [&arrays](const auto& values) { return place(arrays, sizeof record, values); };
    record.head.kind = QUOBRIX_RECORD_TRIP;
    copyText(record.serialNumber, serial);
    copyText(record.vin, trip.vin);
    record.driverId = trip.driver;
    record.startTime = trip.start;
    record.endTime = trip.end;
    record.disconnected = trip.disconnected ? 1 : 0;
    record.distance = trip.distance;
    record.maximumSpeed = trip.maximumSpeed;
    record.hardBrakeThreshold = trip.threshold[HardBrake];
    record.extremeBrakeThreshold = trip.threshold[ExtremeBrake];
    record.hardAccelerationThreshold = trip.threshold[HardAcceleration];
    record.extremeAccelerationThreshold = trip.threshold[ExtremeAcceleration];
    copyValues(record.bandLimit, trip.bandLimit);
    record.idleSeconds = trip.idleSeconds;
    copyValues(record.bandSeconds, trip.bandSeconds);
    record.speedSamplingInterval = trip.speedInterval;
    for (std::size_t i = 0; i < trip.series.size(); ++i) {
        const Series& series = trip.series[i];
        record.series[i] = {series.parameter, series.interval, series.twoValues ? 1u : 0u, 0, placed(series.samples)};
    }
    record.hardBrakes = placed(trip.events[HardBrake]);
    record.extremeBrakes = placed(trip.events[ExtremeBrake]);
    record.hardAccelerations = placed(trip.events[HardAcceleration]);
    record.extremeAccelerations = placed(trip.events[ExtremeAcceleration]);
    record.speedSamples = placed(trip.speeds);
    append(record, std::move(arrays));
}

void RecordSetBuilder::add(const std::string& serial, const Trouble& trouble) {
    QuobrixTroubleRecord record{};
    record.head.kind = QUOBRIX_RECORD_TROUBLE;
    copyText(record.serialNumber, serial);
    copyText(record.vin, trouble.vin);
    record.time = trouble.time;
    copyText(record.code, trouble.code);
    copyValues(record.fuelSystemStatus, trouble.fuelSystem);
    record.calculatedLoad = trouble.load;
    record.coolantTemperature = trouble.coolant;
    copyValues(record.shortTermFuelTrim, trouble.shortTrim);
    copyValues(record.longTermFuelTrim, trouble.longTrim);
    record.fuelPressure = trouble.fuelPressure;
    record.intakeManifoldPressure = trouble.manifoldPressure;
    record.engineSpeed = trouble.engineSpeed;
    record.vehicleSpeed = trouble.vehicleSpeed;
    append(record, {});
}

void RecordSetBuilder::add(const std::string& serial, const Activity& activity) {
    QuobrixActivityRecord record{};
    record.head.kind = QUOBRIX_RECORD_ACTIVITY;
    copyText(record.serialNumber, serial);
    copyText(record.vin, activity.vin);
    record.time = activity.time;
    record.eventType = activity.event;
    append(record, {});
}

void RecordSetBuilder::add(const std::string& serial, const Stop& stop) {
    QuobrixStopRecord record{};
    record.head.kind = QUOBRIX_RECORD_STOP;
    copyText(record.serialNumber, serial);
    copyText(record.vin, stop.vin);
    record.startTime = stop.start;
    record.timestamp = stop.standstill;
    record.maximumSpeed = stop.maximumSpeed;
    copyValues(record.bandLimit, stop.bandLimit);
    record.samplingInterval = stop.interval;
    append(record, {});
}

void RecordSetBuilder::addSamples(std::uint32_t index, const Stop& stop) {
    QuobrixStopSamplesRecord record{};
    Bytes arrays;
    record.head.kind = QUOBRIX_RECORD_STOP_SAMPLES;
    record.stop = index;
    record.speeds = place(arrays, sizeof record, stop.speeds);
    append(record, std::move(arrays));
}

QuobrixRecordSet* RecordSetBuilder::release() const {
    if (bytes_.size() > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    void* const block = std::malloc(bytes_.size());
    if (!block)
        return nullptr;
    std::memcpy(block, bytes_.data(), bytes_.size());
    const QuobrixRecordSet head{static_cast<std::uint32_t>(bytes_.size()), count_};
    std::memcpy(block, &head, sizeof head);
    return static_cast<QuobrixRecordSet*>(block);
}

Result<RecordSets> mainRecordSets(ByteView image) {
    RecordSets sets;
    QUOBRIX_TRY(eachRecord(image, [&sets](const std::string& serial, const LogRecord& record) {
        if (const auto* trip = std::get_if<Trip>(&record))
            sets.first.add(serial, *trip);
        else if (const auto* trouble = std::get_if<Trouble>(&record))
            sets.second.add(serial, *trouble);
        else if (const auto* activity = std::get_if<Activity>(&record))
            sets.second.add(serial, *activity);
        else
            return false;
        return true;
    }));
    return sets;
}

Result<RecordSets> accidentRecordSets(ByteView image) {
    RecordSets sets;
    std::uint32_t index = 0;
    QUOBRIX_TRY(eachRecord(image, [&](const std::string& serial, const LogRecord& record) {
        const auto* stop = std::get_if<Stop>(&record);
        if (!stop)
            return false;
        sets.first.add(serial, *stop);
        sets.second.addSamples(index++, *stop);
        return true;
    }));
    return sets;
}

} // namespace quobrix::sim
