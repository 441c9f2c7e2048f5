#pragma once

#include "simulator/log_image.h"
#include "simulator/log_records.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quobrix::sim {

inline constexpr double kKilometresPerMile = 1.609344;
inline constexpr std::uint8_t kNotSelected = 0xF9;
/// One day after the epoch of a clock that was never set, so that the year reads 2000 in every time zone.
inline constexpr std::int64_t kNeverSetClock = 946684800 + 86400;

/// Codes of the activity records; the negative ones are changes of the configuration.
enum ActivityEvent : std::int32_t {
    kConnected = 0,
    kDisconnected = 1,
    kDisconnectedDuringTrip = 2,
    kClockAltered = 4,
    kCleared = 5,
    kDownloaded = 6,
    kConnectedToComputer = 20,
    kSpeedBandsAltered = -1,
    kBrakingAltered = -2,
    kAccelerationAltered = -3,
    kParametersAltered = -4,
    kIntervalsAltered = -5,
};

/// What the logger is told to record, as it crosses the library boundary.
struct Configuration {
    std::array<double, 3> bandLimit{45.0, 60.0, 70.0}; ///< MPH
    /// m/s2, by EventKind: 0.28 and 0.48 standard gravities.
    std::array<double, kEventKinds> threshold{2.745862, 4.707192, 2.745862, 4.707192};
    /// Engine speed, coolant temperature, throttle position, engine load, battery voltage.
    std::array<std::int32_t, 5> parameter{0x0C, 0x05, 0x11, 0x04, 0xE1};
    std::array<std::int32_t, 5> interval{1, 2, 1, 2, 16}; ///< codes: 5, 10, 5, 10 and 60 s

    std::array<double, 3> bandLimitKmh() const;
};

/// Identifier 1 to 24 of a logger's parameter code; 0 if nothing is selected.
std::int32_t parameterOfCode(std::int32_t code);
/// The inverse; kNotSelected for an identifier outside 1 to 24.
std::int32_t codeOfParameter(std::int32_t parameter);
/// s; a code that is not in the table means 60.
std::int32_t secondsOfIntervalCode(std::int32_t code);
/// An interval that is not in the table is 16, the code of 60 s.
std::int32_t intervalCodeOfSeconds(std::int32_t seconds);

/// One logger with everything it keeps. Its memory is a sequence of encoded records.
struct Logger {
    std::string serial = "K-0042-B";
    std::string product = "QBX-4751";
    std::array<std::int32_t, 3> firmware{3, 7, 2};
    std::array<std::int32_t, 3> bootware{1, 4, 0};
    std::int32_t hardware = 5;
    Configuration configuration;
    std::uint8_t flags = 1;
    std::int64_t clockOffset = 0; ///< s that the logger's clock is ahead of the computer's
    bool ledEnabled = true;
    bool vinModeEnabled = true;
    bool armed = false;         ///< to clear the trouble codes of the next vehicle
    bool logsDownloads = false; ///< a download leaves an activity record
    std::int32_t beepVolume = 2;
    std::int32_t carType = 0;
    std::uint32_t capacity = 64u << 20; ///< bytes of memory
    std::string vin;                    ///< of the vehicle last recorded
    Bytes memory;

    /// The logger's clock: s since 1970-01-01 00:00 UTC.
    std::int32_t time() const;
    bool hasVinMode() const;

    /// Appends a record; ErrorKind::DiskFull, and nothing changed, if it does not fit.
    Result<void> remember(const LogRecord& record);
    /// Appends an activity record at the logger's time. A full memory forgets it.
    void rememberEvent(std::int32_t event);
    /// Empties the memory, stops only if STOPS_ONLY.
    Result<void> forget(bool stopsOnly = false);

    /// Takes CONFIGURATION over and records one activity event for each group of values that changed.
    void configure(const Configuration& configuration);
};

/// The logger without its memory, for the head of a port file.
void writeLogger(ByteWriter& out, const Logger& logger);
/// Marks IN as failed if the values are not possible.
Logger readLogger(ByteReader& in);

} // namespace quobrix::sim
