#include "base/utf8.h"

#include <algorithm>
#include <cstdint>

namespace quobrix {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::uint8_t byteAt(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<std::uint8_t>(text[at]) : 0;
}

/// What a sequence begins with and what its second byte may be, of the table of well-formed UTF-8 byte sequences in the
/// Unicode Standard (3-7); all further bytes are 80 to BF.
struct Sequence {
    std::uint8_t first, last, secondFrom, secondTo;
    std::size_t length;
};
constexpr Sequence kSequences[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

/// The bytes of the control character that VALID has AT; 0 if there is none. Beside the ASCII ones there are U+0080 to
/// U+009F, and what turns the direction of all that follows: U+202A to U+202E, and U+2066 to U+2069.
std::size_t controlAt(std::string_view valid, std::size_t at) {
    const std::uint8_t byte = byteAt(valid, at);
    if (byte < 0x20 || byte == 0x7F)
        return 1;
    if (byte == 0xC2 && byteAt(valid, at + 1) < 0xA0)
        return 2;
    const std::uint8_t second = byteAt(valid, at + 1), third = byteAt(valid, at + 2);
    const bool turns =
        (second == 0x80 && third >= 0xAA && third <= 0xAE) || (second == 0x81 && third >= 0xA6 && third <= 0xA9);
    return byte == 0xE2 && turns ? 3 : 0;
}

} // namespace

std::string validUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::uint8_t lead = byteAt(text, at);
        const auto* sequence =
            std::ranges::find_if(kSequences, [&](const Sequence& s) { return s.first <= lead && lead <= s.last; });
        const bool known = sequence != std::end(kSequences);
        std::size_t length = 1;
        while (known && length < sequence->length) {
            const std::uint8_t next = byteAt(text, at + length);
            const std::uint8_t from = length == 1 ? sequence->secondFrom : std::uint8_t{0x80};
            const std::uint8_t to = length == 1 ? sequence->secondTo : std::uint8_t{0xBF};
            if (next < from || next > to)
                break;
            ++length;
        }
        result += known && length == sequence->length ? text.substr(at, length) : kReplacement;
        at += length;
    }
    return result;
}

std::string oneLine(std::string_view text) {
    const std::string valid = validUtf8(text);
    std::string result;
    for (std::size_t at = 0; at < valid.size();) {
        const std::size_t control = controlAt(valid, at);
        if (control == 0 && valid[at] != ' ')
            result += valid[at];
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
        at += std::max<std::size_t>(control, 1);
    }
    if (!result.empty() && result.back() == ' ')
        result.pop_back();
    return result;
}

std::string harmlessLines(std::string_view text) {
    const std::string valid = validUtf8(text);
    std::string result;
    result.reserve(valid.size());
    for (std::size_t at = 0; at < valid.size();) {
        const std::size_t control = valid[at] == '\n' ? 0 : controlAt(valid, at);
        if (valid[at] != '\r' || byteAt(valid, at + 1) != '\n')
            result += control == 0 ? valid[at] : ' ';
        at += std::max<std::size_t>(control, 1);
    }
    return result;
}

} // namespace quobrix
