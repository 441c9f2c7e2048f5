#pragma once

#include "device/logger_link.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace quobrix {

/// Watches whether a logger is there, which one, and whether what was downloaded from it may be out of date. Its result
/// is the link's status. One object watches one link.
class MonitoringProbe {
public:
    /// One look at the logger, with the device lock that the caller holds. Failures are silent; they show in the
    /// status. INTERRUPTED is asked between two library calls: when it says yes the rest is left out, and false is
    /// returned.
    bool run(
        LockedLogger& logger, const std::function<bool()>& interrupted = [] { return false; });

private:
    struct Sighting {
        std::int32_t serialNumber;
        std::int64_t time; // computer time, s
    };
    std::optional<Sighting> previous_;
};

} // namespace quobrix
