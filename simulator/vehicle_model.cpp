#include "simulator/vehicle_model.h"

#include <algorithm>
#include <cmath>

namespace quobrix::sim {

namespace {

constexpr double kFullyWarm = 90;                           // deg C of the coolant, held by the thermostat
constexpr double kGearRatios[] = {110, 63, 43, 32, 25, 20}; // rpm per km/h, first to sixth gear
constexpr double kCreep = 1.5;                              // m/s towards a stop line that is still some metres away

// What makes up a journey: stretches of one kind of road.
struct Road {
    double shortest, longest; // m
    double slow, fast;        // km/h
    double stops;             // how many stretches end with a stop
};
constexpr Road kCity{150, 900, 30, 58, 0.45};
constexpr Road kCountry{700, 2600, 65, 100, 0.25};
constexpr Road kMotorway{2500, 12000, 105, 138, 0.0};

void addRoad(std::vector<Leg>& route, const Road& road, double length, double briskness, Random& random) {
    while (length > 0) {
        Leg leg;
        leg.length = random.uniform(road.shortest, road.longest);
        leg.speed = random.uniform(road.slow, road.fast);
        leg.acceleration = random.uniform(1.1, 1.9);
        leg.braking = random.uniform(0.8, 1.15);
        if (random.chance(road.stops))
            leg.wait = random.uniform(3, 50);
        else
            leg.endSpeed = leg.speed * random.uniform(0.45, 0.95);
        if (random.chance(0.02 * briskness)) // someone pulls out
            leg.braking = random.uniform(3.0, random.chance(0.15) ? 7.0 : 4.5);
        if (random.chance(0.02 * briskness)) // a quick start
            leg.acceleration = random.uniform(2.9, random.chance(0.04) ? 5.4 : 4.0);
        length -= leg.length;
        route.push_back(leg);
    }
}

/// Engine and surroundings, moved on second by second.
class Engine {
public:
    Engine(const Vehicle& vehicle, const Surroundings& surroundings, Random& random)
        : vehicle_(vehicle), random_(random), air_(surroundings.airTemperature),
          coolant_(surroundings.coolantTemperature) {}

    /// Appends the readings of a second at SPEED (m/s) with ACCELERATION (m/s2) to DRIVE.
    void read(Drive& drive, double speed, double acceleration) {
        const double power = speed * (acceleration + 0.13 + 0.00035 * speed * speed); // W/kg
        const double demand = std::clamp(power / vehicle_.maximumPower, 0.0, 1.0);
        const double rpm = engineSpeed(speed * 3.6, demand) + random_.uniform(-12, 12);
        const double load = power < -0.5 ? 15 + random_.uniform(-1, 1)
                                         : std::min(98.0, 21 + 75 * power / (0.0105 * rpm) + random_.uniform(-2, 2));
        warm(load);
        const bool closedLoop = coolant_ > 45;
        const double swing = drive.seconds.size() % 2 == 0 ? 0.31 : -0.31; // the sensor of a closed loop oscillates
        reading(drive, 2, 0.25, rpm);
        reading(drive, 3, 0.01, 11.5 + 0.6 * std::max(0.0, load - 20) + random_.uniform(-0.4, 0.4));
        reading(drive, 4, 1, coolant_);
        reading(drive, 5, 0.01, load);
        reading(drive, 6, 1, 22 + 0.78 * load);
        reading(drive, 7, 0.01, rpm / 120 * vehicle_.displacement * 1.15 * load / 100);
        reading(drive, 8, 1, air_ + 4 + 12 * std::max(0.0, 1 - speed / 14) * coolant_ / kFullyWarm);
        reading(drive, 9, 0.5, 8 + 26 * (1 - load / 100) + random_.uniform(-2, 2));
        reading(drive, 11, 1, !closedLoop ? 1 : power < -0.5 ? 4 : 2);
        reading(drive, 12, 0.01, closedLoop ? random_.uniform(-4, 4) : 0);
        reading(drive, 14, 0.01, vehicle_.longTermTrim);
        reading(drive, 16, 0.005, closedLoop ? 0.45 + swing + random_.uniform(-0.08, 0.08) : 0.45);
        reading(drive, 24, 0.001, drive.seconds.size() < 3 ? 12.4 : 14.15 + random_.uniform(-0.12, 0.1));
    }

private:
    /// A reading that comes in whole STEPs, kept to the thousandth.
    static void reading(Drive& drive, std::size_t parameter, double step, double value) {
        drive.parameter[parameter - 1].push_back(std::round(std::round(value / step) * step * 1000) / 1000);
    }

