#include "summary/summary_log.h"

#include "summary/trip_comparison.h"

#include <algorithm>

namespace quobrix {

Result<void> SummaryLog::open(const std::filesystem::path& path, SummaryDatabase::Access access) {
    records_.clear();
    QUOBRIX_TRY(database_.open(path, access));
    const Result<void> known = deleted_.load(path);
    Result<std::vector<SummaryRecord>> records = known ? database_.readAll() : known.error();
    if (!records) {
        database_.close();
        return records.error();
    }
    records_ = *std::move(records);
    return {};
}

Result<CountedTrips> SummaryLog::count(std::span<const SummaryRecord> trips) {
    const SummaryChanges changes = compareTrips(records_, deleted_, trips);
    for (const auto& [index, record] : changes.outdated) {
        QUOBRIX_TRY(database_.write(index, record));
        records_[index] = record;
    }
    if (!changes.outdated.empty())
        QUOBRIX_TRY(database_.flush());
    QUOBRIX_TRY(database_.append(changes.missing));
    records_.insert(records_.end(), changes.missing.begin(), changes.missing.end());
    return CountedTrips{changes.missing.size(), changes.outdated.size()};
}

Result<void> SummaryLog::remove(std::span<const std::size_t> indices) {
    std::vector<SummaryKey> keys; // what another program has counted is known by nothing
    std::vector<bool> removed(records_.size());
    for (const std::size_t index : indices) {
        if (index >= records_.size())
            return Error{ErrorKind::NotFound, {}};
        removed[index] = true;
        if (records_[index].ours())
            keys.push_back(keyOf(records_[index]));
    }
    QUOBRIX_TRY(deleted_.add(keys));
    const Result<void> done = database_.remove(indices);
    if (done || done.error().kind == ErrorKind::NotDurable) {
        std::size_t index = 0;
        std::erase_if(records_, [&](const SummaryRecord&) { return removed[index++]; });
    }
    return done;
}

std::vector<std::size_t> recordsLike(std::span<const SummaryRecord> wanted, std::span<const SummaryRecord> records) {
    std::vector<Bytes> sought;
    for (const SummaryRecord& record : wanted)
        sought.push_back(summaryBytes(record));
    std::ranges::sort(sought);
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < records.size() && !sought.empty(); ++i)
        if (std::ranges::binary_search(sought, summaryBytes(records[i])))
            places.push_back(i);
    return places;
}

} // namespace quobrix
