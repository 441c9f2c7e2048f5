#include "simulator/history.h"

#include "simulator/random.h"
#include "simulator/recorder.h"
#include "simulator/vehicle_model.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace quobrix::sim {

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;
constexpr double kLongestHistory = 20 * 365.25 * kDay; // s; more trips stand closer together
constexpr double kUsualPace = 6.5 * kHour;             // s from one trip to the next on average

/// The check digit of a vehicle identification number, ISO 3779 as North America uses it: position 9 makes the
/// weighted sum of all positions' values what it says modulo 11, X standing for 10.
char checkDigit(std::string_view vin) {
    constexpr std::string_view kLetters = "ABCDEFGHJKLMNPRSTUVWXYZ";
    constexpr std::string_view kValues = "12345678123457923456789";
    constexpr std::array<int, 17> kWeights{8, 7, 6, 5, 4, 3, 2, 10, 0, 9, 8, 7, 6, 5, 4, 3, 2};
    int sum = 0;
    for (std::size_t i = 0; i < kWeights.size(); ++i) {
        const std::size_t letter = kLetters.find(vin[i]);
        sum += kWeights[i] * ((letter == std::string_view::npos ? vin[i] : kValues[letter]) - '0');
    }
    return sum % 11 == 10 ? 'X' : static_cast<char>('0' + sum % 11);
}

std::string makeVin(std::string_view pattern, Random& random) {
    std::string vin(pattern);
    for (std::size_t i = 12; i < vin.size(); ++i)
        vin[i] = static_cast<char>('0' + random.integer(0, 9));
    vin[8] = checkDigit(vin);
    return vin;
}

struct Fault {
    std::string_view code;
    bool whenCold;
};
constexpr Fault kFaults[] = {{"P0171", false}, {"P0300", false}, {"P0420", false}, {"P0128", true}, {"P0442", false},
                             {"P0455", false}, {"P0113", true},  {"P0301", true},  {"P0401", false}};

/// One trip of the history with all that belongs to it, in order of time.
class Chapter {
public:
    void add(const LogRecord& record) { writeRecord(out_, record); }
    const Bytes& bytes() const { return out_.view(); }

private:
    ByteWriter out_;
};

/// Makes the trips from the last one backwards, since the end of the last is what is known. Every choice depends on the
/// seed and the trip's number alone.
class Historian {
public:
    Historian(const Logger& logger, const HistoryPlan& plan)
        : configuration_(logger.configuration), plan_(plan), end_(plan.end),
          wallClock_(plan.endSecondsOfDay - std::int64_t{plan.end}),
          pace_(std::min(1.0, kLongestHistory / (plan.trips * kUsualPace))) {
        Random random(plan.seed);
        everyday_ = {makeVin("1HGCM826_3A000000", random), 2.4, 75, 720, 1.5625};
        second_ = {makeVin("2FTRX18W_1CA00000", random), 4.6, 65, 640, -2.34375};
    }

    const std::string& lastVin() const { return vehicle(0).vin; }

    /// Trip number INDEX, counted back from the last; nothing if it would be before 1970.
    Result<Chapter> chapter(std::uint32_t index) {
        Random random(plan_.seed, index);
        const Vehicle& car = vehicle(index);
        const std::int32_t driver = random.chance(0.7) ? (&car == &everyday_ ? 1 : 2) : random.integer(0, 2);
        const double briskness = driver == 2 ? 1.8 : driver == 1 ? 0.7 : 1.0;
        const Journey journey = random.chance(0.08)  ? Journey::Motorway
                                : random.chance(0.5) ? Journey::Commute
                                                     : Journey::Errand;
        const std::vector<Leg> route = makeRoute(journey, briskness, random);
        const double gap = gapBefore(random);
        const Surroundings surroundings = surroundingsAt(end_, gap, random);
        const Drive readings = drive(car, route, surroundings, random);
        const auto length = static_cast<std::int64_t>(readings.seconds.back());
        const std::int64_t start = end_ - length;
        const std::int64_t previousEnd = previousTripEnd(start, gap, random);
        if (previousEnd < 2 * kDay)
            return Error{ErrorKind::Unsupported, "the history would begin before 1970"};

        Chapter chapter;
        const bool disconnected = random.chance(0.004);
        addActivityBefore(chapter, index, static_cast<std::int32_t>(start), static_cast<std::int32_t>(previousEnd));
        const Recording recording = recordDrive(readings, configuration_,
                                                {.vin = car.vin,
                                                 .driver = driver,
                                                 .start = static_cast<std::int32_t>(start),
                                                 .disconnected = disconnected});
        if (random.chance(0.02))
            chapter.add(trouble(readings, car, static_cast<std::int32_t>(start), random));
        for (const Stop& stop : recording.stops)
            chapter.add(stop);
        chapter.add(recording.trip);
        if (disconnected) {
            chapter.add(Activity{car.vin, recording.trip.end, kDisconnectedDuringTrip});
            chapter.add(Activity{car.vin, recording.trip.end + 20, kConnected});
        }
        end_ = previousEnd;
        return chapter;
    }

private:
    /// The second vehicle has the logger for some of the stretches of 25 trips.
    const Vehicle& vehicle(std::uint32_t index) const {
        return Random(plan_.seed, 0x5000000000u + index / 25).chance(0.17) ? second_ : everyday_;
    }

    std::int64_t secondsOfDay(std::int64_t time) const { return ((time + wallClock_) % kDay + kDay) % kDay; }

