#include "simulator/household.h"

#include "simulator/circumstances.h"
#include "simulator/recorder.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>
#include <string_view>

namespace quobrix::sim {

namespace {

constexpr std::uint64_t kSeed = 2026;
constexpr std::int32_t kHourSeconds = 3600;
constexpr std::int32_t kDaySeconds = 24 * kHourSeconds;
constexpr std::int32_t kFirstDay = 1774828800; // Monday, March 30, 2026
constexpr int kWeeks = 13;
constexpr int kHolidayWeek = 7; // from Saturday to Saturday

enum Days : unsigned { Mon = 1, Tue = 2, Wed = 4, Thu = 8, Fri = 16, Sat = 32, Sun = 64 };

/// Ways that are driven again and again are the same each time; only the traffic differs. A way home is the way out
/// backwards.
enum Way : std::uint32_t { Office = 1, School, Shops, Sports, Friends, Nursery, Lake, Motorway };

constexpr Journey journeyOf(Way way) {
    return way == Motorway                                  ? Journey::Motorway
           : way == Office || way == Lake || way == Friends ? Journey::Commute
                                                            : Journey::Errand;
}

/// Something done every week, out and back.
struct Habit {
    HouseholdVehicle vehicle;
    unsigned days;
    double out, back; // hours of the day; no way back if it is 0
    Way way;
    std::int32_t driver;
    double probability; // that it is not left out
};
constexpr Habit kHabits[] = {
    {HouseholdVehicle::Wagon, Mon | Tue | Thu, 7.55, 17.2, Office, 1, 0.95},
    {HouseholdVehicle::Wagon, Wed, 15.3, 16.6, Sports, 2, 0.8},
    {HouseholdVehicle::Wagon, Fri, 16.4, 17.5, Shops, 2, 0.85},
    {HouseholdVehicle::Wagon, Sat, 10.2, 11.6, Shops, 1, 0.6},
    {HouseholdVehicle::Wagon, Sun, 13.1, 18.3, Lake, 1, 0.4},
    {HouseholdVehicle::Pickup, Tue | Thu, 8.2, 13.1, School, 3, 0.9},
    {HouseholdVehicle::Pickup, Fri, 19.2, 22.6, Friends, 3, 0.7},
    {HouseholdVehicle::Pickup, Sat, 9.1, 10.9, Nursery, 2, 0.65},
};

/// A trouble code that comes up in the first drive from DAY on.
struct Mishap {
    HouseholdVehicle vehicle;
    int day;
    std::string_view code;
    bool whenCold;
};
constexpr Mishap kMishaps[] = {
    {HouseholdVehicle::Wagon, 15, "P0128", true},
    {HouseholdVehicle::Wagon, 64, "P0420", false},
    {HouseholdVehicle::Pickup, 33, "P0171", false},
    {HouseholdVehicle::Pickup, 75, "P0442", false},
};
constexpr int kDeerDay = 26; // the pickup is stopped hard on its way home that Saturday

struct Outing {
    std::int32_t start;
    Way way;
    bool backwards;
    std::int32_t driver;
    bool hardStop = false;
};

std::vector<Outing> outings(HouseholdVehicle vehicle) {
    std::vector<Outing> result;
    const auto add = [&](int day, double hour, Way way, bool backwards, std::int32_t driver, bool hardStop = false) {
        result.push_back({kFirstDay + day * kDaySeconds + static_cast<std::int32_t>(hour * kHourSeconds), way,
                          backwards, driver, hardStop});
    };
    const int leave = (kHolidayWeek - 1) * 7 + 5; // a Saturday
    const int comeBack = leave + 7;
    for (int day = 0; day < kWeeks * 7; ++day) {
        Random random(kSeed, static_cast<std::uint64_t>(day) * 2 + (vehicle == HouseholdVehicle::Pickup ? 1 : 0));
        const auto about = [&](double hour) { return hour + random.uniform(-0.15, 0.3); };
        if (vehicle == HouseholdVehicle::Wagon && day >= leave && day <= comeBack) {
            if (day == leave || day == comeBack) { // with a break on the way
                add(day, about(8.3), Motorway, day == comeBack, 1);
                add(day, about(12.2), Motorway, day == comeBack, 2);
            } else if (day % 2 == 0) {
                add(day, about(10.1), Lake, false, 2);
                add(day, about(16.8), Lake, true, 1);
            }
            continue;
        }
        for (const Habit& habit : kHabits) {
            if (habit.driver != 3 && day >= leave && day <= comeBack)
                continue;
            const bool deer = vehicle == HouseholdVehicle::Pickup && day == kDeerDay;
            if (habit.vehicle != vehicle || !(habit.days & 1u << day % 7) ||
                !(random.chance(habit.probability) || deer))
                continue;
            add(day, about(habit.out), habit.way, false, habit.driver);
            add(day, about(habit.back), habit.way, true, habit.driver, deer);
        }
    }
    return result;
}

/// The legs of OUTING in that day's traffic.
std::vector<Leg> legsOf(const Outing& outing, Random& random) {
    Random fixed(kSeed, 0x7000u + outing.way);
    std::vector<Leg> legs = makeRoute(journeyOf(outing.way), 0, fixed);
    if (outing.way == Motorway) // past three towns
        for (int more = 0; more < 3; ++more)
            std::ranges::copy(makeRoute(Journey::Motorway, 0, fixed), std::back_inserter(legs));
    if (outing.backwards)
        std::ranges::reverse(legs);
    const double traffic = random.uniform(0.9, 1.04);
    const double temper = outing.driver == 3 ? 0.08 : 0.012; // the youngest is in a hurry
    for (Leg& leg : legs) {
        leg.speed *= traffic * random.uniform(0.97, 1.03);
        leg.endSpeed = std::min(leg.endSpeed, leg.speed * 0.9);
        if (leg.endSpeed == 0 && random.chance(0.35)) // a green light
            leg.endSpeed = leg.speed * 0.6;
        else if (leg.endSpeed == 0)
            leg.wait = random.uniform(3, 45);
        if (random.chance(temper))
            leg.acceleration = random.uniform(2.9, 4.0);
        if (leg.endSpeed > 0 && random.chance(temper))
            leg.braking = random.uniform(3.0, 4.4);
    }
    if (outing.hardStop) {
        Leg& leg = legs[legs.size() / 2];
        leg.length = std::max(leg.length, 600.0);
        leg.speed = 68;
        leg.endSpeed = 0;
        leg.wait = 95;
        leg.braking = 6.8;
    }
    legs.back().endSpeed = 0;
    legs.back().braking = 1.0;
    legs.back().wait = random.uniform(2, 12);
    return legs;
}

Vehicle makeVehicle(HouseholdVehicle vehicle) {
    Random random(kSeed, 0x8000u + static_cast<std::uint64_t>(vehicle));
    if (vehicle == HouseholdVehicle::Wagon)
        return {makeVin("1HGCM826_3A000000", random), 2.4, 75, 720, 1.5625};
    return {makeVin("2FTRX18W_1CA00000", random), 4.6, 65, 640, -2.34375};
}

} // namespace

Result<void> generateHousehold(Logger& logger, HouseholdVehicle which) {
    const Vehicle vehicle = makeVehicle(which);
    logger.vin = vehicle.vin;
    std::int32_t end = kFirstDay - 2 * kDaySeconds + 10 * kHourSeconds + (which == HouseholdVehicle::Pickup ? 900 : 0);
    QUOBRIX_TRY(logger.remember(Activity{"", end, kConnectedToComputer}));
    QUOBRIX_TRY(logger.remember(Activity{"", end + 40, kClockAltered}));
    QUOBRIX_TRY(logger.remember(Activity{vehicle.vin, end + 1500, kConnected}));
    std::vector<Mishap> mishaps;
    std::ranges::copy_if(kMishaps, std::back_inserter(mishaps),
                         [&](const Mishap& mishap) { return mishap.vehicle == which; });
    auto mishap = mishaps.begin();
    int visits = 0;
    for (const Outing& outing : outings(which)) {
        Random random(kSeed, static_cast<std::uint64_t>(outing.start));
        const std::int32_t start = std::max(outing.start, end + 5 * 60);
        // Once a month the logger is read at the desk.
        if ((start - kFirstDay) / (30 * kDaySeconds) > visits && start - end > 8 * kHourSeconds) {
            ++visits;
            const std::int32_t evening = end + kHourSeconds;
            QUOBRIX_TRY(logger.remember(Activity{vehicle.vin, evening, kDisconnected}));
            QUOBRIX_TRY(logger.remember(Activity{"", evening + 300, kConnectedToComputer}));
            QUOBRIX_TRY(logger.remember(Activity{"", evening + 330, visits == 2 ? kParametersAltered : kDownloaded}));
            QUOBRIX_TRY(logger.remember(Activity{vehicle.vin, evening + 1200, kConnected}));
        }
        const Surroundings surroundings = surroundingsAt(start, start % kDaySeconds, start - end, random);
        const Drive readings = drive(vehicle, legsOf(outing, random), surroundings, random);
        const Recording recording =
            recordDrive(readings, logger.configuration, {.vin = vehicle.vin, .driver = outing.driver, .start = start});
        if (mishap != mishaps.end() && start >= kFirstDay + mishap->day * kDaySeconds) {
            QUOBRIX_TRY(
                logger.remember(troubleDuring(readings, vehicle, start, mishap->code, mishap->whenCold, random)));
            ++mishap;
        }
        for (const Stop& stop : recording.stops)
            QUOBRIX_TRY(logger.remember(stop));
        QUOBRIX_TRY(logger.remember(recording.trip));
        end = recording.trip.end;
    }
    return {};
}

} // namespace quobrix::sim
