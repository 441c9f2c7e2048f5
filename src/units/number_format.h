#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace quobrix {

/// Where the minus of a negative number stands; the numbers are those of the systems' locale tables.
enum class NegativeOrder : std::uint8_t {
    Parentheses,        ///< (1.1)
    LeadingMinus,       ///< -1.1
    LeadingMinusBlank,  ///< - 1.1
    TrailingMinus,      ///< 1.1-
    TrailingBlankMinus, ///< 1.1 -
};

/// Sizes of the digit groups before the decimal separator, from the right.
struct DigitGrouping {
    std::array<std::uint8_t, 4> sizes{3, 0, 0, 0}; ///< up to the first zero
    bool repeatsLast = true;                       ///< the last size goes on to the left

    /// From the locale tables' notation: "3;0" is 3, 3, 3 …, "3;2;0" is 3, 2, 2 …, "3" one group only, "0" none.
    /// What cannot be read as such means no grouping.
    static DigitGrouping parse(std::string_view text);
};

/// How the person's locale writes numbers (UTF-8); read once at start-up. The default is English.
struct NumberFormat {
    std::string decimalSeparator = ".";
    std::string thousandsSeparator = ",";
    DigitGrouping grouping;
    bool leadingZero = true; ///< 0.5 rather than .5
    NegativeOrder negativeOrder = NegativeOrder::LeadingMinus;
};

/// A number's text has at most this many characters (of up to four bytes each).
inline constexpr std::size_t kMaxNumberCharacters = 31;
/// A buffer of this size holds any number with any unit label.
inline constexpr std::size_t kValueTextSize = 4 * kMaxNumberCharacters + 36;
using ValueText = std::array<char, kValueTextSize>;

/// VALUE with DECIMALS (0 to 9, clamped) decimals, rounded as printf's "%.Nf" rounds, written into BUFFER without
/// allocating. What rounds to zero has no minus. A number that would need more than 31 characters is written with a
/// power of ten ("1.50e+40"), since a cut one would be a wrong one; not-a-number is "NaN", infinity "∞".
/// A buffer smaller than kValueTextSize may cut the text, between characters.
std::string_view formatNumber(const NumberFormat& format, double value, int decimals, std::span<char> buffer);
/// VALUE as a whole number and a fraction of 64ths, rounded to the nearest and reduced, as drills are sized: "1 47/64",
/// "3/8", "2". A number without 64ths of its own (beyond 2^46, or none at all) is written as formatNumber writes it.
std::string_view formatFraction(const NumberFormat& format, double value, std::span<char> buffer);
/// A whole number, from its digits.
std::string_view formatInteger(const NumberFormat& format, std::int64_t value, std::span<char> buffer);

} // namespace quobrix
