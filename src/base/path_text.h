#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace quobrix {

// Texts are UTF-8; paths are what the system makes of them. (path::string() is text of the code page on Windows.)

inline std::filesystem::path pathFromUtf8(std::string_view text) { return std::u8string(text.begin(), text.end()); }
inline std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace quobrix
