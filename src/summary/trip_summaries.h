#pragma once

#include "model/quobrix_document.h"
#include "summary/summary_record.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quobrix {

class Settings;

/// The trips of a document as the summary database keeps them. What changes in the document later may be missing: made
/// anew for every count. Document and settings (with the thresholds of parameters) must outlive it.
class TripSummaries {
public:
    TripSummaries(TQuobrixDocument& document, const Settings& settings);

    RowIndex count() const { return trips_.rowCount(); }
    /// Loads what the trip owns. Nothing if a part of that cannot be read: it would count for less than it is.
    std::optional<SummaryRecord> record(RowIndex row) const;
    /// All that can be read.
    std::vector<SummaryRecord> records() const;

private:
    /// Of each logger, ascending.
    using Times = std::map<std::string, std::vector<std::int32_t>, std::less<>>;
    static Times timesOf(const LogSpec& log, const Table* table);

    const TQuobrixDocument& document_;
    const Settings& settings_;
    const TTripLogTable& trips_;
    Times troubles_, accidents_;
};

} // namespace quobrix
