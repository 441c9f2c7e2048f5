#pragma once

#include "summary/deleted_summaries.h"
#include "summary/summary_record.h"

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quobrix {

/// Finds what is missing in the summary database, or out of date there, when the trips of a document are shown to it
/// one by one. RECORDS and DELETED must outlive it.
class TripComparison {
public:
    TripComparison(std::span<const SummaryRecord> records, const DeletedSummaries& deleted);

    /// TRIP: of ours. Each record stands for one trip at most. A record that has more of a trip than this stays as it
    /// is, and so does what another program has counted: trips within one of its records of that vehicle are counted.
    void take(const SummaryRecord& trip);

    const std::vector<SummaryRecord>& missing() const { return missing_; }
    /// The records by index, as they should be.
    const std::vector<std::pair<std::size_t, SummaryRecord>>& outdated() const { return outdated_; }

private:
    /// Of the records of a vehicle that are not ours, by start, and the latest end up to each.
    using Periods = std::map<std::int32_t, std::int32_t>;
    bool countedByOthers(const SummaryRecord& trip) const;

    std::span<const SummaryRecord> records_;
    const DeletedSummaries& deleted_;
    std::multimap<std::pair<std::int32_t, std::string>, std::size_t> ours_; ///< by start and logger
    std::unordered_map<std::string, Periods> others_;                       ///< by VIN and by the vehicle's name
    std::vector<bool> matched_;
    std::vector<SummaryRecord> missing_;
    std::vector<std::pair<std::size_t, SummaryRecord>> outdated_;
};

} // namespace quobrix
