#pragma once

#include "base/result.h"
#include "device/logger_status.h"
#include "platform/file_system.h"

#include <filesystem>

namespace quobrix {

/// Writes CONFIGURATION as a text to PATH, whole or not at all.
Result<void> saveConfiguration(const LoggerConfiguration& configuration, const std::filesystem::path& path,
                               IfThere ifThere);

/// What the text in PATH tells. The errors are those of readFile() and readConfigurationText(); what is too large is no
/// configuration.
Result<LoggerConfiguration> loadConfiguration(const std::filesystem::path& path);

/// ERROR, of loadConfiguration(), is about what is in the file.
bool isNoConfiguration(const Error& error);

} // namespace quobrix
