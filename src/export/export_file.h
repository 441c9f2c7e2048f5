#pragma once

#include "base/result.h"
#include "base/shown_text.h"
#include "document/disk_work.h"
#include "export/file_format.h"
#include "export/records.h"
#include "model/record_table.h"
#include "platform/file_system.h"

#include <functional>
#include <memory>
#include <vector>

namespace quobrix {

/// What goes into one file, and how it is called there.
struct ExportContent {
    std::vector<ExportRecords> records{};
    ShownText title{};
    std::vector<std::shared_ptr<const Column>> made{}; ///< columns of the records that are there for them only

    std::size_t rowCount() const;
};

/// TABLE, with all of its rows.
ExportContent contentOf(const RecordTable& table);

/// What goes on beside an export that takes long. Without, it is done in one go.
struct ExportRun {
    std::function<bool()> record{}; ///< called after each record; false gives the export up: Cancelled
    DiskRunner disk{};              ///< runs what reads no record any more
};

/// Writes CONTENT to FILE, which whoever has made it then commits, or lets go of after an error. FORMAT: Csv, Json or
/// Xlsx. Gives the number of texts that were too long for a cell, and were cut. A spreadsheet takes at most
/// kMostXlsxRecords rows.
Result<std::size_t> writeExport(const ExportContent& content, FileFormat format, const TextContext& context,
                                ReplacementFile& file, const ExportRun& run = {});

} // namespace quobrix
