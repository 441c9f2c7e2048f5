#pragma once

#include "device/records.h"
#include "model/name_questions.h"
#include "model/quobrix_document.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quobrix {

/// What became of the records of a download.
struct MergeResult {
    std::size_t added = 0;
    std::size_t present = 0;  ///< already in the document, replaced ones included
    std::size_t replaced = 0; ///< of those: seen again with more content
    std::vector<RefusedRecords> refused;
    NewKeys newKeys; ///< which the name tables have got

    std::uint64_t refusedCount() const;
    /// "12 new, 340 already present, 0 refused."
    std::string summary() const;
    /// One line for each group of refused records: what, which and why.
    std::vector<std::string> refusedLines() const;
};

/// Whether records can be merged into DOCUMENT: its logs and the columns by which a record is known again must be
/// readable. Corrupt names what is not; Changed if another program has changed the file meanwhile;
/// Unsupported if a later version of this one has written it.
Result<void> canMerge(TQuobrixDocument& document);

/// Adds RECORDS to DOCUMENT, which must pass canMerge(), as rows in order of time, with the vehicles, loggers and
/// drivers that it has not seen. Times are kept as recorded for recognition, and shown with SHIFT (s) added.
///
/// A record is the same as one in the document when its logger, its kind, its time as recorded, its code or event and
/// its number among equals are the same. It is then added only if it has more content, in place of the old one, whose
/// comments stay.
MergeResult mergeRecords(const LogRecords& records, TQuobrixDocument& document, std::int32_t shift = 0);

} // namespace quobrix
