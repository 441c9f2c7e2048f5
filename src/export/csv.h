#pragma once

#include "export/records.h"

namespace quobrix {

/// RECORDS as comma-separated values (RFC 4180), in UTF-8, under their headings: texts as the user reads them, figures
/// in the user's units, which stand in the headings, with a point and without grouping, whatever the user's place. What
/// a spreadsheet program would take for a formula begins with the apostrophe that marks texts there, and nothing in it
/// disturbs a terminal.
void writeCsv(std::span<const ExportRecords> records, const TextContext& context, const ExportSink& sink);

} // namespace quobrix
