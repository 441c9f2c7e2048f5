#include "report/render.h"
#include "support/fixed_measure.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

Report report() {
    return {"Trip <1>",
            {Paragraph{"Before all sections."}, Heading{"General"},
             Facts{{{"Driver", "Ann & Bob"}, {"Comment", "two\nlines"}, {"Nothing", ""}}}, Heading{"Bands"},
             Bars{"Bands", {{"Idle", "00:01:00", 0.25}, {"Over 70", "00:03:00", 0.75}}},
             Grid{{{"Band", false}, {"From"}, {"Remark", false}},
                  {{"Idle", "0 MPH", "<b>"}, {"Over 70", "70 MPH", "fast"}}},
             Picture{[](Size room, const TextMeasure& measure) {
                 return Drawing{"Speed", "Rising", {std::min(room.width, 50.0), 20}, measure.fontSize(), {}};
             }},
             Heading{"Comments"}, Paragraph{"First.\nSecond."}}};
}

TEST(RenderText, HasColumnsOfEvenWidthAndNoPictures) {
    EXPECT_EQ(renderText(report()), "Trip <1>\n"
                                    "\n"
                                    "  Before all sections.\n"
                                    "\n"
                                    "General\n"
                                    "  Driver   Ann & Bob\n"
                                    "  Comment  two lines\n"
                                    "  Nothing\n"
                                    "\n"
                                    "Bands\n"
                                    "  Band       From  Remark\n"
                                    "  Idle      0 MPH  <b>\n"
                                    "  Over 70  70 MPH  fast\n"
                                    "  Speed: Rising\n"
                                    "\n"
                                    "Comments\n"
                                    "  First.\nSecond.\n");
}

TEST(RenderHtml, IsOneAccessiblePage) {
    const std::string html = renderHtml(report());
    for (const char* part :
         {"<!DOCTYPE html>", "<title>Trip &lt;1&gt;</title>", "<h1>Trip &lt;1&gt;</h1>\n<p>Before all sections.</p>\n",
          "<section>\n<h2>General</h2>\n<dl>\n<dt>Driver</dt><dd>Ann &amp; Bob</dd>\n",
          "<thead>\n<tr><th scope=\"col\">Band</th><th scope=\"col\" class=\"figure\">From</th>",
          "<tr><th scope=\"row\">Idle</th><td class=\"figure\">0 MPH</td><td>&lt;b&gt;</td></tr>", "role=\"img\"",
          "<title>Bands</title>\n<desc>Idle: 00:01:00 (25%), Over 70: 00:03:00 (75%)</desc>",
          "<title>Speed</title>\n<desc>Rising</desc>", "fill=\"var(--accent)\"", "prefers-color-scheme:dark",
          "<p>First.\nSecond.</p>\n</section>\n</main>\n</body>\n</html>\n"})
        EXPECT_NE(html.find(part), std::string::npos) << part << '\n' << html;
    for (const char* outside : {"src=", "href=", "url(", "@import", "<script"})
        EXPECT_EQ(html.find(outside), std::string::npos) << outside;
}

TEST(Bars, AreDrawnInProportionToTheWhole) {
    const test::FixedMeasure measure;
    const Drawing drawing =
        drawBars({"Bands", {{"Idle", "1 s", 0.25}, {"Fast", "2 s", 0.004}, {"Far", "", 0}}}, 260, measure);
    EXPECT_EQ(drawing.size, (Size{260, 60}));
    EXPECT_EQ(drawing.description, "Idle: 1 s (25%), Fast: 2 s (<1%), Far:  (0%)");
    // 24 for labels, 18 for texts, 24 for percentages and three gaps of 10: 164 for the whole.
    std::vector<Box> bars;
    for (const DrawingCommand& command : drawing.commands)
        if (const auto* bar = std::get_if<Bar>(&command))
            bars.push_back(bar->box);
    EXPECT_EQ(bars, (std::vector<Box>{{34, 5.25, 164, 9.5},
                                      {34, 5.25, 41, 9.5},
                                      {34, 25.25, 164, 9.5},
                                      {34, 25.25, 2.5, 9.5}, // never as thin as nothing
                                      {34, 45.25, 164, 9.5}}));
    EXPECT_EQ(drawing.commands[1], (DrawingCommand{Text{{226, 13}, "1 s", Anchor::End}}));
    EXPECT_EQ(drawBars({"", {{"Idle", "1 s", 1}}}, 0, measure).size.width, 24 + 18 + 24 + 30 + 65);
}

} // namespace
} // namespace quobrix
