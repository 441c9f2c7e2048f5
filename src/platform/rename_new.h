#pragma once

#include "base/result.h"

#include <filesystem>
#include <optional>

namespace quobrix {

// The ways of renameNew() on POSIX systems, the best first. Nothing: the file system does not offer that.

/// A rename that refuses what is there.
std::optional<Result<void>> renameNewInOneCall(const std::filesystem::path& from, const std::filesystem::path& to);
/// A second name, which is refused likewise, and then the first one away.
std::optional<Result<void>> renameNewByLink(const std::filesystem::path& from, const std::filesystem::path& to);
/// Takes the name with an empty file, which is refused likewise, and replaces that. A crash in between leaves it there.
Result<void> renameNewByPlaceholder(const std::filesystem::path& from, const std::filesystem::path& to);

} // namespace quobrix
