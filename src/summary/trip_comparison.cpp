#include "summary/trip_comparison.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace quobrix {
namespace {

/// What another program has counted: it says of which vehicle and when, but not which trips.
class CountedElsewhere {
public:
    explicit CountedElsewhere(std::span<const SummaryRecord> records) {
        for (const SummaryRecord& record : records)
            for (const SummaryText* vehicle : {&record.vin, &record.vehicleName})
                if (!record.ours() && vehicle->known()) {
                    std::int32_t& end =
                        periods_[std::string(vehicle->view())].try_emplace(record.start, record.end).first->second;
                    end = std::max(end, record.end);
                }
        for (auto& [vehicle, periods] : periods_)
            for (auto period = periods.begin(), next = period; ++next != periods.end(); period = next)
                next->second = std::max(next->second, period->second);
    }

    bool holds(const SummaryRecord& trip) const {
        return std::ranges::any_of(std::array{&trip.vin, &trip.vehicleName}, [&](const SummaryText* vehicle) {
            const auto periods = periods_.find(std::string(vehicle->view()));
            if (!vehicle->known() || periods == periods_.end())
                return false;
            const auto behind = periods->second.upper_bound(trip.start);
            return behind != periods->second.begin() && std::prev(behind)->second >= trip.end;
        });
    }

private:
    /// Of a vehicle, by start, and the latest end up to each.
    using Periods = std::map<std::int32_t, std::int32_t>;
    std::unordered_map<std::string, Periods> periods_; ///< by VIN and by the vehicle's name
};

/// How well a record agrees with a trip that it may stand for.
enum class Agreement { MayBe, SameSpeeds, Equal };

Agreement agreementOf(const SummaryRecord& record, const SummaryRecord& trip) {
    if (summaryBytes(record) == summaryBytes(trip))
        return Agreement::Equal;
    return record.samplesSum == trip.samplesSum ? Agreement::SameSpeeds : Agreement::MayBe;
}

} // namespace

SummaryChanges compareTrips(std::span<const SummaryRecord> records, const DeletedSummaries& deleted,
                            std::span<const SummaryRecord> trips) {
    using Place = std::pair<std::int32_t, std::string>; // start and logger
    const auto placeOf = [](const SummaryRecord& each) {
        return Place(each.recordedStart, std::string(each.logger.view()));
    };
    std::multimap<Place, std::size_t> ours;
    for (std::size_t i = 0; i < records.size(); ++i)
        if (records[i].ours())
            ours.emplace(placeOf(records[i]), i);

    // Those that agree best find each other first: a trip does not take the record of one that comes behind it.
    SummaryChanges changes;
    std::vector<bool> found(trips.size()), taken(records.size());
    for (const Agreement wanted : {Agreement::Equal, Agreement::SameSpeeds, Agreement::MayBe})
        for (std::size_t trip = 0; trip < trips.size(); ++trip) {
            const auto [first, end] = ours.equal_range(placeOf(trips[trip]));
            for (auto each = first; each != end && !found[trip]; ++each) {
                const std::size_t index = each->second;
                if (taken[index] || !keyOf(records[index]).matches(keyOf(trips[trip])) ||
                    agreementOf(records[index], trips[trip]) != wanted)
                    continue;
                taken[index] = found[trip] = true;
                if (wanted != Agreement::Equal && records[index].samples <= trips[trip].samples)
                    changes.outdated.emplace_back(index, trips[trip]);
            }
        }
    const CountedElsewhere elsewhere(records);
    for (std::size_t trip = 0; trip < trips.size(); ++trip)
        if (!found[trip] && !deleted.contains(keyOf(trips[trip])) && !elsewhere.holds(trips[trip]))
            changes.missing.push_back(trips[trip]);
    return changes;
}

} // namespace quobrix
