#pragma once

#include <string>
#include <string_view>

namespace quobrix {

/// TEXT (UTF-8) with every letter of the Latin, Greek and Cyrillic alphabets in lower case, letter by letter, whatever
/// the locale; texts that differ in case alone become the same. Everything else, bad bytes included, stays.
std::string foldCase(std::string_view text);
/// The same into RESULT, whose memory is reused.
void foldCase(std::string_view text, std::string& result);

} // namespace quobrix
