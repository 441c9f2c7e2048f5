#pragma once

#include "cli/output.h"
#include "platform/environment.h"

namespace quobrix::cli {

/// The program with ARGUMENTS. Does not catch what memory runs out with.
ExitCode run(const ProgramArguments& arguments);

} // namespace quobrix::cli
