#pragma once

#include "model/quobrix_document.h"
#include "summary/driving_statistics.h"
#include "summary/summary_record.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quobrix {

class Settings;

/// What a summary says of the samples and lists that a trip owns, which have to be read for it.
struct SampledTrip {
    std::uint32_t samplesSum = 0, samples = 0;
    float largestDeceleration = 0, largestAcceleration = 0;
    float idleTime = 0;
    std::array<float, 3> bandTimes{};
    std::array<std::uint32_t, SummaryRecord::kEventKinds> lastEvents{};
    std::array<SummaryRecord::Slot, SummaryRecord::kSlots> parameters{};
    double air = 0;           ///< g that the engine took in while it was measured
    std::int64_t airTime = 0; ///< s that this was
};
/// By row of the trip log.
using SampledTrips = std::map<RowIndex, SampledTrip>;

/// The trips of a document as the summary database keeps them. What changes in the document later may be missing: made
/// anew for every count. Document and settings (with the thresholds of parameters) must outlive it.
class TripSummaries {
public:
    /// What is in KNOWN (if given, outlives this) is not read again; what is read is put there.
    TripSummaries(TQuobrixDocument& document, const Settings& settings, SampledTrips* known = nullptr);

    RowIndex count() const { return trips_.rowCount(); }
    /// Loads what the trip owns, and lets go of it again. Nothing if a part of that cannot be read: it would count for
    /// less than it is.
    std::optional<SummaryRecord> record(RowIndex row) const;
    /// All that can be read.
    std::vector<SummaryRecord> records() const;

private:
    std::optional<SampledTrip> read(RowIndex row) const;

    /// Of each logger, ascending.
    using Times = std::map<std::string, std::vector<std::int32_t>, std::less<>>;
    static Times timesOf(const LogSpec& log, const Table* table);

    const TQuobrixDocument& document_;
    const Settings& settings_;
    const TTripLogTable& trips_;
    SampledTrips* known_;
    Times troubles_, accidents_;
};

/// How many of RECORDS are of trips in ROWS, which are not loaded for it: by logger and start, of records of another
/// program by whether a trip starts within theirs.
std::size_t countedAmong(const SummaryRows& records, const TTripLogTable& trips, std::span<const RowIndex> rows);

} // namespace quobrix
