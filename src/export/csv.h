#pragma once

#include "export/records.h"
#include "units/unit_system.h"

namespace quobrix {

/// RECORDS as comma-separated values (RFC 4180), in UTF-8, under their headings: texts as the user reads them, figures
/// in the user's units, which stand in the headings, with a point and without grouping, whatever the user's place. What
/// a spreadsheet program would take for a formula begins with the apostrophe that marks texts there, and nothing in it
/// disturbs a terminal.
void writeCsv(std::span<const ExportRecords> records, const TextContext& context, const ExportSink& sink);

/// Of its numbers, which are for other programs: a point, and no grouping.
TextLocale csvLocale();
/// A line of such a file. Fields that people wrote pass through csvWords() before.
std::string csvRow(const std::vector<std::string>& fields);
/// TEXT as a field that no program takes for a formula, and no terminal obeys.
std::string csvWords(std::string_view text);

} // namespace quobrix
