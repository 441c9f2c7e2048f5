#include "plots/curve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace quobrix {
namespace {

using Points = std::vector<Point>;

TEST(ClippedLine, IsWhatOfALineIsWithin) {
    const Box box{10, 10, 100, 50};
    const struct {
        const char* what;
        Points line;
        std::vector<Points> pieces;
    } cases[] = {
        {"within", {{20, 20}, {30, 50}, {40, 20}}, {{{20, 20}, {30, 50}, {40, 20}}}},
        {"through", {{0, 35}, {120, 35}}, {{{10, 35}, {110, 35}}}},
        {"out and in", {{20, 20}, {60, -20}, {100, 20}}, {{{20, 20}, {30, 10}}, {{90, 10}, {100, 20}}}},
        {"beside", {{0, 0}, {5, 100}, {200, 200}}, {}},
        {"far away", {{60, 35}, {60, 1e12}}, {{{60, 35}, {60, 60}}}},
        {"one point", {{60, 35}}, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(clippedLine(c.line, box), c.pieces) << c.what;
}

/// A panel of 200 columns over the values from 0 to 100, and what is seen of SAMPLES on it from 0 to TO.
struct Canvas {
    PlotLayout layout;
    PanelLayout panel;
    explicit Canvas(double to, double base = 0, double pixel = 1) {
        layout.axis = {0, to, 40, 240};
        layout.pixel = pixel;
        panel.area = {40, 10, 200, 100};
        panel.scale = {0, 100, 10, 110};
        panel.baseline = base;
    }
    CurveShape shape(const PlotSamples& samples, bool steps = false) const {
        return shapeOf(samples, panel, layout, steps, true, true);
    }
};

TEST(Curve, FewSamplesAreQuadrilateralsDownToTheBaseWithDots) {
    const CurveShape shape = Canvas(20).shape({0, 5, {0, 50, 100, 50, 50}});
    EXPECT_EQ(shape.lines, (std::vector<Points>{{{40, 110}, {90, 60}, {140, 10}, {190, 60}, {240, 60}}}));
    EXPECT_EQ(shape.areas,
              (std::vector<Points>{{{40, 110}, {90, 60}, {140, 10}, {190, 60}, {240, 60}, {240, 110}, {40, 110}}}));
    EXPECT_EQ(shape.dots.size(), 5u);
    EXPECT_TRUE(shape.columns.empty());
    EXPECT_TRUE(shape.sparse);
}

TEST(Curve, BreaksWhereAValueIsMissingAndShowsLoneSamples) {
    const CurveShape shape = Canvas(30).shape({0, 5, {50, kNoValue, 50, kNoValue, 20, 20, kNoValue}});
    ASSERT_EQ(shape.lines.size(), 1u);
    EXPECT_EQ(shape.lines[0].size(), 2u);
    EXPECT_EQ(shape.areas.size(), 1u);
    EXPECT_EQ(shape.dots.size(), 4u);
}

TEST(Curve, StatesAreStepsThatHoldUntilTheNextSample) {
    const CurveShape shape = Canvas(20).shape({0, 5, {20, 80, kNoValue, 20}}, true);
    EXPECT_EQ(shape.lines, (std::vector<Points>{{{40, 90}, {90, 90}, {90, 30}, {140, 30}}, {{190, 90}, {240, 90}}}));
}

TEST(Curve, WhatIsAboveTheMaximumRunsAlongTheEdge) {
    const CurveShape shape = Canvas(20).shape({0, 10, {0, 200, 0}});
    ASSERT_EQ(shape.areas.size(), 1u);
    EXPECT_EQ(shape.areas[0], (Points{{40, 110}, {90, 10}, {140, 10}, {190, 10}, {240, 110}, {240, 110}, {40, 110}}));
    ASSERT_EQ(shape.lines.size(), 1u) << "a gap would say that nothing was recorded";
    EXPECT_EQ(shape.lines[0], (Points{{40, 110}, {89.75, 10.5}, {140, 10.5}, {190.25, 10.5}, {240, 110}}));
}

TEST(Curve, ManySamplesAreColumnsAsHighAsTheLineGoesInEach) {
    std::mt19937 random(4);
    for (int round = 0; round < 60; ++round) {
        const std::size_t count = 60 + random() % 9000;
        std::vector<double> values(count);
        for (double& value : values)
            value = std::uniform_real_distribution<double>(0, 100)(random);
        const double base = round % 2 ? 30 : 0, pixel = round % 3 ? 1 : 0.5;
        const Canvas canvas(static_cast<double>(count - 1), base, pixel);
        const CurveShape shape = canvas.shape({0, 1, values});
        ASSERT_EQ(shape.columns.size(), 1u);
        const Columns& columns = shape.columns.front();
        ASSERT_EQ(columns.spans.size(), static_cast<std::size_t>(200 / pixel));
        EXPECT_EQ(columns.left, 40);
        for (std::size_t column = 0; column < columns.spans.size(); ++column) {
            // Between samples the line is straight: its extremes in a column are at samples or at the column's edges.
            const double perColumn = static_cast<double>(count - 1) / static_cast<double>(columns.spans.size());
            const double from = static_cast<double>(column) * perColumn, to = from + perColumn;
            const auto at = [&](double place) {
                const auto i = std::min(static_cast<std::size_t>(place), count - 2);
                return std::lerp(values[i], values[i + 1], place - static_cast<double>(i));
            };
            double least = std::min({at(from), at(to), base}), greatest = std::max({at(from), at(to), base});
            for (auto i = static_cast<std::size_t>(std::ceil(from)); static_cast<double>(i) < to; ++i) {
                least = std::min(least, values[i]);
                greatest = std::max(greatest, values[i]);
            }
            // A reduced line goes from one column's last sample to the next one's first: there, too, it is exact.
            ASSERT_NEAR(columns.spans[column].top, 110 - greatest, 1e-6) << column;
            ASSERT_NEAR(columns.spans[column].bottom, 110 - least, 1e-6) << column;
        }
        std::size_t points = 0;
        for (const Points& line : shape.lines)
            points += line.size();
        EXPECT_LE(points, columns.spans.size() * 4 + 2) << "however many samples there are";
    }
}

} // namespace
} // namespace quobrix
