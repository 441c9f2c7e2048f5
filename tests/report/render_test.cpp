#include "report/render.h"
#include "support/fixed_measure.h"
#include "texts/catalogue.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

Report report() {
    return {"Trip <1>",
            {Paragraph{"Before all sections."}, Heading{"General"},
             Facts{{{"Driver", "Ann & Bob"}, {"Comment", "two\nlines"}, {"Nothing", ""}}}, Heading{"Bands"},
             Grid{{{"Band", false}, {"From"}, {"Remark", false}},
                  {{"Idle", "0 MPH", "<b>"}, {"Over 70", "70 MPH", "fast"}}},
             Grid{{{"Part", false}, {"Share"}}, {{"<Idle>", "25%"}, {"Over 70", "75%"}}, {0.25, 0.75}},
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
                                    "  Part     Share\n"
                                    "  <Idle>     25%\n"
                                    "  Over 70    75%\n"
                                    "  Speed: Rising\n"
                                    "\n"
                                    "Comments\n"
                                    "  First.\n  Second.\n");
}

TEST(RenderHtml, IsOneAccessiblePage) {
    setCatalogue(nullptr, "pt-BR");
    const std::string html = renderHtml(report());
    setCatalogue(nullptr);
    EXPECT_NE(html.find("lang=\"pt-BR\""), std::string::npos);
    for (const char* part :
         {"<!DOCTYPE html>", "<title>Trip &lt;1&gt;</title>", "<h1>Trip &lt;1&gt;</h1>\n<p>Before all sections.</p>\n",
          "<section>\n<h2>General</h2>\n<dl>\n<dt>Driver</dt><dd>Ann &amp; Bob</dd>\n",
          "<thead>\n<tr><th scope=\"col\">Band</th><th scope=\"col\" class=\"figure\">From</th>",
          "<tr><th scope=\"row\">Idle</th><td class=\"figure\">0 MPH</td><td>&lt;b&gt;</td></tr>", "role=\"img\"",
          "<title>&lt;Idle&gt;</title>\n<desc>25%</desc>", "</svg>\n25%</td></tr>",
          "<title>Speed</title>\n<desc>Rising</desc>", "fill=\"var(--accent)\"", "prefers-color-scheme:dark",
          "<p>First.\nSecond.</p>\n</section>\n</main>\n</body>\n</html>\n"})
        EXPECT_NE(html.find(part), std::string::npos) << part << '\n' << html;
    for (const char* outside : {"src=", "href=", "url(", "@import", "<script"})
        EXPECT_EQ(html.find(outside), std::string::npos) << outside;
}

TEST(Shares, AreBarsInProportionToTheWhole) {
    const test::FixedMeasure measure;
    const struct {
        double share;
        const char* text;
        std::vector<Box> bars; ///< the whole, and what is filled of it
    } cases[] = {{1, "100%", {{0, 1.25, 200, 9.5}, {0, 1.25, 200, 9.5}}},
                 {0.25, "25%", {{0, 1.25, 200, 9.5}, {0, 1.25, 50, 9.5}}},
                 {0.004, "<1%", {{0, 1.25, 200, 9.5}, {0, 1.25, 2.5, 9.5}}}, // never as thin as nothing
                 {0, "0%", {{0, 1.25, 200, 9.5}}}};
    for (const auto& c : cases) {
        const Drawing drawing = drawShare("Idle", c.share, 200, measure);
        EXPECT_EQ(drawing.description, c.text);
        EXPECT_EQ(drawing.size, (Size{200, 12}));
        std::vector<Box> bars;
        for (const DrawingCommand& command : drawing.commands)
            if (const auto* bar = std::get_if<Bar>(&command))
                bars.push_back(bar->box);
        EXPECT_EQ(bars, c.bars) << c.text;
    }
    EXPECT_EQ(drawShare("", 1, 0, measure).size.width, 40) << "wide enough to be seen";
}

} // namespace
} // namespace quobrix
