#include "tables/tabbed_text.h"

#include <gtest/gtest.h>

#include <vector>

namespace quobrix::test {
namespace {

using Rows = std::vector<std::vector<std::string>>;

Rows parsed(std::string_view text) {
    Rows rows;
    if (const auto block = TabbedText::parse(text))
        for (std::size_t r = 0; r < block->rows(); ++r) {
            rows.emplace_back();
            for (std::size_t c = 0; c < block->columns(); ++c)
                rows.back().push_back(block->cell(r, c));
        }
    return rows;
}

TEST(TabbedText, ReadsWhatSpreadsheetsWrite) {
    const Rows square{{"a", "b"}, {"c", "d"}};
    for (const char* text : {"a\tb\nc\td", "a\tb\nc\td\n", "a\tb\r\nc\td\r\n", "a\tb\rc\td\r", "\"a\"\tb\nc\t\"d\""})
        EXPECT_EQ(parsed(text), square) << text;
    EXPECT_EQ(parsed("\t\n\t"), (Rows{{"", ""}, {"", ""}}));
    EXPECT_EQ(parsed("\n"), (Rows{{""}}));
    EXPECT_EQ(parsed("\"two\nlines\"\t\"a\tb\"\t\"say \"\"so\"\"\"\r\n"), (Rows{{"two\nlines", "a\tb", "say \"so\""}}));
}

TEST(TabbedText, MarksThatQuoteNothingStayAsTheyAre) {
    EXPECT_EQ(parsed("\"a\" b\tc"), (Rows{{"\"a\" b", "c"}}));
    EXPECT_EQ(parsed("5\"\t6\""), (Rows{{"5\"", "6\""}}));
    EXPECT_EQ(parsed("\"open\tx\ny\tz"), (Rows{{"\"open", "x"}, {"y", "z"}}));
}

TEST(TabbedText, RefusesOtherShapesAndTooMuch) {
    EXPECT_TRUE(parsed("").empty());
    EXPECT_TRUE(parsed("a\tb\nc").empty());
    EXPECT_TRUE(parsed(std::string(TabbedText::kMaxBytes + 1, 'x')).empty());
    EXPECT_TRUE(parsed(std::string(TabbedText::kMaxCells, '\t')).empty());
    EXPECT_FALSE(TabbedText::parse("a\tb\nc\td", 2, 1));
    EXPECT_FALSE(TabbedText::parse("a\tb\nc\td", 1, 2));
    EXPECT_TRUE(TabbedText::parse("a\tb\nc\td", 2, 2));
}

TEST(TabbedText, ComesBackFromWhatItWrites) {
    TabbedText block(3);
    for (const char* cell : {"", "plain", "tab\tin", "line\nin", "\r", "\"", "\"quoted\"", " blanks ", "ünï"})
        block.add(cell);
    EXPECT_EQ(parsed(block.text()),
              (Rows{{"", "plain", "tab\tin"}, {"line\nin", "\r", "\""}, {"\"quoted\"", " blanks ", "ünï"}}));
}

} // namespace
} // namespace quobrix::test
