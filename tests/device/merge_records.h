#pragma once

#include "device/merge.h"
#include "model/quobrix_document.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace quobrix::testing {

inline constexpr std::int32_t kNoon = 1'700'000'000;
inline const std::string kVin = "1HGCM82633A004352", kOtherVin = "WVWZZZ1KZAW000001";

inline TripRecord trip(std::int32_t start, std::size_t seconds = 60) {
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

inline TroubleRecord trouble(std::int32_t time, const char* code) {
    TroubleRecord record;
    record.origin = {"K-0042-B", kVin};
    record.time = time;
    record.code = code;
    record.fuelSystemStatus = {1, QUOBRIX_NO_CODE};
    record.coolantTemperature = 88;
    return record;
}

inline StopRecord stop(std::int32_t start) {
    StopRecord record;
    record.origin = {"K-0042-B", ""};
    record.startTime = start;
    record.timestamp = start + 20;
    record.maximumSpeed = 60;
    record.samplingInterval = 10;
    record.speedSamples = {60, 30, 0};
    return record;
}

inline LogRecords oneOfEach() {
    LogRecords records;
    records.trips = {trip(kNoon)};
    records.troubles = {trouble(kNoon, "P0300")};
    records.activities = {{{"K-0042-B", ""}, kNoon, 3}};
    records.stops = {stop(kNoon)};
    return records;
}

inline LogRecords trips(std::vector<TripRecord> records) {
    LogRecords all;
    all.trips = std::move(records);
    return all;
}

inline MergeResult merge(const LogRecords& records, TQuobrixDocument& document, std::int32_t shift = 0) {
    Result<MergeResult> result = mergeRecords(records, document, shift);
    if (!result)
        throw std::runtime_error(result.error().detail);
    return *std::move(result);
}

/// What becomes of RECORDS when FIRST is in the document: "new", "replaced" or "present", for one record.
inline std::string outcome(const LogRecords& first, const LogRecords& second) {
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

} // namespace quobrix::testing
