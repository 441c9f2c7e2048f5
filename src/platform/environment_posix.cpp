#include "platform/environment.h"

#include <cerrno>
#include <cstdlib>

namespace quobrix {

ProgramArguments::ProgramArguments(int argc, char** argv) : texts_(argv, argv + argc) {}

std::optional<std::string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? std::optional<std::string>(value) : std::nullopt;
}

void useUtf8Streams() {}

int streamError() { return errno; }

} // namespace quobrix
