#include "paper/page_setup.h"
#include "settings/settings.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

TEST(PageSetup, IsRememberedWhereItMakesSense) {
    Settings settings(std::make_unique<MemorySettings>());
    PageSetup setup = PageSetup::load(settings);
    EXPECT_EQ(setup.orientation, Orientation::Suiting);
    EXPECT_EQ(setup.margins, Margins{});
    setup.paper = &papers()[2];
    setup.orientation = Orientation::Landscape;
    setup.margins = {20, 30, 40.5, 50};
    setup.save(settings);
    EXPECT_EQ(PageSetup::load(settings), setup);
    settings.setText("Page Setup", "Paper", "Papyrus");
    settings.setText("Page Setup", "Orientation", "Upside Down");
    settings.setReal("Page Setup", "LeftMargin", -5);
    settings.setReal("Page Setup", "TopMargin", 1e9);
    const PageSetup mended = PageSetup::load(settings);
    EXPECT_TRUE(mended.paper->key == "A4" || mended.paper->key == "Letter");
    EXPECT_EQ(mended.orientation, Orientation::Suiting);
    EXPECT_EQ(mended.margins, (Margins{kLeastMargin, kMostMargin, 40.5, 50}));
}

TEST(PageSetup, PaperLiesAsTheReportAsksForUnlessAPersonDoes) {
    for (const auto& [orientation, wide, landscape] : {std::tuple{Orientation::Suiting, false, false},
                                                       {Orientation::Suiting, true, true},
                                                       {Orientation::Portrait, true, false},
                                                       {Orientation::Landscape, false, true}}) {
        PageSetup setup;
        setup.orientation = orientation;
        const Size size = setup.formatFor({"Log", {}, wide}).paper;
        EXPECT_EQ(size.width > size.height, landscape);
        setup.margins = {kMostMargin, kMostMargin, kMostMargin, kMostMargin};
        for (const Paper& paper : papers()) {
            setup.paper = &paper;
            const PageFormat format = setup.formatFor({"Log", {}, wide});
            EXPECT_GE(format.paper.height - format.margins.top - format.margins.bottom, format.paper.height * 0.49);
            EXPECT_GE(format.paper.width - format.margins.left - format.margins.right, format.paper.width * 0.49);
        }
    }
}

TEST(PageSetup, PaperIsWhatPeopleHave) {
    using Languages = std::vector<std::string>;
    for (const auto& [languages, paper] : {std::pair<Languages, const char*>{{}, "A4"},
                                           {{"en_US", "en"}, "Letter"},
                                           {{"pl_PL", "pl", "en_US"}, "A4"},
                                           {{"fr", "fr_CA"}, "Letter"},
                                           {{"es_MX.UTF-8"}, "Letter"}})
        EXPECT_EQ(usualPaper(languages).key, paper);
}

} // namespace
} // namespace quobrix
