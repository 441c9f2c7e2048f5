#pragma once

#include "cli/output.h"

#include <string>
#include <vector>

namespace quobrix::cli {

/// Prints a line for each of CODES: the trouble code and what it stands for.
ExitCode describe(const std::vector<std::string>& codes);

} // namespace quobrix::cli
