#include "model/readiness.h"

#include "base/no_value.h"
#include "model/quobrix_document.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

constexpr std::int32_t kCoolantParameter = 4; // °C

/// Nobody's mean gets right after so many times the least stretch.
constexpr std::size_t kGivenUp = 10;

/// s in stretches of cruise.
std::int64_t cruiseIn(const DriveSamples& samples) {
    const std::size_t least = (static_cast<std::size_t>(kLeastCruise) + samples.interval - 1) / samples.interval;
    std::int64_t seconds = 0;
    for (std::size_t first = 0; first + least <= samples.speeds.size();) {
        double sum = 0;
        int slowest = 255, fastest = 0;
        std::size_t count = 0, cruised = 0;
        for (std::size_t i = first; i < samples.speeds.size(); ++i) {
            const int speed = samples.speeds[i];
            if (speed < kCruiseLeast - kCruiseSpan || speed > kCruiseMost + kCruiseSpan)
                break; // it is far from every mean that counts
            if (cruised == 0 && count > kGivenUp * least)
                break; // hours at a speed below would be added up from each of their seconds on
            sum += speed;
            slowest = std::min(slowest, speed);
            fastest = std::max(fastest, speed);
            const double mean = sum / static_cast<double>(++count);
            if (fastest - mean > kCruiseSpan || mean - slowest > kCruiseSpan)
                break;
            if (mean >= kCruiseLeast && mean <= kCruiseMost)
                cruised = count;
        }
        if (cruised >= least)
            seconds += static_cast<std::int64_t>(cruised * samples.interval);
        first += cruised >= least ? cruised : 1;
    }
    return seconds;
}

/// s in stretches of standing still.
std::int64_t idleIn(const DriveSamples& samples) {
    std::int64_t seconds = 0, stretch = 0;
    for (const std::uint8_t speed : samples.speeds) {
        if (speed == 0) {
            stretch += samples.interval;
            continue;
        }
        if (stretch >= kLeastIdle)
            seconds += stretch;
        stretch = 0;
    }
    return stretch >= kLeastIdle ? seconds + stretch : seconds;
}

std::int64_t decelerationsIn(const DriveSamples& samples) {
    std::int64_t count = 0, fast = -1; // s at which it was last fast enough
    for (std::size_t i = 0; i < samples.speeds.size(); ++i) {
        const auto time = static_cast<std::int64_t>(i * samples.interval);
        if (samples.speeds[i] >= kDecelerationFrom) {
            fast = time;
        } else if (samples.speeds[i] <= kDecelerationTo && fast >= 0) {
            if (std::ranges::none_of(samples.brakes, [&](std::int32_t at) { return at >= fast && at <= time; }))
                ++count;
            fast = -1;
        }
    }
    return count;
}

/// Lets go of what it has loaded.
class Loaded {
public:
    explicit Loaded(ObjectStore* store) : store_(store) {}
    ~Loaded() {
        for (const ObjectId id : ids_)
            store_->unload(id);
    }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

    template <class C>
    auto* object(const TTripLogTable& trips, RowIndex row) {
        const C& column = trips.column<C>();
        if (store_ && column.has(row) && !store_->loaded(column.at(row)))
            ids_.push_back(column.at(row));
        return column.object(row);
    }

private:
    ObjectStore* store_;
    std::vector<ObjectId> ids_;
};

/// The trouble codes of the vehicle of READINESS go into it.
void takeCodes(const TTroubleLogTable& troubles, VehicleReadiness& readiness) {
    const auto& vehicles = troubles.column<TTroubleLogVinColumn>();
    const auto& times = troubles.column<TTroubleLogTimeRecordedColumn>();
    const auto& codes = troubles.column<TTroubleLogTroubleCodeColumn>();
    for (RowIndex row = 0; row < troubles.rowCount(); ++row) {
        if (vehicles.at(row) != readiness.vehicle || !times.has(row) || codes.at(row).empty())
            continue;
        auto known = std::ranges::find(readiness.codes, codes.at(row), &VehicleReadiness::Code::code);
        if (known == readiness.codes.end())
            known = readiness.codes.insert(known, {codes.at(row), 0, times.at(row)});
        ++known->times;
        known->last = std::max(known->last, times.at(row));
    }
    std::ranges::stable_sort(readiness.codes, std::ranges::greater(), &VehicleReadiness::Code::last);
}

} // namespace

