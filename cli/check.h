#pragma once

#include "cli/output.h"

#include <string>

namespace quobrix::cli {

struct CheckOptions {
    std::string file;
    bool repair = false;
    std::string into;   ///< with repair: the new document
    bool force = false; ///< which may replace a file
};

/// Examines every object of a document; with repair, writes what can be read of it into a new one. The document itself
/// is only read.
ExitCode check(const CheckOptions& options);

} // namespace quobrix::cli
