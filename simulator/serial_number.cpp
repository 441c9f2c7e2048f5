#include "simulator/serial_number.h"

namespace quobrix::sim {

namespace {

constexpr std::int32_t kLetters = 26;
constexpr std::int32_t kDigitTexts = 10000;
constexpr std::int32_t kTexts = kLetters * kDigitTexts * kLetters;

constexpr bool between(char c, char low, char high) { return c >= low && c <= high; }

} // namespace

std::optional<std::int32_t> serialToNumber(std::string_view text) {
    if (text.size() != 8 || text[1] != '-' || text[6] != '-' || !between(text[0], 'A', 'Z') ||
        !between(text[7], 'A', 'Z'))
        return std::nullopt;
    std::int32_t digits = 0;
    for (const char c : text.substr(2, 4)) {
        if (!between(c, '0', '9'))
            return std::nullopt;
        digits = digits * 10 + (c - '0');
    }
    return ((text[0] - 'A') * kDigitTexts + digits) * kLetters + (text[7] - 'A') + 1;
}

std::optional<std::string> serialToText(std::int32_t number) {
    if (number < 1 || number > kTexts)
        return std::nullopt;
    const std::int32_t index = number - 1;
    std::string text = "A-0000-A";
    text[7] = static_cast<char>('A' + index % kLetters);
    text[0] = static_cast<char>('A' + index / kLetters / kDigitTexts);
    std::int32_t digits = index / kLetters % kDigitTexts;
    for (std::size_t i = 5; i >= 2; --i, digits /= 10)
        text[i] = static_cast<char>('0' + digits % 10);
    return text;
}

} // namespace quobrix::sim
