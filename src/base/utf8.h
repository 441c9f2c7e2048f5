#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace quobrix {

/// The characters (code points) of a UTF-8 text.
inline std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u; }));
}

/// TEXT as valid UTF-8: bytes that are none become U+FFFD, one for each broken sequence.
std::string validUtf8(std::string_view text);

/// TEXT as one line that cannot disturb a terminal or a table: valid UTF-8, runs of blanks and control characters made
/// one blank, none at the ends.
std::string oneLine(std::string_view text);

/// TEXT with its line breaks as '\n' and its blanks as they are, but without anything else that a terminal would obey:
/// valid UTF-8, other control characters made blanks.
std::string harmlessLines(std::string_view text);

} // namespace quobrix
