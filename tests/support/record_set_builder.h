#pragma once

#include "base/bytes.h"
#include "device/quobrix.h"

#include <cstdio>
#include <cstring>

namespace quobrix::testing {

/// Record sets as a logger library hands them over, made by hand so that tests can damage them.
class RecordSetBytes {
public:
    /// Adds RECORD with TAIL, its arrays, behind it; the length is filled in.
    template <class Record>
    RecordSetBytes& add(Record record, Bytes tail = {}) {
        tail.resize((tail.size() + 7) / 8 * 8);
        record.head.size = static_cast<std::uint32_t>(sizeof record + tail.size());
        const auto* raw = reinterpret_cast<const std::uint8_t*>(&record);
        records_.insert(records_.end(), raw, raw + sizeof record);
        records_.insert(records_.end(), tail.begin(), tail.end());
        ++count_;
        return *this;
    }

    Bytes take() const {
        const QuobrixRecordSet head{static_cast<std::uint32_t>(sizeof head + records_.size()), count_};
        Bytes set(sizeof head);
        std::memcpy(set.data(), &head, sizeof head);
        set.insert(set.end(), records_.begin(), records_.end());
        return set;
    }

private:
    Bytes records_;
    std::uint32_t count_ = 0;
};

template <class Record>
Record recordOf(std::uint32_t kind) {
    Record record{};
    record.head.kind = kind;
    std::snprintf(record.serialNumber, sizeof record.serialNumber, "K-0042-B");
    std::snprintf(record.vin, sizeof record.vin, "WVWZZZ1KZAW000001");
    return record;
}

/// Two seconds long; three bytes of speed samples are expected behind it.
inline QuobrixTripRecord plainTrip() {
    auto trip = recordOf<QuobrixTripRecord>(QUOBRIX_RECORD_TRIP);
    trip.startTime = 1'700'000'000;
    trip.endTime = trip.startTime + 2;
    trip.distance = 11.1;
    trip.maximumSpeed = 30;
    trip.speedSamplingInterval = 1;
    trip.speedSamples = {sizeof trip, 3};
    return trip;
}

inline QuobrixTroubleRecord plainTrouble() {
    auto trouble = recordOf<QuobrixTroubleRecord>(QUOBRIX_RECORD_TROUBLE);
    trouble.time = 1'700'000'000;
    std::snprintf(trouble.code, sizeof trouble.code, "P0301");
    trouble.fuelSystemStatus[0] = 1;
    trouble.fuelSystemStatus[1] = QUOBRIX_NO_CODE;
    trouble.coolantTemperature = 88;
    trouble.fuelPressure = QUOBRIX_NO_VALUE;
    return trouble;
}

inline QuobrixActivityRecord plainActivity() {
    auto activity = recordOf<QuobrixActivityRecord>(QUOBRIX_RECORD_ACTIVITY);
    activity.time = 1'700'000'000;
    activity.eventType = 20;
    return activity;
}

/// Two seconds long.
inline QuobrixStopRecord plainStop() {
    auto stop = recordOf<QuobrixStopRecord>(QUOBRIX_RECORD_STOP);
    stop.startTime = 1'700'000'000;
    stop.timestamp = stop.startTime + 2;
    stop.maximumSpeed = 50;
    stop.samplingInterval = 1;
    return stop;
}

/// The samples of accident number STOP; COUNT bytes are expected behind it.
inline QuobrixStopSamplesRecord samplesOf(std::uint32_t stop, std::uint32_t count) {
    QuobrixStopSamplesRecord samples{};
    samples.head.kind = QUOBRIX_RECORD_STOP_SAMPLES;
    samples.stop = stop;
    samples.speeds = {sizeof samples, count};
    return samples;
}

} // namespace quobrix::testing
