#pragma once

#include "base/result.h"
#include "base/shown_text.h"
#include "document/disk_work.h"
#include "export/records.h"
#include "model/record_table.h"
#include "platform/file_system.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
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

enum class ExportFormat { Csv, Json, Xlsx };
/// What the names of its files end in: "csv".
std::string_view endingOf(ExportFormat format);
/// The format that FILE is called by; nothing for another ending.
std::optional<ExportFormat> formatOf(const std::filesystem::path& file);

/// What goes on beside an export that takes long. Without, it is done in one go.
struct ExportRun {
    std::function<bool()> record{}; ///< called after each record; false gives the export up: Cancelled
    DiskRunner disk{};              ///< runs what reads no record any more
};

/// Whether FILE is a document, or one of OPENED: no export takes its place.
bool isDocument(const std::filesystem::path& file, std::span<const std::filesystem::path> opened);

/// Writes CONTENT to FILE, which whoever has made it then commits, or lets go of after an error. Gives the number of
/// texts that were too long for a cell, and were cut. A spreadsheet takes at most kMostXlsxRecords rows.
Result<std::size_t> writeExport(const ExportContent& content, ExportFormat format, const TextContext& context,
                                ReplacementFile& file, const ExportRun& run = {});

} // namespace quobrix
