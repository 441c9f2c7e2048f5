#include "units/number_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

namespace quobrix {
namespace {

std::string text(const NumberFormat& format, double value, int decimals) {
    ValueText buffer;
    return std::string(formatNumber(format, value, decimals, buffer));
}

NumberFormat locale(const char* decimal, const char* thousands, const char* grouping) {
    NumberFormat format;
    format.decimalSeparator = decimal;
    format.thousandsSeparator = thousands;
    format.grouping = DigitGrouping::parse(grouping);
    return format;
}

TEST(NumberFormat, FollowsTheLocale) {
    const double value = -1234567.891;
    EXPECT_EQ(text({}, value, 2), "-1,234,567.89");
    EXPECT_EQ(text(locale(",", ".", "3;0"), value, 2), "-1.234.567,89");   // German
    EXPECT_EQ(text(locale(".", "’", "3;0"), value, 2), "-1’234’567.89");   // Swiss
    EXPECT_EQ(text(locale(".", ",", "3;2;0"), value, 2), "-12,34,567.89"); // Indian
    EXPECT_EQ(text(locale("٫", "٬", "3;0"), value, 2), "-1٬234٬567٫89");   // Arabic
    EXPECT_EQ(text(locale(".", ",", "3"), value, 2), "-1234,567.89");
    EXPECT_EQ(text(locale(".", ",", "0"), value, 2), "-1234567.89");
    EXPECT_EQ(text(locale(".", ",", "3;x"), value, 2), "-1234567.89");
    EXPECT_EQ(text({}, 999.5, 0), "1,000");
    EXPECT_EQ(text({}, 999.4, 0), "999");

    ValueText buffer;
    EXPECT_EQ(formatInteger({}, std::numeric_limits<std::int64_t>::min(), buffer), "-9,223,372,036,854,775,808");
    EXPECT_EQ(formatInteger(locale(".", ",", "3;2;0"), 10000000, buffer), "1,00,00,000");
}

TEST(NumberFormat, PlacesTheMinusAndTheLeadingZero) {
    NumberFormat format;
    const char* expected[] = {"(0.5)", "-0.5", "- 0.5", "0.5-", "0.5 -"};
    for (int order = 0; order < 5; ++order) {
        format.negativeOrder = static_cast<NegativeOrder>(order);
        EXPECT_EQ(text(format, -0.5, 1), expected[order]);
        EXPECT_EQ(text(format, -0.04, 1), "0.0") << "what rounds to zero has no minus";
        EXPECT_EQ(text(format, -0.0, 0), "0");
    }
    format.negativeOrder = NegativeOrder::LeadingMinus;
    format.leadingZero = false;
    EXPECT_EQ(text(format, -0.5, 1), "-.5");
    EXPECT_EQ(text(format, 0.2, 0), "0") << "a digit must remain";
}

TEST(NumberFormat, StaysWithin31Characters) {
    EXPECT_EQ(text({}, 1e15, 9), "1,000,000,000,000,000.000000000");
    EXPECT_EQ(text({}, -1e15, 9), "-1.000000000e+15");
    EXPECT_EQ(text(locale(",", ".", "3;0"), 1.5e40, 2), "1,50e+40");
    EXPECT_EQ(text({}, -std::numeric_limits<double>::max(), 0), "-2e+308");
    EXPECT_EQ(text(locale(".", ",", "2;0"), -INFINITY, 2), "-∞");
    EXPECT_EQ(text({}, std::nan(""), 2), "NaN");
}

TEST(NumberFormat, RoundsAsPrintfDoes) {
    const NumberFormat plain = locale(".", ",", "0");
    std::mt19937_64 random(20090304);
    std::uniform_real_distribution<double> exponent(-10, 15);
    for (int i = 0; i < 200000; ++i) {
        const int decimals = static_cast<int>(random() % 10);
        double value = std::pow(10, exponent(random)) * (random() % 2 ? 1 : -1);
        if (i % 4 == 0) // many ties
            value = std::round(value) / 8;
        std::array<char, 400> expected;
        const int size = std::snprintf(expected.data(), expected.size(), "%.*f", decimals, value);
        if (size > static_cast<int>(kMaxNumberCharacters))
            continue;
        std::string printed(expected.data());
        if (printed.find_first_of("123456789") == std::string::npos && printed.front() == '-')
            printed.erase(0, 1);
        ASSERT_EQ(text(plain, value, decimals), printed);
    }
}

TEST(NumberFormat, WritesFractionsAsDrillsAreSized) {
    const auto fraction = [](double value, const NumberFormat& format = {}) {
        ValueText buffer;
        return std::string(formatFraction(format, value, buffer));
    };
    EXPECT_EQ(fraction(47.0 / 64), "47/64");
    EXPECT_EQ(fraction(0.375), "3/8");
    EXPECT_EQ(fraction(1.5), "1 1/2");
    EXPECT_EQ(fraction(2), "2");
    EXPECT_EQ(fraction(0), "0");
    EXPECT_EQ(fraction(0.126), "1/8") << "the nearest 64th";
    EXPECT_EQ(fraction(0.999), "1");
    EXPECT_EQ(fraction(-0.25), "-1/4");
    EXPECT_EQ(fraction(-0.001), "0");
    EXPECT_EQ(fraction(-1234.5), "-1,234 1/2");
    EXPECT_EQ(fraction(1e20), "100,000,000,000,000,000,000");
    EXPECT_EQ(fraction(std::nan("")), "NaN");
    NumberFormat brackets;
    brackets.negativeOrder = NegativeOrder::Parentheses;
    EXPECT_EQ(fraction(-2.75, brackets), "(2 3/4)");
}

} // namespace
} // namespace quobrix
