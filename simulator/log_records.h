#pragma once

#include "base/bytes.h"
#include "base/no_value.h"
#include "base/result.h"

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <variant>
#include <vector>

namespace quobrix::sim {

inline constexpr std::int32_t kNoCode = std::numeric_limits<std::int32_t>::min();

enum class RecordKind : std::uint8_t { Trip = 1, Trouble = 2, Activity = 3, Stop = 4 };

/// Times of the records are logger times: seconds since 1970-01-01 00:00 UTC by the logger's clock.

enum EventKind : std::uint8_t { HardBrake, ExtremeBrake, HardAcceleration, ExtremeAcceleration, kEventKinds };

struct Series {
    std::int32_t parameter = 0; ///< 1 to 24; 0: not recorded
    std::int32_t interval = 0;  ///< s
    bool twoValues = false;
    std::vector<double> samples; ///< metric unit of the parameter, or kNoValue
};

struct Trip {
    static constexpr RecordKind kKind = RecordKind::Trip;
    std::string vin;
    std::int32_t driver = 0;
    std::int32_t start = 0;
    std::int32_t end = 0;
    bool disconnected = false;
    double distance = 0;                         ///< m
    double maximumSpeed = 0;                     ///< km/h
    std::array<double, kEventKinds> threshold{}; ///< m/s2, by EventKind
    std::array<double, 3> bandLimit{};           ///< km/h
    std::uint32_t idleSeconds = 0;
    std::array<std::uint32_t, 4> bandSeconds{};
    std::uint32_t speedInterval = 1;                            ///< s
    std::vector<std::uint8_t> speeds;                           ///< km/h
    std::array<std::vector<std::uint32_t>, kEventKinds> events; ///< s from the start, by EventKind
    std::array<Series, 4> series;
};

/// Figures of the freeze frame are kNoValue, codes kNoCode, where the vehicle did not report them.
struct Trouble {
    static constexpr RecordKind kKind = RecordKind::Trouble;
    std::string vin;
    std::int32_t time = 0;
    std::string code; ///< five characters
    std::array<std::int32_t, 2> fuelSystem{kNoCode, kNoCode};
    double load = kNoValue;                              ///< %
    double coolant = kNoValue;                           ///< deg C
    std::array<double, 2> shortTrim{kNoValue, kNoValue}; ///< %, banks 1 and 2
    std::array<double, 2> longTrim{kNoValue, kNoValue};  ///< %, banks 1 and 2
    double fuelPressure = kNoValue;                      ///< kPa over the atmosphere
    double manifoldPressure = kNoValue;                  ///< kPa absolute
    double engineSpeed = kNoValue;                       ///< rpm
    double vehicleSpeed = kNoValue;                      ///< km/h
};

struct Activity {
    static constexpr RecordKind kKind = RecordKind::Activity;
    std::string vin;
    std::int32_t time = 0;
    std::int32_t event = kNoCode;
};

struct Stop {
    static constexpr RecordKind kKind = RecordKind::Stop;
    std::string vin;
    std::int32_t start = 0;            ///< of the first sample
    std::int32_t standstill = 0;       ///< of the last sample
    double maximumSpeed = 0;           ///< km/h
    std::array<double, 3> bandLimit{}; ///< km/h
    std::uint32_t interval = 1;        ///< s
    std::vector<std::uint8_t> speeds;  ///< km/h
};

using LogRecord = std::variant<Trip, Trouble, Activity, Stop>;

/// Appends RECORD as the logger's memory holds it: kind (u8), length of the rest (u32), content.
void writeRecord(ByteWriter& out, const LogRecord& record);

/// A record of the memory: where it lies, head included; its content is not looked at.
struct EncodedRecord {
    RecordKind kind;
    ByteView bytes;
};

/// The records of MEMORY one after the other; ErrorKind::Corrupt if they do not fill it exactly.
Result<std::vector<EncodedRecord>> splitRecords(ByteView memory);

/// The content of RECORD; ErrorKind::Corrupt if it is not as writeRecord leaves it.
Result<LogRecord> readRecord(const EncodedRecord& record);

} // namespace quobrix::sim
