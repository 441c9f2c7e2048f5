#include "drawing/svg.h"
#include "support/fixed_measure.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quobrix {
namespace {

using Lines = std::vector<std::string>;

TEST(TextMeasure, ShortensAndBreaksTexts) {
    const test::FixedMeasure measure;
    EXPECT_EQ(elided("twelve", FontRole::Body, 36, measure), "twelve");
    EXPECT_EQ(elided("twelve", FontRole::Body, 35, measure), "twel…");
    EXPECT_EQ(elided("zwölf Monate", FontRole::Body, 42, measure), "zwölf…"); // no blank before the dots
    EXPECT_EQ(elided("twelve", FontRole::Body, 5, measure), "");

    struct Case {
        std::string text;
        double width;
        Lines lines;
    };
    const Case cases[] = {
        {"", 60, {""}},
        {"one", 60, {"one"}},
        {"one two three", 48, {"one two", "three"}},
        {"one  two", 18, {"one", "two"}},
        {"one\n\ntwo", 60, {"one", "", "two"}},
        {"one\r\ntwo\x1B", 60, {"one", "two "}},
        {"unbreakable", 24, {"unbr", "eaka", "ble"}},
        {"ööö", 12, {"öö", "ö"}},
        {"abc", 1, {"a", "b", "c"}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(wrapped(c.text, FontRole::Body, c.width, measure), c.lines) << c.text;

    std::string many;
    for (int i = 0; i < 100'000; ++i)
        many += "word ";
    EXPECT_EQ(wrapped(many, FontRole::Body, 600, measure).size(), 5'000u);
}

Drawing everything() {
    Drawing drawing{"Speed < 70 & \"fast\"", "Line 1\x01\xEF\xBF\xBF", {200, 100.5}, 12, {}};
    drawing.commands = {Rectangle{{0, 0, 200, 100.5}},
                        Line{{0, 0.5}, {200, 0.5}, {ColourRole::Rule, 0.5}},
                        Polyline{{{1, 2}, {3.25, 4}, {5, 1.0 / 3}}, {ColourRole::Accent, 2}},
                        Area{{{0, 0}, {10, 0}, {10, 10}}},
                        Bar{{10, 20, 30, 40}, ColourRole::Track},
                        Text{{5, 15}, "0 < 70 °F"},
                        Text{{195, 15}, "2", Anchor::End, FontRole::Title, ColourRole::SecondaryText},
                        Text{{5, 95}, "Idle", Anchor::Start, FontRole::Fine},
                        Clip{{10, 20, 30, 40}},
                        Segments{{{1, 2}, {3, 4}, {5, 6}, {7, 8}}, {ColourRole::Line2, 1, Dash::DashDotted}},
                        EndClip{},
                        Columns{10, 2, {{5, 5}, {1, 9}, {2, 8}, {3, 3}, {4, 7}}},
                        Marks{MarkShape::TriangleUp, 10, {{50, 60}}, ColourRole::StepTop}};
    return drawing;
}

TEST(Svg, HasEveryCommand) {
    EXPECT_EQ(writeSvg(everything(), kPaperPalette), R"(<?xml version="1.0" encoding="UTF-8"?>
<svg xmlns="http://www.w3.org/2000/svg" width="200" height="100.5" viewBox="0 0 200 100.5" role="img" version="1.1" font-family="Helvetica, Arial, 'Liberation Sans', 'Nimbus Sans', sans-serif" font-size="12">
<title>Speed &lt; 70 &amp; &quot;fast&quot;</title>
<desc>Line 1 �</desc>
<rect x="0" y="0" width="200" height="100.5" fill="#ffffff"/>
<line x1="0" y1="0.5" x2="200" y2="0.5" stroke="#c0c4c8" stroke-width="0.5"/>
<polyline points="1,2 3.25,4 5,0.333" fill="none" stroke="#1f6fc4" stroke-width="2"/>
<polygon points="0,0 10,0 10,10" fill="#1f6fc4"/>
<rect x="10" y="20" width="30" height="40" rx="3" fill="#ecedee"/>
<text x="5" y="15" fill="#1d2125">0 &lt; 70 °F</text>
<text x="195" y="15" fill="#60666c" text-anchor="end" font-size="19.2" font-weight="bold">2</text>
<text x="5" y="95" fill="#1d2125" font-size="8" font-family="Arial, Helvetica, Arial, 'Liberation Sans', 'Nimbus Sans', sans-serif">Idle</text>
<svg x="10" y="20" width="30" height="40" viewBox="10 20 30 40">
<path d="M1,2L3,4M5,6L7,8" fill="none" stroke="#5790fc" stroke-width="1" stroke-dasharray="8,3,2,3"/>
</svg>
<path d="M12,1H14L14,2H16V8H14V9H12ZM18,4H20V7H18Z" fill="#d5e4f7"/>
<polygon points="45,64.25 55,64.25 50,55.75" fill="#be222b" stroke="#ffffff" stroke-width="1"/>
</svg>
)");
}

/// Relative luminance and contrast as WCAG 2.1 defines them.
double luminance(Colour colour) {
    const auto linear = [](std::uint8_t value) {
        const double c = value / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

TEST(Palettes, CanBeReadByEverybody) {
    for (const Palette& palette : {kLightPalette, kDarkPalette}) {
        const auto contrast = [&](ColourRole front, ColourRole back) {
            const double a = luminance(palette[front]), b = luminance(palette[back]);
            return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
        };
        for (const ColourRole text : {ColourRole::Text, ColourRole::SecondaryText})
            for (const ColourRole ground : {ColourRole::Ground, ColourRole::HeadingGround})
                EXPECT_GE(contrast(text, ground), 4.5);
        EXPECT_GE(contrast(ColourRole::Accent, ColourRole::Track), 3);
        for (const ColourRole step :
             {ColourRole::StepLow, ColourRole::StepMiddle, ColourRole::StepHigh, ColourRole::StepTop})
            EXPECT_GE(contrast(step, ColourRole::Ground), 3);
        for (const ColourRole line : kLineColours)
            EXPECT_GE(contrast(line, ColourRole::Ground), 3);
        for (const ColourRole behind : {ColourRole::Ground, ColourRole::CurveArea})
            EXPECT_GE(contrast(ColourRole::Curve, behind), 3);
    }
}

} // namespace
} // namespace quobrix
