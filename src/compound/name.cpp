#include "compound/name.h"

#include <chrono>

namespace quobrix::cfb {

namespace {

/// Simple upper-casing of the scripts whose letters foreign files are likely to be named in.
char16_t upper(char16_t unit) {
    if (unit < 0x80)
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    const auto within = [unit](char16_t first, char16_t last) { return unit >= first && unit <= last; };
    if ((within(0xE0, 0xFE) && unit != 0xF7) || (within(0x3B1, 0x3CB) && unit != 0x3C2) || within(0x430, 0x44F))
        return static_cast<char16_t>(unit - 32);
    if (within(0x450, 0x45F))
        return static_cast<char16_t>(unit - 80);
    if (unit == 0xFF)
        return 0x178;
    // Latin Extended-A and Cyrillic beyond the basic alphabet go in pairs, upper before lower.
    const bool oddIsLower = (within(0x100, 0x137) && unit != 0x131) || within(0x14A, 0x177) || within(0x460, 0x481);
    const bool evenIsLower = within(0x139, 0x148) || within(0x179, 0x17E);
    if ((oddIsLower && unit % 2 == 1) || (evenIsLower && unit % 2 == 0))
        return static_cast<char16_t>(unit - 1);
    return unit;
}

/// Different in every run, so that a file cannot be made whose names all collide in the index and take forever.
const auto kSeed = static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());

} // namespace

std::uint32_t EntryName::hash() const {
    std::uint32_t hash = kSeed ^ length_;
    for (std::uint32_t i = 0; i < length_; ++i)
        hash = (hash ^ upper((*this)[i])) * 0x9E3779B1u;
    return hash ^ hash >> 15;
}

int compareNames(EntryName a, EntryName b) {
    if (a.length() != b.length())
        return a.length() < b.length() ? -1 : 1;
    for (std::uint32_t i = 0; i < a.length(); ++i)
        if (const int difference = upper(a[i]) - upper(b[i]); difference != 0)
            return difference;
    return 0;
}

std::optional<NameField> NameField::fromText(std::string_view text) {
    NameField field;
    const auto append = [&field](char32_t unit) {
        if (field.length < kMostUnits)
            store16(field.bytes.data() + 2 * field.length, static_cast<std::uint16_t>(unit));
        ++field.length;
    };
    for (std::size_t i = 0; i < text.size() && field.length <= kMostUnits;) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t width = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (width == 0 || width > text.size() - i)
            return {};
        char32_t c = width == 1 ? lead : lead & (0x7Fu >> width);
        for (std::size_t k = 1; k < width; ++k)
            c = c << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3Fu);
        if (c >= 0x10000) {
            append(0xD800 + ((c - 0x10000) >> 10 & 0x3FF));
            append(0xDC00 + (c & 0x3FF));
        } else {
            append(c);
        }
        i += width;
    }
    if (field.length == 0 || field.length > kMostUnits)
        return {};
    return field;
}

std::string EntryName::text() const {
    std::string text;
    for (std::uint32_t i = 0; i < length_; ++i) {
        char32_t c = (*this)[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < length_ && (*this)[i + 1] >= 0xDC00 && (*this)[i + 1] < 0xE000)
            c = 0x10000 + ((c - 0xD800) << 10) + ((*this)[++i] - 0xDC00u);
        const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (c >> shift & 0x3F)); };
        if (c < 0x80) {
            text += static_cast<char>(c);
        } else if (c < 0x800) {
            text += static_cast<char>(0xC0 | c >> 6);
            tail(0);
        } else if (c < 0x10000) {
            text += static_cast<char>(0xE0 | c >> 12);
            tail(6);
            tail(0);
        } else {
            text += static_cast<char>(0xF0 | c >> 18);
            tail(12);
            tail(6);
            tail(0);
        }
    }
    return text;
}

} // namespace quobrix::cfb
