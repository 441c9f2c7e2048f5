#pragma once

#include "simulator/drive.h"
#include "simulator/log_records.h"
#include "simulator/logger.h"

#include <string>
#include <vector>

namespace quobrix::sim {

/// What the logger knows of a drive beside the readings.
struct Circumstances {
    std::string vin;
    std::int32_t driver = 0;
    std::int32_t start = 0; ///< logger time
    bool disconnected = false;
};

struct Recording {
    Trip trip;
    std::vector<Stop> stops;
};

/// How a logger with this configuration records DRIVE, which has at least one reading.
///
/// At every whole second from 0 to the last reading the logger takes the newest reading at or before it; nothing is
/// interpolated, and speed is rounded to whole km/h, halves away from zero. Everything but the parameter series comes
/// from these ticks; tick k stands for the second that begins at it, and the last tick closes the trip.
///  - Distance is the trapezoid sum of the speeds.
///  - A second is idle at speed 0, else it belongs to the first band whose upper end is not below the speed.
///  - A braking or acceleration event begins at the tick whose change from the tick before exceeds the first threshold,
///    lasts while it does, and is extreme if the second threshold was exceeded at any of its ticks.
///  - A series holds the newest reading that has the parameter at 0, 1, 2 … intervals, and no value before the first.
///    The first four selected parameters other than speed are recorded.
///  - A stop from above 40 km/h to standstill within 8 s is recorded as an accident with the 20 s before it.
Recording recordDrive(const Drive& drive, const Configuration& configuration, const Circumstances& circumstances);

} // namespace quobrix::sim
