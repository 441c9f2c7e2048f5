#pragma once

#include "base/result.h"
#include "base/shown_text.h"
#include "export/records.h"

#include <cstddef>
#include <filesystem>

namespace quobrix {

/// Whether this build has the library for it; the one for Windows has not.
bool canWriteXlsx();

struct ExportRun;

/// A sheet holds no more records.
inline constexpr std::size_t kMostXlsxRecords = 1'048'575;

/// RECORDS, at most kMostXlsxRecords, as a spreadsheet (Office Open XML) into the existing FILE: a sheet called TITLE
/// with frozen headings. Figures, dates and elapsed times are numbers, in the user's units and place and shown as
/// there; texts are texts, whatever they look like. Gives the number of texts that were longer than a cell can be, and
/// were cut. After an error FILE is of no use.
Result<std::size_t> writeXlsx(std::span<const ExportRecords> records, const ShownText& title,
                              const TextContext& context, const std::filesystem::path& file, const ExportRun& run);

} // namespace quobrix
