#pragma once

#include "device/records.h"
#include "model/name_questions.h"
#include "model/quobrix_document.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace quobrix {

/// What became of the records of one log.
struct MergeCounts {
    std::size_t added = 0;
    std::size_t replaced = 0; ///< were in the document with less content
    std::size_t present = 0;  ///< are in the document as they are, or with more content
};

/// What became of the records of a download.
struct MergeResult {
    std::array<MergeCounts, kLogCount> logs; ///< by LogId
    std::vector<RefusedRecords> refused;
    std::vector<UnreadableLog> unreadable; ///< of whose records nothing is known
    NewKeys newKeys;                       ///< which the name tables have got
    std::vector<RowIndex> newTrips{};      ///< the rows of those that were added

    std::size_t added() const;
    std::uint64_t refusedCount() const { return quobrix::refusedCount(refused); }
    /// The document was changed.
    bool changed() const;
    /// There was no record at all.
    bool nothing() const;
    /// Everything that the logger holds is in the document.
    bool complete() const { return refused.empty() && unreadable.empty(); }
    /// One line: "New: 9 trips, 1 trouble code. Replaced: 2 trips. Already present: 38 trips. Refused: 1 severe stop."
    std::string summary() const;
    /// One line for each group of refused records: what, which and why.
    std::vector<ShownText> refusedLines() const;
};

/// Whether records can be merged into DOCUMENT: of its logs and name tables everything must be readable, since rows are
/// written in all of their columns. Corrupt names the table that is not; Changed if another program has changed the
/// file meanwhile; Unsupported if a later version of this one has written it.
Result<void> canMerge(TQuobrixDocument& document);

/// New trips whose vehicle told one text that is no VIN, or nothing.
struct UnidentifiedVehicle {
    std::string read; ///< what the vehicle told
    std::size_t trips = 0;
    std::int32_t firstStart = 0; ///< of the earliest, s since 1970-01-01 00:00 UTC by the logger's clock
};

/// What is to be done with the records of a download. Both the records and the document outlive it, and the document's
/// rows stay as they are until it has been applied.
///
/// A record is the same as one in the document if logger, time as recorded, code or event are the same, the VIN is or
/// one of them has none, and one of the two continues the other: a trip's samples and events, an accident's samples and
/// a freeze frame's figures are the beginning, or a part, of those of the other. Otherwise both are kept, which a
/// logger whose clock starts over needs. A fuller record takes the old one's place, whose comments stay, and so do the
/// vehicle and driver that a person gave a trip. Each row stands for one record of a download.
class Merge {
public:
    /// Finds out, and changes nothing. The errors are those of canMerge(), and Corrupt if a record would take the place
    /// of one of which not everything can be read.
    static Result<Merge> plan(const LogRecords& records, TQuobrixDocument& document);
    Merge(Merge&&) noexcept;
    ~Merge();

    /// What will become of the records of LOG.
    MergeCounts counts(LogId log) const;
    /// In order of their trips' times.
    std::vector<UnidentifiedVehicle> unidentified() const;
    /// The new trips whose vehicle told READ, which is no VIN, were made with VIN, and so were the new stops of their
    /// loggers that tell the same. Of trips, what was recorded is kept beside it.
    void identify(const std::string& read, const std::string& vin);

    /// Adds the records as rows in order of time, with the vehicles, loggers and drivers that the document has not
    /// seen. Times are kept as recorded for recognition, and shown with SHIFT (s) added. All of it is done, as one step
    /// of the document's edits, or nothing: the errors are those of canMerge(). Once.
    Result<MergeResult> apply(std::int32_t shift);

private:
    struct Plans;
    explicit Merge(std::unique_ptr<Plans> plans);

    std::unique_ptr<Plans> plans_;
};

/// All of it where nobody can tell vehicles.
Result<MergeResult> mergeRecords(const LogRecords& records, TQuobrixDocument& document, std::int32_t shift = 0);

} // namespace quobrix
