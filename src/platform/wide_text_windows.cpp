#include "platform/wide_text.h"

#include <windows.h>

namespace quobrix {

std::wstring wide(std::string_view utf8) {
    const int length = static_cast<int>(utf8.size());
    std::wstring result(utf8.size(), L'\0'); // no character has more units than bytes
    result.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, result.data(), static_cast<int>(result.size()))));
    return result;
}

std::string narrow(std::wstring_view utf16) {
    const int length = static_cast<int>(utf16.size());
    std::string result(3 * utf16.size(), '\0'); // the most bytes of a unit
    result.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, result.data(),
                                                               static_cast<int>(result.size()), nullptr, nullptr)));
    return result;
}

} // namespace quobrix
