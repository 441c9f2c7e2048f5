#pragma once

#include "cli/output.h"

#include <optional>
#include <set>
#include <string>

namespace quobrix::cli {

/// What downloads and imports have in common.
struct IntakeOptions {
    std::string file;            ///< made if it does not exist
    std::set<std::string> yesTo; ///< keys of questions
    std::string vehicle;         ///< of trips that told no VIN: a VIN or the name of a known one; empty: as recorded
};

struct DownloadOptions : IntakeOptions {
    std::optional<std::string> port; ///< none: the one that the window program uses
    bool computerTime = false;       ///< shows what was recorded in the computer's time
    // What is done to the logger once the document is saved.
    bool clear = false;
    bool setClock = false;
};

/// Adds what the logger holds to the document and saves it. A failure at any point leaves the file as it was.
ExitCode download(const DownloadOptions& options);

struct ImportOptions : IntakeOptions {
    std::string logs; ///< a file that the logger library has written
};

/// The same of a log file.
ExitCode importLogs(const ImportOptions& options);

} // namespace quobrix::cli
