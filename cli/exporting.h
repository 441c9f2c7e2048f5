#pragma once

#include "cli/reading.h"
#include "export/file_format.h"

/// Writing records to a file of another format.
namespace quobrix::cli {

struct ExportOptions : SelectionOptions {
    std::string out;
    std::string format; ///< the name of one of kExportFormats; empty: as OUT ends
    bool samples = false;
    std::optional<std::string> units;
};

inline constexpr FileFormat kExportFormats[] = {FileFormat::Csv, FileFormat::Json, FileFormat::Xlsx};

/// OPTIONS.log is one of logNames(), or one of recordNames(): then the files are the number of a record and a document,
/// and its samples are written.
ExitCode exportRecords(const ExportOptions& options);

} // namespace quobrix::cli
