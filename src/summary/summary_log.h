#pragma once

#include "summary/deleted_summaries.h"
#include "summary/summary_database.h"
#include "summary/trip_comparison.h"

#include <filesystem>
#include <span>
#include <vector>

namespace quobrix {

/// The summary database together with what was deleted from it, as programs use it for one operation.
class SummaryLog {
public:
    explicit SummaryLog(FileSystem& files = FileSystem::system()) : database_(files), deleted_(files) {}

    /// As SummaryDatabase::open(), and Corrupt if it cannot be told what was deleted. Reads all records.
    Result<void> open(const std::filesystem::path& path, SummaryDatabase::Access access);
    const std::vector<SummaryRecord>& records() const { return records_; }
    const DeletedSummaries& deleted() const { return deleted_; }

    /// Does what COMPARISON, which was made with records() and deleted(), has found; it is of no use afterwards.
    Result<void> count(const TripComparison& comparison);
    /// Lets the trips with these keys be counted again.
    Result<void> forgetDeleted(std::span<const SummaryKey> keys) { return deleted_.forget(keys); }
    /// Removes the records at INDICES, for good: their trips are not counted again.
    Result<void> remove(std::span<const std::size_t> indices);

private:
    SummaryDatabase database_;
    DeletedSummaries deleted_;
    std::vector<SummaryRecord> records_;
};

} // namespace quobrix
