#pragma once

#include <string>
#include <string_view>

namespace quobrix {

// Windows' texts are UTF-16, the program's UTF-8. What is not valid in one becomes U+FFFD in the other.

std::wstring wide(std::string_view utf8);
std::string narrow(std::wstring_view utf16);

} // namespace quobrix
