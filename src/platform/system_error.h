#pragma once

#include "base/path_text.h"
#include "base/result.h"
#include "texts/source_text.h"

#include <filesystem>

namespace quobrix {

/// The failure that the operating system reported last (errno or GetLastError) as an Error; the detail reads
/// "ACTION SUBJECT: the system's own words".
Error lastSystemError(SourceText action, const std::filesystem::path& subject = {});

} // namespace quobrix
