#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quobrix::cli {

/// TEXT as valid UTF-8: bytes that are none become U+FFFD, one for each broken sequence.
std::string validUtf8(std::string_view text);

/// TEXT as one line that cannot disturb a terminal: valid UTF-8, runs of blanks and control characters made one blank,
/// none at the ends.
std::string oneLine(std::string_view text);

/// Characters of valid UTF-8, each counted as one column.
std::size_t textWidth(std::string_view text);

} // namespace quobrix::cli
