#pragma once

#include "cli/output.h"

#include <optional>
#include <set>
#include <string>

namespace quobrix::cli {

struct DownloadOptions {
    std::optional<std::string> port; ///< none: the one that the window program uses
    std::string file;                ///< made if it does not exist
    std::set<std::string> yesTo;     ///< keys of questions
};

/// Adds what the logger holds to the document and saves it. A failure at any point leaves the file as it was.
ExitCode download(const DownloadOptions& options);

} // namespace quobrix::cli
