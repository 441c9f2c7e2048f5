#include "report/pages.h"
#include "support/fixed_measure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <span>
#include <utility>

namespace quobrix {
namespace {

using Texts = std::vector<std::string>;

/// 300 wide and, below a footer of 24, 300 high: 25 lines of 50 characters.
constexpr PageFormat kPage{{320, 344}, {10, 10, 10, 10}};
const test::FixedMeasure kMeasure;

std::vector<Drawing> pagesOf(const Report& report) {
    const Pages made(report, kPage, kMeasure);
    std::vector<Drawing> pages(made.count());
    for (std::size_t i = pages.size(); i-- > 0;) // as they are looked at, in no order
        pages[i] = made.page(i);
    for (const Drawing& page : pages) { // nothing is cut off
        EXPECT_EQ(page.size, kPage.paper);
        for (std::size_t i = 0; i < page.commands.size(); ++i)
            if (const auto* text = std::get_if<Text>(&page.commands[i])) {
                const double width = kMeasure.width(text->text, text->font);
                const double left = text->place.x - (text->anchor == Anchor::End ? width : 0);
                EXPECT_GE(left, 10) << text->text;
                EXPECT_LE(left + width, 310.001) << text->text;
                const bool footer = i + 2 >= page.commands.size();
                EXPECT_LE(text->place.y, footer ? 334 : 310) << text->text;
            }
    }
    return pages;
}

/// The texts of a page above its footer.
Texts bodyOf(const Drawing& page) {
    Texts texts = test::textsOf(page);
    texts.resize(texts.size() - 2);
    return texts;
}

Grid numbers(int rows, std::vector<Grid::Column> columns) {
    Grid grid{std::move(columns), {}};
    for (int row = 1; row <= rows; ++row) {
        grid.rows.emplace_back();
        for (std::size_t i = 0; i < grid.columns.size(); ++i)
            grid.rows.back().push_back(std::to_string(row) + std::string(i, '\''));
    }
    return grid;
}

TEST(Pages, HeadingsAreRepeated) {
    const auto pages = pagesOf({"Log", {Heading{"Stops"}, numbers(50, {{"No."}, {"Time"}})}});
    ASSERT_EQ(pages.size(), 3u);
    Texts rows;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        Texts texts = bodyOf(pages[i]);
        const Texts headings = i == 0 ? Texts{"Log", "Stops", "No.", "Time"} : Texts{"Stops, Continued", "No.", "Time"};
        EXPECT_TRUE(std::ranges::equal(headings, std::span(texts).first(headings.size()))) << texts[0];
        std::ranges::copy(std::span(texts).subspan(headings.size()), std::back_inserter(rows));
        EXPECT_EQ(test::textsOf(pages[i]).back(), "Page " + std::to_string(i + 1) + " of 3");
    }
    ASSERT_EQ(rows.size(), 100u); // each once and in order
    for (std::size_t i = 0; i < rows.size(); i += 2)
        EXPECT_EQ(rows[i], std::to_string(i / 2 + 1));
}

TEST(Pages, NoHeadingIsTheLastThingOnAPage) {
    for (int rows = 1; rows <= 40; ++rows) {
        const auto pages = pagesOf(
            {"Log",
             {Heading{"First"}, numbers(rows, {{"No."}}), Heading{"Second"}, Grid{{{"Head"}}, {{"row"}, {"row"}}}}});
        for (const Drawing& page : pages) {
            const std::string last = bodyOf(page).back();
            EXPECT_TRUE(last == "row" || std::isdigit(last[0])) << last << " after " << rows;
        }
    }
}

TEST(Pages, WideTablesTakeMorePages) {
    std::vector<Grid::Column> columns{{"No."}};
    Grid grid{columns, {{"1"}, {"2"}}};
    for (int i = 1; i < 40; ++i) {
        grid.columns.push_back({"Column " + std::to_string(i)});
        for (auto& row : grid.rows)
            row.push_back("value" + std::to_string(i));
    }
    const auto pages = pagesOf({"Log", {grid}});
    Texts seen;
    for (const Drawing& page : pages) {
        const Texts texts = bodyOf(page);
        EXPECT_EQ(std::ranges::count(texts, "No."), 1);
        EXPECT_EQ(std::ranges::count(texts, "1"), std::ranges::count(texts, "2"));
        for (const std::string& text : texts)
            if (text.starts_with("value"))
                seen.push_back(text);
    }
    EXPECT_GT(pages.size(), 5u);
    ASSERT_EQ(seen.size(), 2 * 39u);
    EXPECT_EQ(std::set<std::string>(seen.begin(), seen.end()).size(), 39u);
    EXPECT_EQ(seen.front(), "value1");
    EXPECT_EQ(seen.back(), "value39");
}

TEST(Pages, LongTextsGoOnFromPageToPage) {
    std::string words;
    for (int i = 0; i < 1000; ++i)
        words += std::to_string(i) + ' ';
    const Report cases[] = {{"Log", {Heading{"Comments"}, Paragraph{words}}},
                            {"Log", {Facts{{{"Comments", words}}}}},
                            {"Log", {Grid{{{"No."}, {"Comments", false}}, {{"x", words}}}}},
                            {words, {}},
                            {"Log", {Heading{std::string(5000, 'x')}, Paragraph{words}}},
                            {"Log", {Grid{{{std::string(5000, 'x')}, {words}}, {{"x", words}}}}}};
    for (const Report& report : cases) {
        int next = 0;
        for (const Drawing& page : pagesOf(report))
            for (const std::string& line : bodyOf(page))
                if (line == std::to_string(next) || line.starts_with(std::to_string(next) + ' '))
                    next += static_cast<int>(std::ranges::count(line, ' ')) + (line.ends_with(' ') ? 0 : 1);
        EXPECT_EQ(next, 1000) << report.title.substr(0, 20);
    }
}

TEST(Pages, ALongHeadingIsCutOffOnlyWhereItComesBack) {
    std::string words;
    for (int i = 0; i < 100; ++i)
        words += std::to_string(i) + ' ';
    const auto joined = [](const std::vector<Drawing>& pages) {
        std::string all;
        for (const Drawing& page : pages)
            for (const std::string& line : bodyOf(page))
                all += line + (line.ends_with(' ') ? "" : " ");
        return all;
    };
    EXPECT_NE(joined(pagesOf({"Log", {Heading{words}, numbers(30, {{"No."}})}})).find(words + "No. 1 2"),
              std::string::npos);
    const std::string table = joined(pagesOf({"Log", {Grid{{{words, false}}, {{"x"}}}}}));
    EXPECT_NE(table.find("97 98 99 x"), std::string::npos) << table;
    for (int i = 0; i < 100; ++i)
        EXPECT_NE(table.find(' ' + std::to_string(i) + ' '), std::string::npos) << i;
}

TEST(Pages, MarginsAreThoseOfTheirSides) {
    const Drawing page = Pages({"Log", {numbers(1, {{"No."}})}}, {{320, 344}, {20, 30, 40, 50}}, kMeasure).page(0);
    const auto placeOf = [&](std::size_t i) { return std::get<Text>(page.commands[i]).place; };
    EXPECT_EQ(placeOf(0), (Point{20, 30 + 9}));
    const std::size_t count = page.commands.size();
    EXPECT_EQ(placeOf(count - 2), (Point{20, 344 - 50}));
    EXPECT_EQ(placeOf(count - 1), (Point{320 - 40, 344 - 50}));
}

TEST(Pages, PicturesAreMadeForThePaper) {
    Size given;
    const auto pages = pagesOf({"Trip",
                                {Heading{"Bands"},
                                 Grid{{{"Band", false}, {"Share"}},
                                      std::vector<std::vector<std::string>>(30, {"a", "50%"}),
                                      std::vector<double>(30, 0.5)},
                                 Heading{"Plot"}, Picture{[&](Size room, const TextMeasure& measure) {
                                     given = room;
                                     return Drawing{"Plot", "", room, measure.fontSize(), {Line{{0, 0}, {1, 1}}}};
                                 }}}});
    EXPECT_EQ(given.width, 300);
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_EQ(bodyOf(pages[2]), Texts{"Plot"});
    std::size_t bars = 0;
    for (const Drawing& page : pages)
        for (const DrawingCommand& command : page.commands)
            if (const auto* bar = std::get_if<Bar>(&command)) {
                EXPECT_LE(bar->box.top + bar->box.height, 310);
                ++bars;
            }
    EXPECT_EQ(bars, 60u);
}

TEST(Pages, APlotSharesItsPageWithWhatItStandsAbove) {
    Size given;
    const auto reportOver = [&](int rows) {
        return Report{"Trip",
                      {Picture{[&](Size room, const TextMeasure& measure) {
                           given = room;
                           return Drawing{"Plot", "", room, measure.fontSize(), {Line{{0, 0}, {1, 1}}}};
                       }},
                       Paragraph{"Shown"}, numbers(rows, {{"No."}})}};
    };
    EXPECT_EQ(pagesOf(reportOver(1)).size(), 1u);
    const double beside = given.height;
    EXPECT_EQ(pagesOf(reportOver(2)).size(), 1u);
    EXPECT_LT(given.height, beside);
    EXPECT_EQ(pagesOf(reportOver(10)).size(), 2u) << "too little would be left of it";
    EXPECT_GT(given.height, beside);
    for (const auto& [least, fits] : {std::pair(270.0, true), std::pair(290.0, false)}) {
        const Picture picture{[least = least](Size room, const TextMeasure& measure) {
            return Drawing{"Plot", "", {room.width, std::max(room.height, least)}, measure.fontSize(), {}};
        }};
        EXPECT_EQ(Pages({"Trip", {picture, numbers(20, {{"No."}})}}, kPage, kMeasure).fits(), fits)
            << "the title would have a page of its own";
    }
    drawReport(reportOver(1), 300, kMeasure);
    EXPECT_EQ(given.height, kUnlimited) << "a picture that scrolls has the height that suits it";
}

TEST(Pages, EmptyReportsAndTables) {
    EXPECT_EQ(test::textsOf(pagesOf({"Log", {}})[0]), (Texts{"Log", "Log", "Page 1 of 1"}));
    EXPECT_EQ(bodyOf(pagesOf({"Log", {Heading{"None"}, Grid{{{"No."}}, {}}, Heading{"End"}}})[0]),
              (Texts{"Log", "None", "No.", "End"}));
}

} // namespace
} // namespace quobrix
