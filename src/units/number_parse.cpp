#include "units/number_parse.h"

#include "texts/text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace quobrix {
namespace {

constexpr std::string_view kMinusSign = "\u2212";
// What is written for a blank between digits or before a unit, and for an apostrophe between digits.
constexpr std::string_view kBlanks[] = {" ", "\t", "\u00A0", "\u202F", "\u2009"};
constexpr std::string_view kApostrophes[] = {"'", "\u2019"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool takeFront(std::string_view& text, std::string_view part) {
    if (part.empty() || !text.starts_with(part))
        return false;
    text.remove_prefix(part.size());
    return true;
}

bool takeBack(std::string_view& text, std::string_view part) {
    if (part.empty() || !text.ends_with(part))
        return false;
    text.remove_suffix(part.size());
    return true;
}

void trim(std::string_view& text) {
    for (bool found = true; found;) {
        found = false;
        for (const std::string_view blank : kBlanks)
            found = takeFront(text, blank) || takeBack(text, blank) || found;
    }
}

/// Takes the minus off TEXT, wherever a locale writes it; false if there is more than one.
bool takeSign(std::string_view& text, bool& negative) {
    int signs = 0;
    if (text.size() >= 2 && text.front() == '(' && text.back() == ')') {
        text = text.substr(1, text.size() - 2);
        ++signs;
    }
    for (const std::string_view minus : {std::string_view("-"), kMinusSign})
        signs += takeFront(text, minus) + takeBack(text, minus);
    negative = signs > 0;
    if (signs == 0)
        takeFront(text, "+");
    trim(text);
    return signs <= 1;
}

/// The thousands separator of FORMAT, or one that people type for it, off the front of TEXT.
bool takeGroupSeparator(const NumberFormat& format, std::string_view& text) {
    if (takeFront(text, format.thousandsSeparator))
        return true;
    for (const auto& alike :
         {std::span<const std::string_view>(kBlanks), std::span<const std::string_view>(kApostrophes)})
        for (const std::string_view separator : alike)
            if (separator == format.thousandsSeparator)
                for (const std::string_view other : alike)
                    if (takeFront(text, other))
                        return true;
    return false;
}

/// Whether groups of these lengths, from the left, stand as GROUPING writes them.
bool groupsFit(const DigitGrouping& grouping, std::span<const std::size_t> lengths) {
    std::size_t sizes = 0;
    while (sizes < grouping.sizes.size() && grouping.sizes[sizes] != 0)
        ++sizes;
    if (sizes == 0)
        return false;
    for (std::size_t fromRight = 0; fromRight < lengths.size(); ++fromRight) {
        const std::size_t length = lengths[lengths.size() - 1 - fromRight];
        const bool leftmost = fromRight + 1 == lengths.size();
        if (fromRight >= sizes && !grouping.repeatsLast)
            return leftmost; // all that is left stands together
        const std::size_t wanted = grouping.sizes[std::min(fromRight, sizes - 1)];
        if (leftmost ? length > wanted : length != wanted)
            return false;
    }
    return true;
}

/// The digits before the decimal separator, without group separators; false if those stand where they should not.
bool takeWhole(const NumberFormat& format, std::string_view& text, std::string& digits) {
    std::array<std::size_t, kMaxNumberCharacters> lengths{};
    std::size_t groups = 0;
    for (;;) {
        const std::size_t begin = digits.size();
        while (!text.empty() && isDigit(text.front())) {
            digits += text.front();
            text.remove_prefix(1);
        }
        if (groups == lengths.size())
            return false;
        lengths[groups++] = digits.size() - begin;
        std::string_view rest = text;
        if (digits.empty() || !takeGroupSeparator(format, rest) || rest.empty() || !isDigit(rest.front()))
            break;
        text = rest;
    }
    return groups == 1 || groupsFit(format.grouping, {lengths.data(), groups});
}

bool takeDecimalSeparator(const NumberFormat& format, std::string_view& text) {
    return takeFront(text, format.decimalSeparator) || (format.thousandsSeparator != "." && takeFront(text, "."));
}

/// TEXT in the C notation; empty if it is no number.
std::string plainNumber(const NumberFormat& format, std::string_view text, bool wholeOnly) {
    // No number that anybody means is longer, and what is pasted may be.
    constexpr std::size_t kLongest = 400;
    trim(text);
    bool negative = false;
    if (text.size() > kLongest || !takeSign(text, negative))
        return {};
    std::string digits;
    if (!takeWhole(format, text, digits))
        return {};
    bool any = !digits.empty();
    if (!wholeOnly && takeDecimalSeparator(format, text)) {
        digits += digits.empty() ? "0." : ".";
        const std::size_t begin = digits.size();
        while (!text.empty() && isDigit(text.front())) {
            digits += text.front();
            text.remove_prefix(1);
        }
        any = any || digits.size() > begin;
        if (digits.back() == '.')
            digits.pop_back();
    }
    if (!any)
        return {};
    if (!wholeOnly && !text.empty() && (text.front() == 'e' || text.front() == 'E')) {
        text.remove_prefix(1);
        digits += 'e';
        if (takeFront(text, "-"))
            digits += '-';
        else
            takeFront(text, "+");
        if (text.empty())
            return {};
        while (!text.empty() && isDigit(text.front())) {
            digits += text.front();
            text.remove_prefix(1);
        }
    }
    return text.empty() ? (negative ? "-" + digits : digits) : std::string();
}

template <class T>
std::optional<T> convert(const std::string& plain) {
    T value{};
    const char* const last = plain.data() + plain.size();
    const auto [end, error] = std::from_chars(plain.data(), last, value);
    if (plain.empty() || error != std::errc{} || end != last)
        return {};
    return value;
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

/// Takes NAME and the blanks before it off the end of TEXT.
bool takeName(std::string_view& text, std::string_view name, bool anyCase) {
    if (name.empty() || text.size() < name.size())
        return false;
    const std::string_view end = text.substr(text.size() - name.size());
    for (std::size_t i = 0; i < name.size(); ++i)
        if (end[i] != name[i] && !(anyCase && lower(end[i]) == lower(name[i])))
            return false;
    text.remove_suffix(name.size());
    trim(text);
    return true;
}

} // namespace

std::optional<double> parseNumber(const NumberFormat& format, std::string_view text) {
    const std::optional<double> value = convert<double>(plainNumber(format, text, false));
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int64_t> parseInteger(const NumberFormat& format, std::string_view text) {
    return convert<std::int64_t>(plainNumber(format, text, true));
}

std::optional<double> parseValue(const TUnitSystem& units, UnitTypeId type, std::string_view text) {
    const NumberFormat& format = units.locale().numbers;
    if (const auto number = parseNumber(format, text))
        return units.toBase(type, *number);
    trim(text);
    const auto inUnit = [&](UnitId unit, bool anyCase) -> std::optional<double> {
        std::string_view rest = text;
        const UnitRecord& record = unitRecord(unit);
        if (!takeName(rest, record.name, anyCase) && !takeName(rest, record.nameOfOne(), anyCase) &&
            !takeName(rest, quobrix::text(record.shownName), anyCase))
            return {};
        const std::optional<double> number = parseNumber(format, rest);
        return number ? std::optional(unitRecord(unit).toBase(*number)) : std::nullopt;
    };
    // The current unit first, and exact spelling before any other: names differ by case alone (Mb and MB).
    for (const bool anyCase : {false, true}) {
        if (const auto value = inUnit(units.unit(type), anyCase))
            return value;
        for (const UnitId unit : unitTypeRecord(type).units)
            if (const auto value = inUnit(unit, anyCase))
                return value;
    }
    return {};
}

} // namespace quobrix
