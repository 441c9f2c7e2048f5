#pragma once

#include "base/bytes.h"
#include "base/no_value.h"
#include "device/record_blocks.h"
#include "model/parameters.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

// The logger's records, checked, in the units in which the library hands them over. Times are logger times, s since
// 1970-01-01 00:00 UTC. Figures without a value are kNoValue, codes QUOBRIX_NO_CODE.

/// Where every record comes from.
struct RecordOrigin {
    std::string serialNumber; ///< 8 characters of the form K-0042-B
    std::string vin;          ///< printable; empty: the vehicle did not tell
    bool operator==(const RecordOrigin&) const = default;
};

struct TripRecord {
    RecordOrigin origin;
    std::int32_t driverId = 0; ///< 0: no driver was identified
    std::int32_t startTime = 0;
    std::int32_t endTime = 0;      ///< not before the start
    bool disconnected = false;     ///< the logger was pulled out during the trip
    double distance = 0;           ///< m
    double maximumSpeed = 0;       ///< km/h
    double hardBrakeThreshold = 0; ///< m/s2, like the three that follow
    double extremeBrakeThreshold = 0;
    double hardAccelerationThreshold = 0;
    double extremeAccelerationThreshold = 0;
    std::array<double, QUOBRIX_BAND_COUNT - 1> bandLimits{};            ///< km/h: upper ends of the first three bands
    std::uint32_t idleSeconds = 0;                                      ///< s at standstill
    std::array<std::uint32_t, QUOBRIX_BAND_COUNT> bandSeconds{};        ///< s in each band
    std::uint32_t speedSamplingInterval = 0;                            ///< s; above 0 where there are samples
    std::vector<std::uint8_t> speedSamples;                             ///< km/h, from the start, an interval apart
    std::vector<std::uint32_t> hardBrakes, extremeBrakes;               ///< s from the start, in order
    std::vector<std::uint32_t> hardAccelerations, extremeAccelerations; ///< likewise
    std::array<SampledSeries, QUOBRIX_SERIES_COUNT> series;             ///< their samples are stored in full
};

struct TroubleRecord {
    RecordOrigin origin;
    std::int32_t time = 0;
    std::string code;                               ///< five characters, as in SAE J2012, unless the logger told others
    std::array<std::int32_t, 2> fuelSystemStatus{}; ///< a bit's number in the status byte of SAE J1979 PID 03, likewise
    double calculatedLoad = kNoValue;               ///< %
    double coolantTemperature = kNoValue;           ///< deg C
    std::array<double, 2> shortTermFuelTrim{kNoValue, kNoValue}; ///< %, banks 1 and 2
    std::array<double, 2> longTermFuelTrim{kNoValue, kNoValue};  ///< %, banks 1 and 2
    double fuelPressure = kNoValue;                              ///< kPa, relative to the atmosphere
    double intakeManifoldPressure = kNoValue;                    ///< kPa, absolute
    double engineSpeed = kNoValue;                               ///< rpm
    double vehicleSpeed = kNoValue;                              ///< km/h
};

struct ActivityRecord {
    RecordOrigin origin;
    std::int32_t time = 0;
    std::int32_t eventType = 0; ///< 0 to 20, -1 to -6 or QUOBRIX_NO_CODE, if it is known
};

struct StopRecord {
    RecordOrigin origin;
    std::int32_t startTime = 0;
    std::int32_t timestamp = 0;                              ///< of the standstill; not before the start
    double maximumSpeed = 0;                                 ///< km/h
    std::array<double, QUOBRIX_BAND_COUNT - 1> bandLimits{}; ///< km/h
    std::uint32_t samplingInterval = 0;                      ///< s; above 0 where there are samples
    std::vector<std::uint8_t> speedSamples;                  ///< km/h; empty when they were missing or refused
};

enum class RecordKind { Unknown, Trip, Trouble, Activity, Stop, StopSamples };

inline constexpr std::size_t kRecordKinds = 6;

/// "trip", "trouble code" …
std::string recordKindName(RecordKind kind);
/// "1 trip", "2 trips" …
std::string recordCountText(RecordKind kind, std::uint64_t count);

/// Records that were not believed, and why.
struct RefusedRecords {
    RecordKind kind = RecordKind::Unknown;
    std::uint32_t ordinal = 0; ///< place of the (first) record in its set, from 1
    std::uint32_t count = 1;   ///< more than one when a damaged length hides all that follow
    std::string reason;        ///< words for the user, in the middle of a line
};

/// How many in all.
std::uint64_t refusedCount(const std::vector<RefusedRecords>& refused);

struct LogRecords {
    std::vector<TripRecord> trips;
    std::vector<TroubleRecord> troubles;
    std::vector<ActivityRecord> activities;
    std::vector<StopRecord> stops;
    std::vector<RefusedRecords> refused;
    std::vector<UnreadableLog> unreadable; ///< of which there are no records

    bool empty() const { return trips.empty() && troubles.empty() && activities.empty() && stops.empty(); }
    std::uint64_t refusedCount() const { return quobrix::refusedCount(refused); }
};

/// The records of everything that a download handed over. Each record is checked on its own: one that is damaged is
/// refused and the rest goes on. Nothing is allocated beyond what the blocks hold.
LogRecords parseRecords(const RecordBlocks& blocks);

/// The same for single record sets: those of the main log, and those of one accident log, appended to RECORDS.
void parseMainRecords(ByteView trips, ByteView troublesAndActivity, LogRecords& records);
void parseAccidentRecords(ByteView stops, ByteView samples, LogRecords& records);

} // namespace quobrix
