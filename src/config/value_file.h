#pragma once

#include "base/result.h"
#include "platform/file_system.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace quobrix {

/// Writes the text of values to PATH, whole or not at all.
Result<void> saveValues(std::string_view text, const std::filesystem::path& path, IfThere ifThere);

/// The text in PATH. The errors are those of readFile(), and NotADocument for what is too large to be one.
Result<std::string> loadValues(const std::filesystem::path& path);

/// ERROR, of loadValues() or of what reads the text, is about what is in the file.
bool isNoValues(const Error& error);

} // namespace quobrix