    /// s of standing before a trip: an errand's, a day's work's, or a night's.
    double gapBefore(Random& random) const {
        const double kind = random.uniform(0, 1);
        return pace_ * kHour *
               (kind < 0.45   ? random.uniform(0.15, 1.5)
                : kind < 0.75 ? random.uniform(3, 8.5)
                              : random.uniform(10, 15));
    }

    /// The end of the trip before the one that begins at START. At night nobody drives, unless there are so many trips
    /// that somebody must.
    std::int64_t previousTripEnd(std::int64_t start, double gap, Random& random) const {
        std::int64_t end = start - std::max<std::int64_t>(120, static_cast<std::int64_t>(gap));
        const std::int64_t ofDay = secondsOfDay(end);
        if (pace_ == 1 && (ofDay < 7 * kHour || ofDay > 23 * kHour)) {
            const std::int64_t pastEvening = ofDay < 7 * kHour ? ofDay + kDay : ofDay;
            end -= pastEvening - static_cast<std::int64_t>(random.uniform(17, 22.5) * kHour);
        }
        return end;
    }

    /// The air follows the year and the day; the coolant falls towards it while the car stands.
    Surroundings surroundingsAt(std::int64_t time, double gap, Random& random) const {
        constexpr double kTwoPi = 6.283185307179586;
        const double year = std::cos(kTwoPi * static_cast<double>(time % 31557600) / 31557600);
        const double day = std::cos(kTwoPi * static_cast<double>(secondsOfDay(time) - 15 * kHour) / kDay);
        const double air = 11 - 10 * year + 4 * day + random.uniform(-4, 4);
        return {air, air + (90 - air) / (1 + gap / (1.5 * kHour) * gap / kHour)};
    }

    void addActivityBefore(Chapter& chapter, std::uint32_t index, std::int32_t start, std::int32_t previousEnd) const {
        const bool first = index + 1 == plan_.trips;
        const std::string& vin = vehicle(index).vin;
        const std::string& previousVin = first ? vin : vehicle(index + 1).vin;
        const bool visit = Random(plan_.seed, 0x6000000000u + index).chance(1.0 / 60);
        if (!first && !visit && vin == previousVin)
            return;
        const std::int32_t step = (start - previousEnd) / 10;
        std::int32_t time = previousEnd;
        const auto log = [&](const std::string& of, std::int32_t event) {
            chapter.add(Activity{of, time, event});
            time += step;
        };
        if (first) {
            log("", kConnectedToComputer);
            log("", kClockAltered);
        } else {
            log(previousVin, kDisconnected);
        }
        if (visit) {
            log("", kConnectedToComputer);
            log("", index % 2 == 0 ? kDownloaded : kParametersAltered);
        }
        log(vin, kConnected);
    }

    /// A trouble code with the freeze frame of a moment when it may well have come up.
    static Trouble trouble(const Drive& drive, const Vehicle& vehicle, std::int32_t start, Random& random) {
        const Fault& fault = kFaults[random.integer(0, static_cast<std::int32_t>(std::size(kFaults)) - 1)];
        const auto last = static_cast<std::int32_t>(drive.seconds.size()) - 1;
        const std::int32_t row =
            fault.whenCold ? random.integer(0, std::min(last, 60)) : random.integer(last / 3, last);
        const auto reading = [&](std::size_t parameter) {
            return drive.parameter[parameter - 1][static_cast<std::size_t>(row)];
        };
        Trouble trouble;
        trouble.vin = vehicle.vin;
        trouble.time = start + row;
        trouble.code = fault.code;
        trouble.fuelSystem[0] = reading(11) == 1 ? 0 : reading(11) == 2 ? 1 : 2;
        trouble.load = reading(5);
        trouble.coolant = reading(4);
        trouble.shortTrim[0] = fault.code == "P0171" ? 18.75 : reading(12);
        trouble.longTrim[0] = fault.code == "P0171" ? 14.0625 : reading(14);
        if (vehicle.displacement > 4) { // an engine with two banks, which also tells its fuel pressure
            trouble.shortTrim[1] = random.integer(-4, 4) * 0.78125;
            trouble.longTrim[1] = 0.78125;
            trouble.fuelPressure = 270 + 3 * random.integer(0, 15);
        }
        trouble.manifoldPressure = reading(6);
        trouble.engineSpeed = reading(2);
        trouble.vehicleSpeed = std::round(drive.speed[static_cast<std::size_t>(row)]);
        return trouble;
    }

    const Configuration& configuration_;
    HistoryPlan plan_;
    std::int64_t end_;       // of the next trip to be made
    std::int64_t wallClock_; // s from logger time to the clock on the wall, modulo days
    double pace_;            // 1, or less to fit more trips into the time
    Vehicle everyday_, second_;
};

} // namespace

Result<void> generateHistory(Logger& logger, const HistoryPlan& plan) {
    Historian historian(logger, plan);
    std::vector<Bytes> chapters;
    std::size_t size = logger.memory.size();
    for (std::uint32_t index = 0; index < plan.trips; ++index) {
        const auto chapter = historian.chapter(index);
        if (!chapter)
            return chapter.error();
        chapters.push_back(chapter->bytes());
        size += chapter->bytes().size();
        if (size > logger.capacity)
            return Error{ErrorKind::DiskFull, "the logger's memory is too small for that many trips"};
    }
    logger.memory.reserve(size);
    for (auto chapter = chapters.rbegin(); chapter != chapters.rend(); ++chapter)
        logger.memory.insert(logger.memory.end(), chapter->begin(), chapter->end());
    logger.vin = historian.lastVin();
    return {};
}

} // namespace quobrix::sim
