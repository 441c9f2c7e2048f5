#pragma once

#include "summary/deleted_summaries.h"
#include "summary/summary_database.h"

#include <filesystem>
#include <span>
#include <utility>
#include <vector>

namespace quobrix {

/// What came of counting trips.
struct CountedTrips {
    std::size_t added = 0, rewritten = 0;
};

/// The summary database together with what was deleted from it, as programs use it for one operation.
class SummaryLog {
public:
    explicit SummaryLog(FileSystem& files = FileSystem::system()) : database_(files), deleted_(files) {}

    /// As SummaryDatabase::open(), and Corrupt if it cannot be told what was deleted. Reads all records.
    Result<void> open(const std::filesystem::path& path, SummaryDatabase::Access access);
    const std::vector<SummaryRecord>& records() const { return records_; }
    const DeletedSummaries& deleted() const { return deleted_; }
    std::vector<SummaryRecord> takeRecords() { return std::move(records_); }

    /// Counts TRIPS, which are all of a document: what is missing is added, what differs rewritten (compareTrips()).
    Result<CountedTrips> count(std::span<const SummaryRecord> trips);
    /// Lets the trips with these keys be counted again.
    Result<void> forgetDeleted(std::span<const SummaryKey> keys) { return deleted_.forget(keys); }
    /// Removes the records at INDICES, for good: their trips are not counted again.
    Result<void> remove(std::span<const std::size_t> indices);

private:
    SummaryDatabase database_;
    DeletedSummaries deleted_;
    std::vector<SummaryRecord> records_;
};

/// The places of those RECORDS that hold the same as one of WANTED, ascending.
std::vector<std::size_t> recordsLike(std::span<const SummaryRecord> wanted, std::span<const SummaryRecord> records);

} // namespace quobrix
