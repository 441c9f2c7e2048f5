#include "units/number_parse.h"

#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace quobrix::test {
namespace {

NumberFormat format(std::string decimal, std::string thousands, std::string_view grouping = "3;0",
                    NegativeOrder order = NegativeOrder::LeadingMinus) {
    NumberFormat result;
    result.decimalSeparator = std::move(decimal);
    result.thousandsSeparator = std::move(thousands);
    result.grouping = DigitGrouping::parse(grouping);
    result.negativeOrder = order;
    return result;
}

const NumberFormat kEnglish;
const NumberFormat kGerman = format(",", ".");
const NumberFormat kFrench = format(",", "\u202F");
const NumberFormat kSwiss = format(".", "\u2019");
const NumberFormat kIndian = format(".", ",", "3;2;0");
const NumberFormat kArabic = format("\u066B", "\u066C", "3;0", NegativeOrder::TrailingMinus);

TEST(NumberParse, ReadsEachLocaleAsItIsWritten) {
    EXPECT_EQ(parseNumber(kEnglish, "1,234,567.5"), 1234567.5);
    EXPECT_EQ(parseNumber(kGerman, "1.234.567,5"), 1234567.5);
    EXPECT_EQ(parseNumber(kFrench, "1 234 567,5"), 1234567.5) << "an ordinary blank does for a narrow one";
    EXPECT_EQ(parseNumber(kSwiss, "1'234'567.5"), 1234567.5);
    EXPECT_EQ(parseNumber(kIndian, "12,34,567.5"), 1234567.5);
    EXPECT_EQ(parseNumber(kArabic, "1\u066C234\u066B5-"), -1234.5);
    for (const NumberFormat* any : {&kEnglish, &kGerman, &kFrench, &kSwiss, &kIndian, &kArabic})
        EXPECT_EQ(parseNumber(*any, "1234567"), 1234567);
}

TEST(NumberParse, SeparatorsInOtherPlacesAreNoNumber) {
    EXPECT_FALSE(parseNumber(kEnglish, "1,5"));
    EXPECT_FALSE(parseNumber(kEnglish, "1234,567"));
    EXPECT_FALSE(parseNumber(kEnglish, "12,34,567"));
    EXPECT_FALSE(parseNumber(kEnglish, ",123"));
    EXPECT_FALSE(parseNumber(kEnglish, "1,,234"));
    EXPECT_FALSE(parseNumber(kGerman, "1.5")) << "fifteen, or one and a half?";
    EXPECT_FALSE(parseNumber(kIndian, "1,234,567"));
    EXPECT_FALSE(parseNumber(format(".", ",", "0"), "1,234"));
    EXPECT_EQ(parseNumber(kFrench, "1.5"), 1.5) << "the period groups nothing there";
    EXPECT_EQ(parseNumber(format(".", ",", "3"), "1234567,890"), 1234567890) << "one group only";
}

TEST(NumberParse, TakesSignsPowersAndBlanks) {
    for (const char* text : {"-2.5", "\u22122.5", "- 2.5", "2.5-", "2.5 -", "(2.5)", " -2.5 ", "-25e-1", "-.25E+1"})
        EXPECT_EQ(parseNumber(kEnglish, text), -2.5) << text;
    EXPECT_EQ(parseNumber(kEnglish, "+10.0e+3"), 10000);
    EXPECT_EQ(parseNumber(kEnglish, "5."), 5);
    for (const char* text : {"", " ", "-", ".", "e5", "1e", "1e+", "--1", "-1-", "(-1)", "1 2", "0x10", "nan", "inf",
                             "1e999", "1.2.3", "٣"})
        EXPECT_FALSE(parseNumber(kEnglish, text)) << text;
    EXPECT_FALSE(parseNumber(kEnglish, std::string(100'000, '9')));
}

TEST(NumberParse, ReadsWhateverIsFormatted) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> exponents(-3, 12);
    for (const NumberFormat* each : {&kEnglish, &kGerman, &kFrench, &kSwiss, &kIndian, &kArabic})
        for (int i = 0; i < 500; ++i) {
            const double value = std::pow(10, exponents(random)) * (i % 2 ? 1 : -1);
            ValueText buffer;
            const std::string_view text = formatNumber(*each, value, 3, buffer);
            const auto parsed = parseNumber(*each, text);
            ASSERT_TRUE(parsed) << text;
            ASSERT_LE(std::abs(*parsed - value), 0.0005001 + std::abs(value) * 1e-15) << text;
        }
}

TEST(NumberParse, ExactNamesOfUnitsGoBeforeOthers) {
    TUnitSystem units;
    units.setUnit(UnitTypeId::ByteCount, UnitId::Kilobytes);
    const double bits = *parseValue(units, UnitTypeId::ByteCount, "3 Mb");
    const double bytes = *parseValue(units, UnitTypeId::ByteCount, "3 MB");
    EXPECT_NEAR(bytes / bits, 8, 1e-9);
    EXPECT_NEAR(*parseValue(units, UnitTypeId::Temperature, "-40 °F"), 233.15, 1e-9);
    EXPECT_FALSE(parseValue(units, UnitTypeId::Temperature, "20 °X"));
}

} // namespace
} // namespace quobrix::test
