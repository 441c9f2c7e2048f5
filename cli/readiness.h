#pragma once

#include "cli/output.h"

#include <optional>
#include <string>

namespace quobrix::cli {

struct ReadinessOptions {
    std::string file;
    std::optional<std::string> vehicle;
    std::string format; ///< the name of one of kReportFormats; empty: as OUT ends, or text
    std::string out;    ///< empty: standard output
    std::optional<std::string> units;
};

/// What the trips of a document make likely of emissions monitors.
ExitCode readiness(const ReadinessOptions& options);

} // namespace quobrix::cli
