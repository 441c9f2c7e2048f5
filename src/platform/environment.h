#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quobrix {

/// What a program was started with, as UTF-8. On Windows main() and getenv() have it in the user's code page, which
/// lacks most letters.
class ProgramArguments {
public:
    /// From the parameters of main().
    ProgramArguments(int argc, char** argv);

    int count() const { return static_cast<int>(texts_.size()); }
    /// Each ending in a NUL, the program's name first; valid as long as this object.
    std::vector<const char*> texts() const;

private:
    std::vector<std::string> texts_;
};

/// The variable of the environment called NAME; nothing if it is not set, or empty.
std::optional<std::string> environmentVariable(const char* name);

/// From now on the standard streams take and give the program's bytes, UTF-8, as they are: no line ends are changed on
/// their way, and a terminal shows them as UTF-8.
void useUtf8Streams();

/// Why the last write to a standard stream failed, as an errno value: EPIPE if its reader has gone.
int streamError();

} // namespace quobrix
