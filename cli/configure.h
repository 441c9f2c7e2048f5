#pragma once

#include "cli/output.h"

#include <optional>
#include <string>

namespace quobrix::cli {

struct ConfigureOptions {
    std::optional<std::string> port; ///< none: the one that the window program uses
    std::string save;                ///< a new file to write the configuration to
    std::string load;                ///< a file to take it from
    bool defaults = false;           ///< set the delivered speed bands and thresholds
    bool force = false;              ///< replace the file SAVE if it is there
};

/// Prints the logger's configuration, saves it, or changes it. Of saving, loading and defaults at most one.
ExitCode configure(const ConfigureOptions& options);

} // namespace quobrix::cli
