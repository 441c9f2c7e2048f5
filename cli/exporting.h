#pragma once

#include "cli/reading.h"
#include "export/export_file.h"
#include "export/file_format.h"

#include <functional>

/// Writing records to a file of another format.
namespace quobrix::cli {

struct ExportOptions : SelectionOptions {
    std::string out;
    std::string format; ///< the name of one of kExportFormats; empty: as OUT ends
    bool samples = false;
    std::optional<std::string> units;
};

inline constexpr FileFormat kExportFormats[] = {FileFormat::Csv, FileFormat::Json, FileFormat::Xlsx};

/// Writes CONTENT to the file OUT, and says that it holds WHAT. FORMAT is one of kExportFormats; for Xlsx
/// canWriteXlsx(). What COMPLETENESS says once all has been read, or what went wrong, which has been told.
ExitCode putExport(const ExportContent& content, FileFormat format, const TextContext& context, const std::string& out,
                   const std::function<ExitCode()>& completeness, const ShownText& what);

/// What stands for the log where the fuel entries of a document are wanted.
inline constexpr const char* kFuelEntries = "fuel";

/// OPTIONS.log is one of logNames(), or one of recordNames(): then the files are the number of a record and a document,
/// and its samples are written; or kFuelEntries: then there is one file.
ExitCode exportRecords(const ExportOptions& options);

} // namespace quobrix::cli
