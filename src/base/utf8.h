#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace quobrix {

/// The characters (code points) of a UTF-8 text.
inline std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u; }));
}

} // namespace quobrix
