#include "summary/trip_comparison.h"

#include <algorithm>
#include <optional>

namespace quobrix {

TripComparison::TripComparison(std::span<const SummaryRecord> records, const DeletedSummaries& deleted)
    : records_(records), deleted_(deleted), matched_(records.size()) {
    for (std::size_t i = 0; i < records.size(); ++i) {
        const SummaryRecord& record = records[i];
        if (record.ours()) {
            ours_.emplace(std::pair(record.recordedStart, std::string(record.logger.view())), i);
            continue;
        }
        for (const SummaryText* vehicle : {&record.vin, &record.vehicleName})
            if (vehicle->known()) {
                std::int32_t& end =
                    others_[std::string(vehicle->view())].try_emplace(record.start, record.end).first->second;
                end = std::max(end, record.end);
            }
    }
    for (auto& [vehicle, periods] : others_)
        for (auto period = periods.begin(), next = period; ++next != periods.end(); period = next)
            next->second = std::max(next->second, period->second);
}

bool TripComparison::countedByOthers(const SummaryRecord& trip) const {
    return std::ranges::any_of(std::array{&trip.vin, &trip.vehicleName}, [&](const SummaryText* vehicle) {
        const auto periods = others_.find(std::string(vehicle->view()));
        if (!vehicle->known() || periods == others_.end())
            return false;
        const auto behind = periods->second.upper_bound(trip.start);
        return behind != periods->second.begin() && std::prev(behind)->second >= trip.end;
    });
}

void TripComparison::take(const SummaryRecord& trip) {
    const SummaryKey key = keyOf(trip);
    const Bytes bytes = summaryBytes(trip);
    // The record that agrees best: in all, or in what the speeds begin with, or in what little it has of them.
    std::optional<std::size_t> found;
    int best = 0;
    const auto [first, end] = ours_.equal_range({trip.recordedStart, std::string(trip.logger.view())});
    for (auto each = first; each != end; ++each) {
        const SummaryRecord& record = records_[each->second];
        if (matched_[each->second] || !keyOf(record).matches(key))
            continue;
        const int agrees = summaryBytes(record) == bytes ? 3 : record.samplesSum == trip.samplesSum ? 2 : 1;
        if (agrees > best) {
            best = agrees;
            found = each->second;
        }
    }
    if (found) {
        matched_[*found] = true;
        if (best < 3 && records_[*found].samples <= trip.samples)
            outdated_.emplace_back(*found, trip);
    } else if (!deleted_.contains(key) && !countedByOthers(trip)) {
        missing_.push_back(trip);
    }
}

} // namespace quobrix
