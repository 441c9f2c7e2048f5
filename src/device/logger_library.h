#pragma once

#include "base/result.h"
#include "device/quobrix.h"
#include "platform/environment.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace quobrix {

/// What a library call came to: QUOBRIX_OK, another code of quobrix.h, or a value that the library words itself.
using ResultCode = std::int32_t;

/// What every call comes to while there is no library. Libraries count their codes from zero and never get here.
inline constexpr ResultCode kNoLibrary = std::numeric_limits<ResultCode>::min();
/// A log file's path that the library's buffer cannot take.
inline constexpr ResultCode kPathTooLong = kNoLibrary + 1;
/// The logger answered with a serial number of another form than isSerialNumber().
inline constexpr ResultCode kBadSerialNumber = kNoLibrary + 2;
/// The library handed over nothing where there must be something.
inline constexpr ResultCode kNothingHandedOver = kNoLibrary + 3;
/// What is left out of an operation after the person has cancelled it.
inline constexpr ResultCode kCancelled = kNoLibrary + 4;
/// A command that would have lost what has not been downloaded.
inline constexpr ResultCode kLogsNotCurrent = kNoLibrary + 5;

/// The library's functions, all of them set. Tests fill one with a substitute's.
struct LoggerFunctions {
#define ENTRY(name) decltype(&::Quobrix##name) name = nullptr;
#include "device/logger_library.def"
#undef ENTRY
};

/// The functions, and what keeps them loaded.
struct LoggerLibrary {
    LoggerFunctions functions;
    std::shared_ptr<void> module{}; ///< empty for a substitute that is linked in
    std::string version{};          ///< what its file says of it, or the name of that
};

/// Where the library is looked for, an absolute path: the file, or the folder with the library in it, that OVERRIDE
/// names; without one the program's own folder. Empty if that is not known: the current folder may be anybody's.
std::filesystem::path
loggerLibraryPath(const std::filesystem::path& programFolder,
                  const std::optional<std::string>& override = environmentVariable("QUOBRIX_LIBRARY"));

/// Loads the library at PATH. The error's detail is one sentence for the user that names the file and, when it lacks
/// functions, the first of them: NotFound (no such file), Unsupported (it cannot be loaded, or lacks functions).
Result<LoggerLibrary> loadLoggerLibrary(const std::filesystem::path& path);

/// Functions that all come to kNoLibrary and hand nothing back: what stands in while there is no library.
LoggerFunctions absentLoggerFunctions();

} // namespace quobrix
