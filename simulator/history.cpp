#include "simulator/history.h"

#include "simulator/circumstances.h"
#include "simulator/fault.h"
#include "simulator/recorder.h"

#include <algorithm>
#include <string_view>

namespace quobrix::sim {

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;
constexpr double kLongestHistory = 20 * 365.25 * kDay; // s; more trips stand closer together
constexpr double kUsualPace = 6.5 * kHour;             // s from one trip to the next on average

struct Fault {
    std::string_view code;
    bool whenCold;
};
constexpr Fault kFaults[] = {{"P0171", false}, {"P0300", false}, {"P0420", false}, {"P0128", true}, {"P0442", false},
                             {"P0455", false}, {"P0113", true},  {"P0301", true},  {"P0401", false}};

Trouble anyTrouble(const Drive& drive, const Vehicle& vehicle, std::int32_t start, Random& random) {
    const Fault& fault = kFaults[random.integer(0, static_cast<std::int32_t>(std::size(kFaults)) - 1)];
    return troubleDuring(drive, vehicle, start, fault.code, fault.whenCold, random);
}

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
        const Surroundings surroundings = surroundingsAt(end_, secondsOfDay(end_), gap, random);
        const Drive readings = drive(car, route, surroundings, random);
        const auto length = static_cast<std::int64_t>(readings.seconds.back());
        const std::int64_t start = end_ - length;
        const std::int64_t previousEnd = previousTripEnd(start, gap, random);
        if (previousEnd < 2 * kDay)
            return fault(ErrorKind::Unsupported, "the history would begin before 1970");

        Chapter chapter;
        const bool disconnected = random.chance(0.004);
        addActivityBefore(chapter, index, static_cast<std::int32_t>(start), static_cast<std::int32_t>(previousEnd));
        const Recording recording = recordDrive(readings, configuration_,
                                                {.vin = car.vin,
                                                 .driver = driver,
                                                 .start = static_cast<std::int32_t>(start),
                                                 .disconnected = disconnected});
        if (random.chance(0.02))
            chapter.add(anyTrouble(readings, car, static_cast<std::int32_t>(start), random));
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

    /// The end of the trip before the one that begins at START. There is no driving at night, unless there are so many
    /// trips that somebody must.
    std::int64_t previousTripEnd(std::int64_t start, double gap, Random& random) const {
        std::int64_t end = start - std::max<std::int64_t>(120, static_cast<std::int64_t>(gap));
        const std::int64_t ofDay = secondsOfDay(end);
        if (pace_ == 1 && (ofDay < 7 * kHour || ofDay > 23 * kHour)) {
            const std::int64_t pastEvening = ofDay < 7 * kHour ? ofDay + kDay : ofDay;
            end -= pastEvening - static_cast<std::int64_t>(random.uniform(17, 22.5) * kHour);
        }
        return end;
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
            return fault(ErrorKind::DiskFull, "the logger's memory is too small for that many trips");
    }
    logger.memory.reserve(size);
    for (auto chapter = chapters.rbegin(); chapter != chapters.rend(); ++chapter)
        logger.memory.insert(logger.memory.end(), chapter->begin(), chapter->end());
    logger.vin = historian.lastVin();
    return {};
}

} // namespace quobrix::sim
