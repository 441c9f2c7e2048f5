#pragma once

#include "cli/output.h"

#include <optional>
#include <string>

namespace quobrix::cli {

struct StatisticsOptions {
    std::string file;   ///< a document whose names and fuel entries are used; empty: none
    std::string period; ///< the name of one of periods(); empty: all that was counted
    std::optional<std::string> vehicle, driver;
    std::string database; ///< empty: the user's
    std::string format;   ///< "text", "json" or "csv"
    std::optional<std::string> units;
};

/// Prints what the summary database says of the driving. Neither makes nor changes it.
ExitCode statistics(const StatisticsOptions& options);

} // namespace quobrix::cli
