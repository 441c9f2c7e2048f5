#include "drawing/text_measure.h"

#include "base/utf8.h"

#include <algorithm>
#include <cstdint>

namespace quobrix {
namespace {

// Widths in thousandths of the font's size, U+0020 to U+007E: Adobe's font metrics of Helvetica and Helvetica Bold.
constexpr std::uint16_t kRegular[] = {278,  278, 355, 556, 556, 889, 667, 222, 333, 333, 389, 584, 278, 333, 278, 278,
                                      556,  556, 556, 556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556,
                                      1015, 667, 667, 722, 722, 667, 611, 778, 722, 278, 500, 667, 556, 833, 722, 778,
                                      667,  778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 278, 278, 278, 469, 556,
                                      222,  556, 556, 500, 556, 556, 278, 556, 556, 222, 222, 500, 222, 833, 556, 556,
                                      556,  556, 333, 500, 278, 556, 500, 722, 500, 500, 500, 334, 260, 334, 584};
constexpr std::uint16_t kBold[] = {278, 333, 474, 556, 556, 889, 722, 278, 333, 333, 389, 584, 278, 333, 278, 278,
                                   556, 556, 556, 556, 556, 556, 556, 556, 556, 556, 333, 333, 584, 584, 584, 611,
                                   975, 722, 722, 722, 722, 667, 611, 778, 722, 278, 556, 722, 611, 833, 722, 778,
                                   667, 778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 333, 278, 333, 584, 556,
                                   278, 556, 611, 556, 611, 556, 333, 611, 611, 278, 278, 556, 278, 889, 611, 611,
                                   611, 611, 389, 556, 333, 611, 556, 778, 556, 556, 500, 389, 280, 389, 584};
static_assert(std::size(kRegular) == 95 && std::size(kBold) == 95);

// Of what the tables lack: letters with accents are as wide as plain ones, those of East Asia fill a square.
constexpr std::uint16_t kOther = 611;
constexpr std::uint16_t kSquare = 1000;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u; }

/// The end of the character that begins AT.
std::size_t nextCharacter(std::string_view text, std::size_t at) {
    do
        ++at;
    while (at < text.size() && isContinuation(text[at]));
    return at;
}

/// The beginning of the character that AT is in.
std::size_t characterAt(std::string_view text, std::size_t at) {
    while (at > 0 && at < text.size() && isContinuation(text[at]))
        --at;
    return at;
}

/// How much of TEXT, in bytes and whole characters, fits into WIDTH. What is measured stays in proportion to a line,
/// however long the text is.
std::size_t fitting(std::string_view text, FontRole font, double width, const TextMeasure& measure) {
    const auto fits = [&](std::size_t bytes) { return measure.width(text.substr(0, bytes), font) <= width; };
    std::size_t most = 0, tooMany = 0;
    for (std::size_t bytes = 64; tooMany == 0; bytes *= 2) {
        const std::size_t end = characterAt(text, std::min(bytes, text.size()));
        if (!fits(end))
            tooMany = end;
        else if (end == text.size())
            return end;
        else
            most = end;
    }
    for (;;) {
        std::size_t middle = characterAt(text, most + (tooMany - most) / 2);
        if (middle <= most)
            middle = nextCharacter(text, most);
        if (middle >= tooMany)
            return most;
        (fits(middle) ? most : tooMany) = middle;
    }
}

void wrapLine(std::vector<std::string>& lines, std::string_view line, FontRole font, double width,
              const TextMeasure& measure) {
    do {
        std::size_t end = fitting(line, font, width, measure);
        std::size_t next = end;
        if (end < line.size()) {
            if (const std::size_t blank = line.substr(0, end + 1).rfind(' '); blank != line.npos && blank > 0) {
                end = blank;
                next = std::min(line.find_first_not_of(' ', end), line.size());
            } else {
                next = end = std::max(end, nextCharacter(line, 0));
            }
        }
        lines.emplace_back(line.substr(0, end));
        line.remove_prefix(next);
    } while (!line.empty());
}

} // namespace

double TableTextMeasure::width(std::string_view text, FontRole font) const {
    const FontStyle style = fontStyle(font);
    std::size_t thousandths = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F)
            thousandths += (style.bold ? kBold : kRegular)[byte - 0x20];
        else if (byte >= 0xC0) // the first byte of a longer character; U+1000 and beyond begin with E1
            thousandths += byte < 0xE3 ? kOther : kSquare;
    }
    return static_cast<double>(thousandths) / 1000 * fontSize_ * style.scale;
}

std::string elided(std::string_view text, FontRole font, double width, const TextMeasure& measure) {
    constexpr std::string_view kEllipsis = "\u2026";
    if (measure.width(text, font) <= width)
        return std::string(text);
    const double room = width - measure.width(kEllipsis, font);
    if (room < 0)
        return {};
    std::string_view kept = text.substr(0, fitting(text, font, room, measure));
    kept = kept.substr(0, kept.find_last_not_of(' ') + 1);
    return std::string(kept).append(kEllipsis);
}

std::vector<std::string> wrapped(std::string_view text, FontRole font, double width, const TextMeasure& measure) {
    const std::string plain = harmlessLines(text);
    std::vector<std::string> lines;
    std::string_view rest = plain;
    for (std::size_t end = rest.find('\n'); end != rest.npos; end = rest.find('\n')) {
        wrapLine(lines, rest.substr(0, end), font, width, measure);
        rest.remove_prefix(end + 1);
    }
    wrapLine(lines, rest, font, width, measure);
    return lines;
}

} // namespace quobrix