DriveEvidence evidenceOf(const DriveSamples& samples) {
    DriveEvidence evidence;
    const auto set = [&](DriveNeed need, std::int64_t amount) {
        evidence.amounts[static_cast<std::size_t>(need)] = amount;
    };
    const auto measured = [](double coolant) { return hasValue(coolant) && std::isfinite(coolant); };
    const auto first = std::ranges::find_if(samples.coolant, measured);
    if (first != samples.coolant.end()) {
        const double warm = std::max(*first + kWarmupRise, kWarmupLeast);
        set(DriveNeed::ColdStarts, *first <= kColdStart ? 1 : 0);
        set(DriveNeed::Warmups, std::any_of(first, samples.coolant.end(),
                                            [&](double coolant) { return measured(coolant) && coolant >= warm; })
                                    ? 1
                                    : 0);
    }
    if (!samples.speeds.empty() && samples.interval > 0) {
        set(DriveNeed::Cruise, cruiseIn(samples));
        set(DriveNeed::Idle, idleIn(samples));
        set(DriveNeed::Decelerations, decelerationsIn(samples));
    }
    return evidence;
}

MonitorReadiness readinessOf(const Monitor& monitor, const VehicleReadiness& vehicle) {
    MonitorReadiness result;
    bool missing = false, unknown = false;
    for (std::size_t need = 0; need < kDriveNeeds; ++need) {
        if (monitor.needs[need] <= 0)
            continue;
        result.unsampled[need] = vehicle.trips > 0 && vehicle.sampledTrips[need] == 0;
        if (!result.unsampled[need])
            result.missing[need] = std::max<std::int64_t>(monitor.needs[need] - vehicle.amounts[need], 0);
        unknown = unknown || result.unsampled[need];
        missing = missing || result.missing[need] > 0;
    }
    if (missing)
        result.state = Readiness::NotYet;
    else if (unknown)
        result.state = Readiness::CannotTell;
    return result;
}

ReadinessReader::ReadinessReader(TQuobrixDocument& document) : document_(document) {
    // One with codes need not have driven since.
    const TTroubleLogTable& troubles = document_.troubles();
    for (RowIndex row = 0; row < troubles.rowCount(); ++row)
        if (const std::string& vin = troubles.column<TTroubleLogVinColumn>().at(row); !vin.empty())
            vehicle(vin);
}

VehicleReadiness& ReadinessReader::vehicle(const std::string& vin) {
    const auto [entry, isNew] = vehicles_.try_emplace(vin);
    if (isNew) {
        entry->second.vehicle = vin;
        takeCodes(document_.troubles(), entry->second);
    }
    return entry->second;
}

bool ReadinessReader::readNext() {
    const TTripLogTable& trips = document_.trips();
    if (next_ >= trips.rowCount())
        return false;
    const RowIndex row = next_++;
    const std::string& vin = trips.column<TTripLogVinColumn>().at(row);
    const auto& starts = trips.column<TTripLogStartTimeColumn>();
    if (vin.empty() || !starts.has(row))
        return true;
    VehicleReadiness& vehicle = this->vehicle(vin);
    if (!vehicle.codes.empty() && starts.at(row) < vehicle.codes.front().last)
        return true;
    ++vehicle.trips;
    Loaded loaded(trips.store());
    DriveSamples samples;
    if (const TTripLogSampleTable* table = loaded.object<TTripLogSampleTableColumn>(trips, row)) {
        samples.speeds = table->speed().values();
        samples.interval = table->speed().interval();
        for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount && samples.coolant.empty(); ++i)
            if (const ParameterSeriesColumn& series = table->series(i); series.parameter() == kCoolantParameter)
                for (std::size_t sample = 0; sample < series.sampleCount(); ++sample)
                    samples.coolant.push_back(series.metric(sample));
    }
    const auto addBrakes = [&](const TTripLogTimesColumn* times) {
        if (times)
            samples.brakes.insert(samples.brakes.end(), times->values().begin(), times->values().end());
    };
    addBrakes(loaded.object<TTripLogHardBrakeTimesColumnColumn>(trips, row));
    addBrakes(loaded.object<TTripLogPanicBrakeTimesColumnColumn>(trips, row));
    const DriveEvidence evidence = evidenceOf(samples);
    for (std::size_t need = 0; need < kDriveNeeds; ++need)
        if (evidence.amounts[need]) {
            vehicle.amounts[need] += *evidence.amounts[need];
            ++vehicle.sampledTrips[need];
        }
    return true;
}

double ReadinessReader::progress() const {
    const std::size_t count = document_.trips().rowCount();
    return count > 0 ? static_cast<double>(std::min(next_, count)) / static_cast<double>(count) : 1;
}

std::vector<VehicleReadiness> ReadinessReader::vehicles() const {
    std::vector<VehicleReadiness> all;
    for (const auto& [vin, vehicle] : vehicles_)
        all.push_back(vehicle);
    std::ranges::sort(all, [](const VehicleReadiness& a, const VehicleReadiness& b) {
        return a.trips != b.trips ? a.trips > b.trips : a.vehicle < b.vehicle;
    });
    return all;
}

} // namespace quobrix
