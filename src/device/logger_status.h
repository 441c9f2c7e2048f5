#pragma once

#include "device/logger_library.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quobrix {

struct Version {
    std::int32_t major = 0, minor = 0, build = 0;
    bool operator==(const Version&) const = default;
};

struct LoggerIdentity {
    std::string serialNumber;
    std::string productNumber; ///< its substrings tell the family
    Version firmware, boot;
    std::int32_t hardwareVersion = 0;
    bool operator==(const LoggerIdentity&) const = default;
};

/// What is set in the logger. Each dialog edits its own values and writes the others back as read.
struct LoggerConfiguration {
    std::array<double, QUOBRIX_BAND_COUNT - 1> bandLimits{};   ///< MPH
    std::array<double, 2> brakeThresholds{};                   ///< m/s2: hard, extreme
    std::array<double, 2> accelerationThresholds{};            ///< m/s2: hard, extreme
    std::array<std::int32_t, QUOBRIX_SLOT_COUNT> parameters{}; ///< device parameter codes
    std::array<std::int32_t, QUOBRIX_SLOT_COUNT> intervals{};  ///< sampling-interval codes
    bool operator==(const LoggerConfiguration&) const = default;
};

struct MemoryInformation {
    std::int32_t capacity = 0; ///< bytes
    std::int32_t used = 0;     ///< bytes
    /// An empty logger uses a little for itself. What cannot be is taken for data.
    bool holdsData() const { return used > 300 || used < 0 || capacity <= 0; }
    /// What is used of it, 0 to 1.
    double share() const { return capacity > 0 ? std::clamp(static_cast<double>(used) / capacity, 0.0, 1.0) : 0; }
    bool nearlyFull() const { return share() > 0.8; }
    bool operator==(const MemoryInformation&) const = default;
};

/// What a logger says of its switches and its memory, for menus and the status bar; nothing where it has not said.
struct LoggerReadings {
    std::optional<bool> led;
    std::optional<bool> vinMode;
    std::optional<bool> armed; ///< to clear the trouble codes of the next vehicle
    std::optional<std::int32_t> volume;
    std::optional<std::int32_t> carType; ///< see anomalous_vehicles.h
    std::optional<MemoryInformation> memory;
    bool operator==(const LoggerReadings&) const = default;
};

// What loggers of PRODUCT number can do.
bool isNewerModel(std::string_view product);
bool hasVinMode(std::string_view product);
bool hasVolumes(std::string_view product); ///< of its alarm, 0 to 10; others have it on or off
bool knowsAnomalousVehicles(std::string_view product);

/// What is known of the port and the logger on it. Kept by the link under the device lock; copies of it are what the
/// rest of the program reads.
struct LoggerStatus {
    std::string port; ///< the current one: open, or last opened; empty before the first
    bool portOpen = false;
    ResultCode openResult = QUOBRIX_PORT_NOT_OPENED; ///< why the port is not open (any more), when it is not

    ResultCode probe = QUOBRIX_PORT_NOT_OPENED; ///< the latest presence probe
    std::string probeDescription;               ///< the library's words for it
    std::string serialText;                     ///< 8 characters, of the last successful probe
    std::int32_t serialNumber = 0;
    std::int32_t loggerTime = 0; ///< s since 1970-01-01 00:00 UTC

    LoggerIdentity identity;       ///< as last told
    LoggerReadings readings;       ///< as last told; none while no logger is there
    bool readingsStale = false;    ///< a command has changed what they tell
    bool configFlag = false;       ///< the option flag that came with the last configuration
    bool newerModel = false;       ///< the product number is none of the first family's
    bool logsCurrent = false;      ///< nothing is on the logger that has not been downloaded, for all we know
    std::uint32_t gaps = 0;        ///< how often it was, or may have been, away or another one
    std::int64_t seenTime = 0;     ///< when it last answered, computer time, s
    std::int32_t currentUse = -1;  ///< bytes used when the logs were current, if that is known; more is something new
    std::int64_t logsReadTime = 0; ///< when its logs were last read or cleared, likewise

    bool loggerPresent() const { return probe == QUOBRIX_OK; }
    bool operator==(const LoggerStatus&) const = default;
};

} // namespace quobrix
