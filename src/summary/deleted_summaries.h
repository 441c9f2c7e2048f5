#pragma once

#include "platform/file_system.h"
#include "summary/summary_record.h"

#include <compare>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace quobrix {

/// By what a counted trip is known again, whatever has become of its times and names since.
struct SummaryKey {
    SummaryText logger; ///< serial number
    std::int32_t recordedStart = 0;
    std::uint32_t samplesSum = 0; ///< 0 may be any

    bool matches(const SummaryKey& other) const {
        return recordedStart == other.recordedStart && logger == other.logger &&
               (samplesSum == other.samplesSum || samplesSum == 0 || other.samplesSum == 0);
    }
    std::weak_ordering operator<=>(const SummaryKey& other) const;
    bool operator==(const SummaryKey&) const = default;
};

/// Of a record of ours.
SummaryKey keyOf(const SummaryRecord& record);

/// The file of such keys; see docs/formats.md.
Bytes deletedSummariesBytes(std::span<const SummaryKey> keys);
/// Corrupt if it is none.
Result<std::vector<SummaryKey>> readDeletedSummaries(ByteView bytes);

/// The trips whose summaries a person has deleted, so that they are not counted again: kept in "Quobrix.cdi" beside the
/// database. Changed only while that is open for writing.
class DeletedSummaries {
public:
    explicit DeletedSummaries(FileSystem& files) : files_(files) {}

    /// A file that is not there names none.
    Result<void> load(const std::filesystem::path& database);
    bool contains(const SummaryKey& key) const;

    // Durable when they return; after an error the keys are as before.
    Result<void> add(std::span<const SummaryKey> keys);
    /// Takes out all that match any of KEYS.
    Result<void> forget(std::span<const SummaryKey> keys);

private:
    Result<void> save(std::vector<SummaryKey> keys);

    FileSystem& files_;
    std::filesystem::path path_;
    std::vector<SummaryKey> keys_; ///< ascending, each once
};

} // namespace quobrix
