#include "base/fold_case.h"

#include <cstdint>

namespace quobrix {
namespace {

/// Letters that two bytes of UTF-8 hold (U+0080 to U+07FF).
std::uint32_t lowerOfTwoBytes(std::uint32_t c) {
    if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3AB) || (c >= 0x410 && c <= 0x42F))
        return c + 0x20;
    if (c >= 0x400 && c <= 0x40F)
        return c + 0x50;
    if (c == 0x178)
        return 0xFF; // Ÿ
    const bool evenIsUpper = (c >= 0x100 && c <= 0x137 && c != 0x130 && c != 0x131) || (c >= 0x14A && c <= 0x177) ||
                             (c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F);
    if (evenIsUpper)
        return c | 1;
    const bool oddIsUpper = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    if (oddIsUpper)
        return c + (c & 1);
    switch (c) { // Greek letters with accents, and the sigma at the end of a word
    case 0x386:
        return 0x3AC;
    case 0x388:
    case 0x389:
    case 0x38A:
        return c + 37;
    case 0x38C:
        return 0x3CC;
    case 0x38E:
    case 0x38F:
        return c + 63;
    case 0x3C2:
        return 0x3C3;
    default:
        return c;
    }
}

} // namespace

void foldCase(std::string_view text, std::string& result) {
    result.assign(text);
    for (std::size_t i = 0; i < result.size(); ++i) {
        const auto first = static_cast<unsigned char>(result[i]);
        if (first < 0x80) {
            if (first >= 'A' && first <= 'Z')
                result[i] = static_cast<char>(first + 32);
            continue;
        }
        if (first < 0xC2 || first > 0xDF || i + 1 == result.size())
            continue;
        const auto second = static_cast<unsigned char>(result[i + 1]);
        if ((second & 0xC0) != 0x80)
            continue;
        const std::uint32_t lower = lowerOfTwoBytes((first & 0x1Fu) << 6 | (second & 0x3Fu));
        result[i] = static_cast<char>(0xC0 | lower >> 6);
        result[++i] = static_cast<char>(0x80 | (lower & 0x3F));
    }
}

std::string foldCase(std::string_view text) {
    std::string result;
    foldCase(text, result);
    return result;
}

} // namespace quobrix
