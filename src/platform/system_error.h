#pragma once

#include "base/result.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace quobrix {

/// The failure that the operating system reported last (errno or GetLastError) as an Error; the detail reads
/// "ACTION SUBJECT: the system's own words".
Error lastSystemError(std::string_view action, const std::filesystem::path& subject = {});

/// PATH as UTF-8 text for a detail line.
inline std::string pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace quobrix
