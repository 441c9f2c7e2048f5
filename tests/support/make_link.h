#pragma once

#include <filesystem>

namespace quobrix::test {

/// A symbolic link LINK that leads to TARGET. False where the system, or the library for it, has none: Windows gives
/// them to few users, Wine to none.
inline bool makeLink(const std::filesystem::path& target, const std::filesystem::path& link) {
    std::error_code failed;
    std::filesystem::create_symlink(target, link, failed);
    return !failed;
}

inline constexpr const char* kNoLinks = "this system makes no symbolic links";

} // namespace quobrix::test
