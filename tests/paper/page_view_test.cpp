#include "paper/ui/page_view.h"

#include "drawing/ui/drawing_painter.h"
#include "paper/ui/paper_painter.h"

#include <QApplication>
#include <QImage>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <set>

namespace quobrix {
namespace {

class PageViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        view_.resize(800, 600);
        view_.setPages({"Log", {595, 842}, 1000, [this](std::size_t index) {
                            made_.insert(index);
                            return Drawing{"Log", {}, {595, 842}, 9, {Text{{50, 50}, std::to_string(index)}}};
                        }});
        view_.show();
        paint();
    }
    std::set<std::size_t> paint() {
        made_.clear();
        QImage image(view_.viewport()->size(), QImage::Format_RGB32);
        view_.viewport()->render(&image);
        return made_;
    }

    PageView view_;
    std::set<std::size_t> made_;
};

TEST_F(PageViewTest, OnlyPagesInViewAreMade) {
    using Pages = std::set<std::size_t>;
    EXPECT_EQ(paint(), Pages()) << "the first has been painted before";
    view_.goTo(500);
    EXPECT_EQ(paint(), Pages{500});
    view_.setScale(0.25);
    const Pages small = paint();
    EXPECT_TRUE(small.contains(view_.current()));
    EXPECT_LT(small.size(), 8u);
    EXPECT_EQ(view_.current(), 500u) << "what was looked at still is";
    view_.setColumns(2);
    EXPECT_LT(paint().size(), 16u);
    EXPECT_EQ(view_.current(), 500u);
    view_.verticalScrollBar()->setValue(view_.verticalScrollBar()->maximum());
    EXPECT_GE(view_.current(), 990u) << "the page follows the scroll bar";
    view_.goTo(100'000);
    EXPECT_EQ(view_.current(), 999u);
}

TEST_F(PageViewTest, APageIsWhiteWhateverTheWindowIs) {
    QPalette dark = view_.palette();
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Mid, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::white);
    view_.setPalette(dark);
    QImage image(view_.viewport()->size(), QImage::Format_RGB32);
    view_.viewport()->render(&image);
    EXPECT_EQ(image.pixelColor(image.rect().center()), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(2, 2), QColor(Qt::black));
}

TEST(PaperPainter, MeasuresAsItPaints) {
    const auto measure = paperMeasure(9);
    QImage points(1, 1, QImage::Format_RGB32);
    points.setDotsPerMeterX(2835);
    points.setDotsPerMeterY(2835);
    QFont font = paperFont();
    font.setPointSizeF(9);
    const FontTextMeasure shaped(font, points);
    for (const char* text : {"06/28/2026 09:21 PM", "AVAToVoWa first office", "1,234,567.89 km/h", "Łódź 車 \xD8\xB3"})
        for (const FontRole role : {FontRole::Body, FontRole::Small, FontRole::Heading})
            EXPECT_NEAR(measure->width(text, role), shaped.width(text, role), 0.3) << text;
}

TEST(PaperPainter, RefusesPicturesThatAreTooLarge) {
    const PaperPainter painter;
    EXPECT_TRUE(painter.png({"", {}, {1e6, 10}, 9, {}}, 1).empty());
    EXPECT_TRUE(painter.png({"", {}, {0, 0}, 9, {}}, 1).empty());
    const Bytes png = painter.png({"Line", {}, {10, 5}, 9, {Line{{0, 0}, {10, 5}}}}, 2);
    EXPECT_EQ(QImage::fromData(png.data(), static_cast<int>(png.size())).size(), QSize(20, 10));
}

} // namespace
} // namespace quobrix
