#include "summary/summary_log.h"

namespace quobrix {

Result<void> SummaryLog::open(const std::filesystem::path& path, SummaryDatabase::Access access) {
    records_.clear();
    QUOBRIX_TRY(database_.open(path, access));
    QUOBRIX_TRY(deleted_.load(path));
    Result<std::vector<SummaryRecord>> records = database_.readAll();
    if (!records)
        return records.error();
    records_ = *std::move(records);
    return {};
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

} // namespace quobrix
