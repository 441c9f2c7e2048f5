#include "settings/ini_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>

namespace quobrix {
namespace {

constexpr std::string_view kNameSpecials = "=[]#;";

bool isBlank(char c) { return c == ' ' || c == '\t'; }

/// SPECIALS, backslashes and control characters become \xHH, and so do blanks at either end, which editors strip.
std::string encode(std::string_view plain, std::string_view specials) {
    std::string out;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const char c = plain[i];
        const auto byte = static_cast<unsigned char>(c);
        const bool outerBlank = isBlank(c) && (i == 0 || i + 1 == plain.size());
        if (byte < 0x20 || c == '\\' || outerBlank || specials.find(c) != std::string_view::npos)
            fmt::format_to(std::back_inserter(out), "\\x{:02x}", byte);
        else
            out += c;
    }
    return out;
}

std::optional<std::string> decode(std::string_view encoded) {
    std::string out;
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] != '\\') {
            out += encoded[i];
            continue;
        }
        if (i + 3 >= encoded.size() || encoded[i + 1] != 'x')
            return std::nullopt;
        unsigned byte = 0;
        const char* const digits = encoded.data() + i + 2;
        if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2)
            return std::nullopt;
        out += static_cast<char>(byte);
        i += 3;
    }
    return out;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

IniText::IniText(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        while (line.ends_with('\r'))
            line.remove_suffix(1);
        lines_.push_back(parseLine(line));
    }
}

IniText::Line IniText::parseLine(std::string_view text) {
    Line other{Kind::Other, {}, {}, std::string(text)};
    const std::string_view line = trimmed(text);
    if (line.empty() || line.front() == '#' || line.front() == ';')
        return other;
    if (line.front() == '[') {
        const auto name = line.back() == ']' ? decode(line.substr(1, line.size() - 2)) : std::nullopt;
        return name ? Line{Kind::Section, *name, {}, std::string(text)} : other;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos)
        return other;
    const auto name = decode(trimmed(line.substr(0, equals)));
    const auto value = decode(trimmed(line.substr(equals + 1)));
    return name && value ? Line{Kind::Entry, *name, *value, std::string(text)} : other;
}

std::string IniText::value(std::string_view section, std::string_view name) const {
    std::string found;
    bool inside = false;
    for (const Line& line : lines_) {
        if (line.kind == Kind::Section)
            inside = line.name == section;
        else if (inside && line.kind == Kind::Entry && line.name == name)
            found = line.value;
    }
    return found;
}

void IniText::setValue(std::string_view section, std::string_view name, std::string_view value) {
    std::size_t insertAt = 0; // behind the last value of the section, or 0 when there is no such section
    bool inside = false;
    for (std::size_t i = 0; i < lines_.size();) {
        const Line& line = lines_[i];
        if (line.kind == Kind::Section)
            inside = line.name == section;
        if (inside && line.kind == Kind::Entry && line.name == name) {
            lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(i));
            insertAt = i;
            continue;
        }
        ++i;
        if (inside && line.kind != Kind::Other)
            insertAt = i;
    }
    if (value.empty())
        return;
    if (insertAt == 0) {
        if (!lines_.empty() && !lines_.back().text.empty())
            lines_.push_back({Kind::Other, {}, {}, {}});
        lines_.push_back({Kind::Section, std::string(section), {}, "[" + encode(section, kNameSpecials) + "]"});
        insertAt = lines_.size();
    }
    lines_.insert(
        lines_.begin() + static_cast<std::ptrdiff_t>(insertAt),
        {Kind::Entry, std::string(name), std::string(value), encode(name, kNameSpecials) + "=" + encode(value, {})});
}

std::string IniText::text() const {
    std::string out;
    for (const Line& line : lines_)
        out.append(line.text).append("\n");
    return out;
}

} // namespace quobrix
