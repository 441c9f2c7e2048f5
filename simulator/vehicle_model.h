#pragma once

#include "simulator/drive.h"
#include "simulator/random.h"

#include <string>
#include <vector>

namespace quobrix::sim {

struct Vehicle {
    std::string vin;
    double displacement = 2.0;    ///< l
    double maximumPower = 75;     ///< W per kg of the vehicle
    double idleSpeed = 720;       ///< rpm, warm
    double longTermTrim = 1.5625; ///< %
};

/// A stretch of road driven towards one speed.
struct Leg {
    double length = 0;         ///< m
    double speed = 0;          ///< km/h that the driver wants
    double endSpeed = 0;       ///< km/h at its end; 0: a stop
    double wait = 0;           ///< s of standing after the stop
    double acceleration = 1.6; ///< m/s2 from low speed
    double braking = 1.1;      ///< m/s2 towards the end
};

enum class Journey { Errand, Commute, Motorway };

/// The way of a JOURNEY, stretch by stretch. BRISKNESS around 1 makes hard braking and acceleration more or less
/// likely.
std::vector<Leg> makeRoute(Journey journey, double briskness, Random& random);

struct Surroundings {
    double airTemperature = 15;     ///< deg C
    double coolantTemperature = 15; ///< deg C at the start
};

/// The readings of VEHICLE driving ROUTE, one a second from standstill to standstill.
Drive drive(const Vehicle& vehicle, const std::vector<Leg>& route, const Surroundings& surroundings, Random& random);

} // namespace quobrix::sim
