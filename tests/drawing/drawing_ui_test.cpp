#include "drawing/ui/drawing_painter.h"
#include "drawing/ui/drawing_view.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QPalette>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace quobrix {
namespace {

QColor colourOf(ColourRole role) {
    const Colour colour = kPaperPalette[role];
    return {colour.red, colour.green, colour.blue};
}

/// Whether anything of COLOUR is in PART of IMAGE.
bool has(const QImage& image, const QRect& part, const QColor& colour) {
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            if (image.pixelColor(x, y) == colour)
                return true;
    return false;
}

TEST(DrawingPainter, CarriesEveryCommandOutAtEveryScale) {
    for (const int scale : {1, 2, 3}) {
        QImage image(QSize(100, 80) * scale, QImage::Format_RGB32);
        image.fill(Qt::red);
        image.setDevicePixelRatio(scale);
        Drawing drawing{{}, {}, {100, 80}, 12, {}};
        drawing.commands = {Rectangle{{0, 0, 100, 80}},
                            Bar{{10, 10, 30, 10}, ColourRole::Track},
                            Area{{{50, 10}, {70, 10}, {70, 30}, {50, 30}}},
                            Line{{10, 40.5}, {90, 40.5}, {ColourRole::Rule, 1}},
                            Polyline{{{80, 5.5}, {90, 5.5}, {95, 5.5}}, {ColourRole::Text, 1}},
                            Text{{95, 70}, "▇▇", Anchor::End, FontRole::Body, ColourRole::Accent},
                            Columns{10, 2, {{50, 60}, {60, 60}, {40, 60}}},
                            Columns{55, 0.4, std::vector<Columns::Span>(25, {50, 60})},
                            Clip{{20, 50, 10, 10}},
                            Segments{{{15, 55.5}, {40, 55.5}, {0, 70.5}, {40, 70.5}}, {ColourRole::Text, 1}},
                            EndClip{},
                            Marks{MarkShape::Dot, 10, {{45, 60}}, ColourRole::StepTop}};
        QPainter painter(&image);
        paintDrawing(painter, drawing, kPaperPalette, QFont());
        painter.end();
        const auto at = [&](int x, int y) { return image.pixelColor(x * scale + scale / 2, y * scale + scale / 2); };
        EXPECT_EQ(at(1, 1), colourOf(ColourRole::Ground));
        EXPECT_EQ(at(25, 15), colourOf(ColourRole::Track));
        EXPECT_NE(at(10, 10), colourOf(ColourRole::Track)) << "round";
        EXPECT_EQ(at(60, 20), colourOf(ColourRole::Accent));
        EXPECT_EQ(at(50, 40), colourOf(ColourRole::Rule)) << "one unit wide at scale " << scale;
        EXPECT_EQ(at(50, 41), colourOf(ColourRole::Ground));
        EXPECT_EQ(at(90, 5), colourOf(ColourRole::Text));
        EXPECT_EQ(at(11, 55), colourOf(ColourRole::CurveArea));
        EXPECT_EQ(at(13, 55), colourOf(ColourRole::Ground)) << "a column that is left out";
        EXPECT_EQ(at(15, 45), colourOf(ColourRole::CurveArea));
        for (int x = 56; x < 64; ++x)
            EXPECT_EQ(at(x, 55), colourOf(ColourRole::CurveArea)) << "no seams where columns end within pixels";
        EXPECT_EQ(at(25, 55), colourOf(ColourRole::Text));
        EXPECT_EQ(at(18, 55), colourOf(ColourRole::Ground)) << "clipped";
        EXPECT_EQ(at(35, 70), colourOf(ColourRole::Ground)) << "clipped";
        EXPECT_EQ(at(45, 60), colourOf(ColourRole::StepTop));
        const auto part = [&](int left, int right) {
            return QRect(left * scale, 50 * scale, (right - left) * scale, 25 * scale);
        };
        EXPECT_TRUE(has(image, part(80, 95), colourOf(ColourRole::Accent))) << "ends at its place";
        EXPECT_FALSE(has(image, part(96, 100), colourOf(ColourRole::Accent)));
    }
}

/// The toolkit's own smooth lines, which an image that can be seen through gets, are what they are held to.
TEST(DrawingPainter, PaintsDenseLinesAsTheToolkitDoesButClipped) {
    for (const double scale : {1.0, 1.5, 2.0}) {
        Drawing drawing{{}, {}, {400, 100}, 12, {}};
        Polyline line{{}, {ColourRole::Text, 1}};
        for (int i = 0; i < 300; ++i)
            line.points.push_back({20 + i * 1.1, 50 + 40 * std::sin(i / 15.0)});
        drawing.commands = {Rectangle{{0, 0, 400, 100}}, Clip{{40, 20, 300, 60}}, std::move(line), EndClip{}};
        const auto painted = [&](QImage::Format format) {
            QImage image(QSize(400, 100) * scale, format);
            image.setDevicePixelRatio(scale);
            QPainter painter(&image);
            paintDrawing(painter, drawing, kPaperPalette, QFont());
            painter.end();
            return image;
        };
        const QImage ours = painted(QImage::Format_RGB32), theirs = painted(QImage::Format_ARGB32_Premultiplied);
        double difference = 0, ink = 0, ourInk = 0;
        for (int y = 0; y < ours.height(); ++y)
            for (int x = 0; x < ours.width(); ++x) {
                const int a = qGray(ours.pixel(x, y)), b = qGray(theirs.pixel(x, y));
                difference += std::abs(a - b);
                ourInk += 255 - a;
                ink += 255 - b;
                const QPointF place = QPointF(x + 0.5, y + 0.5) / scale;
                const bool within = place.x() > 39 && place.x() < 341 && place.y() > 19 && place.y() < 81;
                ASSERT_TRUE(within || a == 255) << "clipped";
            }
        // Lines of one pixel are thinner in the toolkit where they slope.
        EXPECT_NEAR(ourInk / ink, 1, scale == 1 ? 0.2 : 0.05) << scale;
        EXPECT_LT(difference / ink, scale == 1 ? 0.4 : 0.3) << scale;
    }
}

/// A pen of more than a pixel takes seconds for one polyline that goes up and down.
TEST(DrawingPainter, PaintsNoisyLinesQuicklyWhateverTheScaleAndDash) {
    Drawing drawing{{}, {}, {1600, 200}, 12, {}};
    for (const Dash dash : kDashes) {
        Polyline line{{}, {ColourRole::Text, 1.5, dash}};
        for (int i = 0; i < 6400; ++i)
            line.points.push_back({i / 4.0, (i * 7919) % 200 + 0.5});
        drawing.commands.emplace_back(std::move(line));
    }
    QImage image(QSize(3200, 400), QImage::Format_RGB32);
    image.setDevicePixelRatio(2);
    QElapsedTimer timer;
    timer.start();
    QPainter painter(&image);
    paintDrawing(painter, drawing, kPaperPalette, QFont());
    EXPECT_LT(timer.elapsed(), 20'000) << "about half a minute a line otherwise";
}

TEST(DrawingView, IsDrawnForItsWidthAndReadAsAChart) {
    double drawn = 0;
    DrawingView view([&](Size room, const TextMeasure& measure) {
        drawn = room.width;
        return Drawing{"Share", "Half: 50 %", {std::max(room.width, 120.0), 40}, measure.fontSize(), {}};
    });
    EXPECT_EQ(view.minimumSizeHint(), QSize(120, 40));
    view.resize(300, 40);
    view.grab();
    EXPECT_EQ(drawn, 300);
    QAccessibleInterface* chart = QAccessible::queryAccessibleInterface(&view);
    EXPECT_EQ(chart->role(), QAccessible::Chart);
    EXPECT_EQ(chart->text(QAccessible::Name), "Share");
    EXPECT_EQ(chart->text(QAccessible::Description), "Half: 50 %");
}

} // namespace
} // namespace quobrix
