#pragma once

#include <filesystem>

#ifdef _WIN32
#include "platform/wide_text.h"

#include <windows.h>
#else
#include <cstdlib>
#endif

namespace quobrix::test {

/// Lets the environment's variable NAME lead to PATH, for this program and those that it starts.
inline bool setVariable(const char* name, const std::filesystem::path& path) {
#ifdef _WIN32
    return SetEnvironmentVariableW(wide(name).c_str(), path.c_str());
#else
    return ::setenv(name, path.c_str(), 1) == 0;
#endif
}

} // namespace quobrix::test
