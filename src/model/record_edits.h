#pragma once

#include "model/quobrix_document.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quobrix {

// What a person changes of what was recorded. Beside it stays what the logger said, by which the record is known again,
// and nothing else follows from it. Each is one step of the document's edits, or is refused and changes nothing.

/// Whether a person may change what was recorded of the record in ROW, which must be there. What the logger tells of
/// its configuration, and of being connected to a vehicle, stays as it is.
bool isCorrectable(const LogSpec& log, const Table& table, RowIndex row);

/// Sets cells of the record in ROW of LOG, in columns that are correctable().
EditOutcome correctRecord(TQuobrixDocument& document, const LogSpec& log, RowIndex row, std::vector<CellEdit> cells,
                          const TextContext& context);

/// Gives TRIPS, rows in ascending order, the driver with this number; none: Element<std::int32_t>::kNone.
EditOutcome giveDriver(TQuobrixDocument& document, const std::vector<RowIndex>& trips, std::int32_t driver);

/// Gives TRIPS, rows in ascending order, this type; none: empty.
EditOutcome giveTripType(TQuobrixDocument& document, const std::vector<RowIndex>& trips, const std::string& type);

/// Gives the trip in ROW other speeds in place of its samples (km/h, as many as there are), or other ends of its speed
/// bands (m/s, kNoValue: open), which must ascend. What was recorded is no edit: a trip that is given that again is as
/// if nobody had changed it.
EditOutcome correctSamples(TQuobrixDocument& document, RowIndex row, const std::vector<std::uint8_t>& speeds);
EditOutcome correctSpeedBands(TQuobrixDocument& document, RowIndex row, const std::vector<double>& from,
                              const std::vector<double>& to);

} // namespace quobrix
