#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quobrix::test {

struct Outcome {
    int exitCode = -1; ///< -1: ended by a signal
    std::string out, error;
};

/// Runs PROGRAM in FOLDER, which is also its user's home, with the logger library and ports of the simulator and the
/// time zone UTC. REDIRECT is put behind the command, in place of the capture of standard output.
Outcome runProgram(const std::filesystem::path& folder, const std::string& program,
                   const std::vector<std::string>& arguments, const std::string& redirect = {});

std::string contentOf(const std::filesystem::path& file);

} // namespace quobrix::test
