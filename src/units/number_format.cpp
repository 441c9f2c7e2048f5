#include "units/number_format.h"

#include "base/utf8.h"
#include "units/text_writer.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <numeric>

namespace quobrix {
namespace {

/// Bit k is set where a separator stands before the last k digits of a number.
std::uint64_t separatorPlaces(const DigitGrouping& grouping, std::size_t digits) {
    std::uint64_t places = 0;
    std::size_t place = 0;
    for (std::size_t i = 0; i < grouping.sizes.size() && grouping.sizes[i] != 0;) {
        place += grouping.sizes[i];
        if (place >= digits)
            break;
        places |= std::uint64_t{1} << place;
        const bool last = i + 1 == grouping.sizes.size() || grouping.sizes[i + 1] == 0;
        if (!last)
            ++i;
        else if (!grouping.repeatsLast)
            break;
    }
    return places;
}

struct SignText {
    std::string_view before, after;
};

SignText signText(NegativeOrder order) {
    switch (order) {
    case NegativeOrder::Parentheses:
        return {"(", ")"};
    case NegativeOrder::LeadingMinusBlank:
        return {"- ", ""};
    case NegativeOrder::TrailingMinus:
        return {"", "-"};
    case NegativeOrder::TrailingBlankMinus:
        return {"", " -"};
    case NegativeOrder::LeadingMinus:
        break;
    }
    return {"-", ""};
}

/// The digits of a number without sign: at most 63 before the point.
struct Digits {
    std::string_view whole, fraction;
};

/// Writes DIGITS with sign and separators; false if that takes more than the characters allowed.
bool compose(const NumberFormat& format, Digits digits, bool negative, TextWriter& writer) {
    if (!format.leadingZero && digits.whole == "0" && !digits.fraction.empty())
        digits.whole = {};
    const std::uint64_t places = separatorPlaces(format.grouping, digits.whole.size());
    const SignText sign = negative ? signText(format.negativeOrder) : SignText{};

    // There are fewer separators than digits, and no more characters than bytes, so only long numbers are counted.
    const std::size_t others = sign.before.size() + sign.after.size() + digits.fraction.size();
    if (digits.whole.size() * (1 + format.thousandsSeparator.size()) + format.decimalSeparator.size() + others >
        kMaxNumberCharacters) {
        std::size_t length = digits.whole.size() + others;
        length += static_cast<std::size_t>(std::popcount(places)) * characterCount(format.thousandsSeparator);
        if (!digits.fraction.empty())
            length += characterCount(format.decimalSeparator);
        if (length > kMaxNumberCharacters)
            return false;
    }

    writer.append(sign.before);
    std::size_t from = 0;
    for (std::uint64_t left = places; left != 0;) {
        const auto place = static_cast<std::size_t>(std::bit_width(left) - 1);
        writer.append(digits.whole.substr(from, digits.whole.size() - place - from));
        writer.append(format.thousandsSeparator);
        from = digits.whole.size() - place;
        left &= ~(std::uint64_t{1} << place);
    }
    writer.append(digits.whole.substr(from));
    if (!digits.fraction.empty()) {
        writer.append(format.decimalSeparator);
        writer.append(digits.fraction);
    }
    writer.append(sign.after);
    return true;
}

bool allZero(std::string_view digits) { return digits.find_first_not_of('0') == std::string_view::npos; }

using DigitText = std::array<char, 48>; // 31 digits, the point, 9 decimals

/// The digits of MAGNITUDE (below 1e31), rounded to DECIMALS from its exact binary value, ties to even.
Digits printDigits(double magnitude, int decimals, DigitText& text) {
    constexpr double kPowers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    const auto count = static_cast<std::size_t>(decimals);
    const double power = kPowers[count];
    const double scaled = magnitude * power;
    if (scaled >= 0x1p52) {
        const char* end = std::to_chars(text.begin(), text.end(), magnitude, std::chars_format::fixed, decimals).ptr;
        const auto size = static_cast<std::size_t>(end - text.data());
        if (count == 0)
            return {{text.data(), size}, {}};
        return {{text.data(), size - count - 1}, {end - count, count}};
    }
    // Below 2^52 an integer is rounded and printed instead, which takes a third of the time. The product's own rounding
    // error is less than the distance of any fraction but exactly one half from one half, so it only decides ties.
    const double error = std::fma(magnitude, power, -scaled);
    auto integer = static_cast<std::uint64_t>(scaled);
    const double fraction = scaled - static_cast<double>(integer);
    if (fraction > 0.5 || (fraction == 0.5 && (error > 0 || (error == 0 && integer % 2 == 1))))
        ++integer;
    constexpr std::size_t kZeros = 10; // before the integer, for "0.05"
    std::fill_n(text.begin(), kZeros, '0');
    const char* end = std::to_chars(text.begin() + kZeros, text.end(), integer).ptr;
    const auto size = std::max(static_cast<std::size_t>(end - text.data()) - kZeros, count + 1);
    return {{end - size, size - count}, {end - count, count}};
}

std::string_view withPowerOfTen(const NumberFormat& format, double magnitude, bool negative, int decimals,
                                TextWriter writer) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.begin(), text.end(), magnitude, std::chars_format::scientific, decimals).ptr;
    const std::string_view digits(text.data(), static_cast<std::size_t>(end - text.data()));
    const SignText sign = negative ? signText(format.negativeOrder) : SignText{};
    writer.append(sign.before);
    writer.append(digits.substr(0, 1));
    if (decimals > 0) {
        writer.append(format.decimalSeparator);
        writer.append(digits.substr(2, static_cast<std::size_t>(decimals)));
    }
    writer.append(digits.substr(digits.find('e')));
    writer.append(sign.after);
    return writer.text();
}

} // namespace

