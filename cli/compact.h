#pragma once

#include "cli/output.h"

#include <string>

namespace quobrix::cli {

/// Removes the unused space from the document FILE and prints its size before and after. A failure leaves it as it was.
ExitCode compact(const std::string& file);

} // namespace quobrix::cli
