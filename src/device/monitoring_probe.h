#pragma once

#include "device/logger_link.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace quobrix {

/// Watches whether a logger is there, which one, and whether what was downloaded from it may be out of date. Its result
/// is the link's status. A current port that is closed, after a failure or because it was in use, is opened again, at
/// intervals that grow from 1 to 30 s. One object watches one link.
class MonitoringProbe {
public:
    /// One look at the logger, with the device lock that the caller holds. Failures are silent; they show in the
    /// status. INTERRUPTED is asked between two library calls: when it says yes the rest is left out, and false is
    /// returned.
    bool run(
        LockedLogger& logger, const std::function<bool()>& interrupted = [] { return false; });

private:
    bool look(LockedLogger& logger, const std::function<bool()>& interrupted);
    bool takeReadings(LockedLogger& logger, const std::function<bool()>& interrupted);
    bool openAgain(LockedLogger& logger); // whether it was tried
    void planOpening(const LockedLogger& logger, bool tried);

    std::uint32_t gaps_ = 0; ///< in watching, when the logger was last looked at

    // All readings are taken when a logger is first seen and after each command, then one a probe.
    bool seen_ = false;   ///< the last probe has found the logger
    int nextReading_ = 0; ///< counts round
    int readingsDue_ = 0; ///< at the next probe

    /// The next attempt to open the port.
    struct Opening {
        std::string port;
        std::int64_t planned; // when it was planned; computer time, s
        std::int64_t pause;   // s from then on
    };
    std::optional<Opening> opening_; // none while the port is open
};

} // namespace quobrix