DigitGrouping DigitGrouping::parse(std::string_view text) {
    DigitGrouping grouping{{}, false};
    std::size_t count = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        unsigned size = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + end, size);
        if (error != std::errc{} || stop != text.data() + end || size > 9)
            return {{}, false};
        text.remove_prefix(std::min(end + 1, text.size()));
        if (size == 0) { // stands only at the end
            grouping.repeatsLast = count > 0;
            return text.empty() ? grouping : DigitGrouping{{}, false};
        }
        if (count == grouping.sizes.size())
            return {{}, false};
        grouping.sizes[count++] = static_cast<std::uint8_t>(size);
    }
    return grouping;
}

std::string_view formatNumber(const NumberFormat& format, double value, int decimals, std::span<char> buffer) {
    decimals = std::clamp(decimals, 0, 9);
    const double magnitude = std::fabs(value);
    TextWriter writer(buffer);
    if (std::isnan(value)) {
        writer.append("NaN");
        return writer.text();
    }
    if (std::isinf(value)) {
        const SignText sign = value < 0 ? signText(format.negativeOrder) : SignText{};
        for (const std::string_view part : {sign.before, std::string_view("∞"), sign.after})
            writer.append(part);
        return writer.text();
    }
    if (magnitude >= 1e31)
        return withPowerOfTen(format, magnitude, value < 0, decimals, writer);

    DigitText text;
    const Digits parts = printDigits(magnitude, decimals, text);
    const bool negative = value < 0 && !(allZero(parts.whole) && allZero(parts.fraction));
    if (!compose(format, parts, negative, writer))
        return withPowerOfTen(format, magnitude, negative, decimals, writer);
    return writer.text();
}

std::string_view formatFraction(const NumberFormat& format, double value, std::span<char> buffer) {
    constexpr double kLimit = 0x1p46;
    constexpr std::int64_t kParts = 64;
    if (!(std::fabs(value) < kLimit))
        return formatNumber(format, value, 0, buffer);
    const std::int64_t count = std::llround(std::fabs(value) * kParts);
    const std::int64_t whole = count / kParts;
    const std::int64_t part = count % kParts;
    std::array<char, 24> text;
    const auto digits = [&](std::int64_t number) {
        const char* end = std::to_chars(text.begin(), text.end(), number).ptr;
        return std::string_view(text.data(), static_cast<std::size_t>(end - text.data()));
    };
    TextWriter writer(buffer);
    const SignText sign = value < 0 && count != 0 ? signText(format.negativeOrder) : SignText{};
    writer.append(sign.before);
    if (whole != 0 || part == 0)
        compose(format, {digits(whole), {}}, false, writer);
    if (part != 0) {
        const std::int64_t common = std::gcd(part, kParts);
        writer.append(whole != 0 ? " " : "");
        writer.append(digits(part / common));
        writer.append("/");
        writer.append(digits(kParts / common));
    }
    writer.append(sign.after);
    return writer.text();
}

std::string_view formatInteger(const NumberFormat& format, std::int64_t value, std::span<char> buffer) {
    std::array<char, 24> text;
    const auto end = std::to_chars(text.begin(), text.end(), value).ptr;
    const std::size_t sign = value < 0 ? 1 : 0;
    const std::string_view digits(text.data() + sign, static_cast<std::size_t>(end - text.data()) - sign);
    TextWriter writer(buffer);
    if (!compose(format, {digits, {}}, value < 0, writer))
        return withPowerOfTen(format, std::fabs(static_cast<double>(value)), value < 0, 9, writer);
    return writer.text();
}

} // namespace quobrix
