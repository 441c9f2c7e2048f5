#pragma once

#include "cli/reading.h"

/// Writing records to a file of another format.
namespace quobrix::cli {

struct ExportOptions : SelectionOptions {
    std::string out;
    std::string format; ///< empty: as OUT ends
    bool samples = false;
    std::optional<std::string> units;
};

/// The names of the formats, which are the endings of their files.
std::vector<std::string> exportFormats();

/// OPTIONS.log is one of logNames(), or one of recordNames(): then the files are the number of a record and a document,
/// and its samples are written.
ExitCode exportRecords(const ExportOptions& options);

} // namespace quobrix::cli
