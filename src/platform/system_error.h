#pragma once

#include "base/path_text.h"
#include "base/result.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace quobrix {

/// The failure that the operating system reported last (errno or GetLastError) as an Error; the detail reads
/// "ACTION SUBJECT: the system's own words".
Error lastSystemError(std::string_view action, const std::filesystem::path& subject = {});

} // namespace quobrix
