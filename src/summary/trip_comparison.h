#pragma once

#include "summary/deleted_summaries.h"
#include "summary/summary_record.h"

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace quobrix {

/// What is missing in the summary database, or out of date there.
struct SummaryChanges {
    std::vector<SummaryRecord> missing;
    std::vector<std::pair<std::size_t, SummaryRecord>> outdated; ///< records by index, as they should be
};

/// What TRIPS, which are ours and all of a document, change in RECORDS. Each record stands for one trip at most; of
/// several that may stand for a trip, the one that is equal, else the one with the same speeds. A record that has more
/// of a trip than this stays as it is, and so does what another program has counted: trips within one of its records of
/// that vehicle are counted.
SummaryChanges compareTrips(std::span<const SummaryRecord> records, const DeletedSummaries& deleted,
                            std::span<const SummaryRecord> trips);

} // namespace quobrix
