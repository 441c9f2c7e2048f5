#pragma once

#include "device/logger_status.h"

#include <cstdint>
#include <string>

namespace quobrix {

class Settings;

/// What is done when a logger is connected that holds new data. The numbers are stored in the settings.
enum class OnNewData : std::int32_t { Nothing = 0, Ask = 1, Download = 2 };

OnNewData onNewData(const Settings& settings);
void setOnNewData(Settings& settings, OnNewData choice);

/// Finds out when a logger is connected that holds what has not been downloaded: more than an empty one does, and
/// another amount than after its last download or clear, which the settings keep by its serial number. User-interface
/// thread only.
class NewDataWatch {
public:
    /// SETTINGS must outlive the watch.
    explicit NewDataWatch(Settings& settings) : settings_(settings) {}

    /// Takes note of the latest STATUS. True once a connection: its logger holds new data, and something can be done
    /// about it, since the program is IDLE.
    bool see(const LoggerStatus& status, bool idle);

private:
    struct Connection {
        std::string serialText;
        std::uint32_t gaps = 0;
        bool operator==(const Connection&) const = default;
    };

    Settings& settings_;
    Connection told_;
    std::int64_t settled_ = 0; ///< when the logs were read or cleared, after which the amount was last kept
};

} // namespace quobrix