    double engineSpeed(double kmh, double demand) const {
        const double idle = vehicle_.idleSpeed + 480 * std::clamp(1 - coolant_ / kFullyWarm, 0.0, 1.0);
        const double shiftDown = 1350 + 2600 * demand;
        double rpm = kmh * kGearRatios[0];
        for (const double ratio : kGearRatios)
            if (kmh * ratio >= shiftDown)
                rpm = kmh * ratio;
        return std::clamp(rpm, idle, 6200.0);
    }

    void warm(double load) {
        if (coolant_ < kFullyWarm - 2)
            coolant_ += 0.05 + 0.0034 * load * (1 + air_ / 100);
        else
            coolant_ += 0.05 * (kFullyWarm + random_.uniform(-3, 4) - coolant_);
    }

    const Vehicle& vehicle_;
    Random& random_;
    double air_;
    double coolant_;
};

} // namespace

std::vector<Leg> makeRoute(Journey journey, double briskness, Random& random) {
    std::vector<Leg> route;
    addRoad(route, kCity, journey == Journey::Errand ? random.uniform(1500, 6000) : random.uniform(800, 2500),
            briskness, random);
    if (journey == Journey::Commute)
        addRoad(route, kCountry, random.uniform(4000, 16000), briskness, random);
    if (journey == Journey::Motorway)
        addRoad(route, kMotorway, random.uniform(20000, 130000), briskness * 0.5, random);
    if (journey != Journey::Errand)
        addRoad(route, kCity, random.uniform(800, 2500), briskness, random);
    route.back().endSpeed = 0;
    route.back().wait = random.uniform(2, 20);
    // Rarely the traffic ahead suddenly stands still.
    if (random.chance(0.03 * briskness)) {
        Leg& leg = route[static_cast<std::size_t>(random.integer(0, static_cast<std::int32_t>(route.size()) - 1))];
        leg.speed = std::max(leg.speed, 55.0);
        leg.length = std::max(leg.length, 400.0);
        leg.endSpeed = 0;
        leg.wait = random.uniform(10, 40);
        leg.braking = random.uniform(2.6, 6.5);
    }
    return route;
}

Drive drive(const Vehicle& vehicle, const std::vector<Leg>& route, const Surroundings& surroundings, Random& random) {
    Drive drive;
    Engine engine(vehicle, surroundings, random);
    double speed = 0;  // m/s
    double wander = 0; // m/s that the driver is off the wanted speed, drifting slowly
    const auto tick = [&](double next) {
        engine.read(drive, next, next - speed);
        speed = next;
        drive.seconds.push_back(static_cast<double>(drive.seconds.size()));
        drive.speed.push_back(std::round(speed * 3.6 * 100) / 100);
    };
    const auto stand = [&](double seconds) {
        for (; seconds > 0; --seconds)
            tick(0);
    };
    stand(random.uniform(3, 25));
    for (const Leg& leg : route) {
        const double end = leg.endSpeed / 3.6;
        double left = leg.length;
        while (left > 0 && (left > 3 || speed > 1)) {
            wander = 0.93 * wander + random.uniform(-0.22, 0.22);
            const double wanted = leg.speed / 3.6 + wander;
            // Where the car will be in a second, it must still be able to slow down with the leg's braking.
            const double allowed = std::sqrt(end * end + 2 * leg.braking * std::max(0.0, left - speed));
            const double available = leg.acceleration * std::max(0.25, 1 - speed / 45);
            const double next =
                std::clamp(std::min(wanted, std::max(allowed, kCreep)), speed - leg.braking * 1.1, speed + available);
            tick(std::max(0.0, next));
            left -= std::max(speed, 0.2);
        }
        if (leg.endSpeed > 0)
            continue;
        while (speed > 0.5)
            tick(std::max(0.0, speed - leg.braking));
        stand(leg.wait);
    }
    stand(2);
    return drive;
}

} // namespace quobrix::sim
