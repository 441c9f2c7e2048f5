#pragma once

#include "support/text_file.h"

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quobrix::test {

struct Outcome {
    int exitCode = -1; ///< -1: ended by a signal
    std::string out, error;
};

enum class StandardOutput {
    Captured,
    None,      ///< the program is started without
    Abandoned, ///< a pipe that nobody reads any more
    Refusing,  ///< what takes nothing, such as a full disk
};

/// Windows throws away what a program writes that was started without standard output.
#ifdef _WIN32
inline constexpr bool kNoOutputIsNoFailure = true;
#else
inline constexpr bool kNoOutputIsNoFailure = false;
#endif

/// What is not as usual when a program runs.
struct Circumstances {
    std::map<std::string, std::string> environment;
    StandardOutput output = StandardOutput::Captured;
    double killedAfter = 0; ///< seconds; 0: never
};

/// Runs PROGRAM in FOLDER, which is also its user's home, with the logger library and ports of the simulator and the
/// time zone UTC. Several may run at once.
Outcome runProgram(const std::filesystem::path& folder, const std::string& program,
                   const std::vector<std::string>& arguments, const Circumstances& circumstances = {});

/// Names for what a program writes to its standard output and error, other ones each time.
std::pair<std::filesystem::path, std::filesystem::path> outputFiles(const std::filesystem::path& folder);

} // namespace quobrix::test
