#include "plots/plot_drawing.h"
#include "plots/random_plot.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace quobrix {
namespace {

class PlotLayoutTest : public testing::Test {
protected:
    PlotLayoutTest() {
        UnitChoices choices;
        choices.choose(UnitTypeId::Speed, UnitId::KilometrePerHour);
        choices.choose(UnitTypeId::Temperature, UnitId::Celsius);
        units_.replace(choices);
        view_.options.maximum = 25;
    }

    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
    PlotView view_;
    const TableTextMeasure measure_{12};
};

/// What the letters of TEXT cover.
Box boxOf(const Text& text, const TextMeasure& measure) {
    const double width = measure.width(text.text, text.font), size = measure.fontSize() * fontStyle(text.font).scale;
    const double left = text.place.x - (text.anchor == Anchor::Start    ? 0
                                        : text.anchor == Anchor::Middle ? 0.5
                                                                        : 1) *
                                           width;
    return {left, text.place.y - 0.72 * size, width, 0.92 * size};
}

bool touch(const Box& a, const Box& b) {
    return a.left < b.left + b.width && b.left < a.left + a.width && a.top < b.top + b.height &&
           b.top < a.top + a.height;
}

std::vector<Point> pointsOf(const DrawingCommand& command) {
    const auto corners = [](const Box& box) {
        return std::vector<Point>{{box.left, box.top}, {box.left + box.width, box.top + box.height}};
    };
    struct Visitor {
        decltype(corners)& of;
        std::vector<Point> operator()(const Line& c) const { return {c.from, c.to}; }
        std::vector<Point> operator()(const Polyline& c) const { return c.points; }
        std::vector<Point> operator()(const Area& c) const { return c.points; }
        std::vector<Point> operator()(const Segments& c) const { return c.points; }
        std::vector<Point> operator()(const Marks& c) const { return c.places; }
        std::vector<Point> operator()(const Rectangle& c) const { return of(c.box); }
        std::vector<Point> operator()(const Bar& c) const { return of(c.box); }
        std::vector<Point> operator()(const Clip& c) const { return of(c.box); }
        std::vector<Point> operator()(const EndClip&) const { return {}; }
        std::vector<Point> operator()(const Text& c) const { return {c.place}; }
        std::vector<Point> operator()(const Columns& c) const {
            std::vector<Point> points{{c.left, 0}, {c.left + c.width * static_cast<double>(c.spans.size()), 0}};
            for (const Columns::Span& span : c.spans)
                points.insert(points.end(), {{c.left, span.top}, {c.left, span.bottom}});
            return points;
        }
    };
    return std::visit(Visitor{corners}, command);
}

TEST_F(PlotLayoutTest, NothingTouchesAnotherTextAndEverythingIsWithin) {
    std::mt19937 random(7);
    const Size sizes[] = {{640, 400}, {1600, 900}, {3840, 2160}, {0, 0}, {900, kUnlimited}};
    for (int round = 0; round < 250; ++round) {
        SCOPED_TRACE(round);
        const PlotData data = test::randomPlotOrComparison(random);
        view_.options.lines = random() % 2;
        view_.options.normalize = random() % 2;
        view_.range = random() % 2 ? std::optional(PlotRange{data.whole.from + data.whole.length() * 0.3,
                                                             data.whole.from + data.whole.length() * 0.61})
                                   : std::nullopt;
        const Size size = sizes[round % std::ssize(sizes)];
        const double pixel = std::array{1.0, 0.5, 2.0 / 3}[static_cast<std::size_t>(round) % 3];
        const PlotLayout layout = layOutPlot(data, view_, context_, size, measure_, pixel);
        const bool bounded = size.height > 0 && std::isfinite(size.height);
        EXPECT_TRUE(!bounded || layout.size.height <= size.height + (data.panels.size() > 5 ? 60 : 0));
        EXPECT_GE(layout.size.width, size.width);
        const Drawing drawing = drawPlot(data, view_, layout);
        EXPECT_EQ(drawing.size, layout.size);

        std::vector<Box> texts;
        for (const DrawingCommand& command : drawing.commands) {
            for (const Point point : pointsOf(command)) { // not-a-number is within nothing
                ASSERT_TRUE(point.x >= -20 && point.x <= layout.size.width + 20) << point.x << " " << command.index();
                ASSERT_TRUE(point.y >= -20 && point.y <= layout.size.height + 20) << point.y << " " << command.index();
            }
            if (const auto* text = std::get_if<Text>(&command)) {
                const Box box = boxOf(*text, measure_);
                EXPECT_TRUE(box.left >= 0 && box.left + box.width <= layout.size.width) << text->text;
                EXPECT_TRUE(box.top >= 0 && box.top + box.height <= layout.size.height) << text->text;
                for (const Box& other : texts)
                    EXPECT_FALSE(touch(box, other)) << text->text;
                texts.push_back(box);
            }
        }
        for (const PanelLayout& panel : layout.panels) {
            EXPECT_EQ(panel.area.top, std::floor(panel.area.top));
            EXPECT_GE(panel.area.height, panel.ticks.empty() ? 8 : 24);
            EXPECT_LE(panel.ticks.size(), 24u);
            EXPECT_TRUE(panel.ticks.empty() || panel.ticks.size() > 1 || !data.panels[panel.panel].states.empty());
            const double label = measure_.lineHeight(FontRole::Fine);
            EXPECT_EQ(panel.bandLabels.size(),
                      std::min(panel.bands.size(), static_cast<std::size_t>(panel.area.height / label)))
                << "all that have room";
            for (const PlotTick& tick : panel.ticks)
                EXPECT_TRUE(tick.at >= panel.scale.top - 1 && tick.at <= panel.scale.bottom) << tick.label;
            for (const PlotTick& tick : layout.ticks)
                EXPECT_TRUE(tick.at >= layout.axis.left - 1e-6 && tick.at <= layout.axis.right + 1e-6) << tick.label;
        }
    }
}

TEST_F(PlotLayoutTest, WhatIsPointedAtIsWhatWasDrawnThere) {
    std::mt19937 random(8);
    for (int round = 0; round < 100; ++round) {
        PlotData data = test::randomPlot(random);
        const PlotLayout layout = layOutPlot(data, view_, context_, {1200, 700}, measure_);
        for (std::size_t i = 0; i < layout.panels.size(); ++i) {
            const Box &area = layout.panels[i].area, &grip = layout.panels[i].grip;
            EXPECT_EQ(layout.titleAt({grip.left + grip.width / 2, grip.top + grip.height / 2}), i);
            EXPECT_EQ(layout.titleAt({area.left + 3, area.top + area.height / 2}), std::nullopt);
            EXPECT_EQ(layout.placeOfPanel(grip.top), i);
            EXPECT_EQ(layout.placeOfPanel(area.top + area.height), i + 1);
            EXPECT_EQ(layout.panelAt({area.left + 3, area.top + area.height / 2}), i);
            EXPECT_EQ(layout.panelAt({area.left + 3, area.top + area.height + 2}), std::nullopt);
            EXPECT_EQ(layout.borderAt({area.left + 3, area.top + area.height + 2}), i);
            EXPECT_EQ(layout.borderAt({area.left + 3, area.top + area.height / 2}), std::nullopt);
        }
        const double place = data.whole.from + data.whole.length() * 0.37;
        EXPECT_NEAR(*layout.placeAt(layout.axis.x(place)), place, data.whole.length() * 1e-9);
        EXPECT_EQ(layout.placeAt(layout.axis.left - 1), std::nullopt);
        for (const PlotEvent& event : data.events) {
            const auto hit = layout.eventAt(data, view_.options, {layout.axis.x(event.at), *layout.panels[0].marksAt});
            ASSERT_TRUE(hit);
            EXPECT_EQ(data.events[*hit].at, event.at);
        }
        EXPECT_EQ(layout.eventAt(data, {.brakes = false, .accelerations = false},
                                 {200, layout.panels[0].marksAt.value_or(0)}),
                  std::nullopt);
        const PanelLayout& speeds = layout.panels.front();
        for (std::size_t band = 0; band < speeds.bands.size(); ++band) {
            const double to = data.bands[band].to.value_or(1e9), middle = (*data.bands[band].from + to) / 2;
            const double y = speeds.scale.y(middle);
            EXPECT_TRUE(y <= speeds.area.top || y >= speeds.scale.bottom ||
                        layout.bandAt(data, {layout.axis.left + 5, y}) == band);
        }
    }
}

TEST_F(PlotLayoutTest, SpeedsAreNormalizedAndNothingElse) {
    PlotData data;
    data.records.emplace_back();
    data.whole = {0, 100};
    for (const bool speed : {true, false}) {
        std::vector<double> values(101);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = static_cast<double>(i) / 3.6 + (speed ? 0 : 273.15); // 0 to 100 km/h, 0 to 28 °C
        data.panels.push_back({speed ? kSpeedPanel : "Parameter4",
                               {},
                               speed ? UnitTypeId::Speed : UnitTypeId::Temperature,
                               speed,
                               {},
                               {}});
        data.panels.back().curves.push_back({0, PlotSamples(0, 1, std::move(values))});
    }
    const auto greatest = [&](std::size_t panel, double maximum) {
        view_.options.normalize = true;
        view_.options.maximum = maximum / 3.6;
        const PlotLayout layout = layOutPlot(data, view_, context_, {640, 400}, measure_);
        const PanelLayout& of = layout.panels[panel];
        EXPECT_NEAR(of.baseline, panel == 0 ? 0 : 273.15, 1e-9) << "areas end at zero in the user's unit";
        EXPECT_NEAR(of.scale.y(of.scale.greatest), of.area.top, 1e-9);
        return of.scale.greatest;
    };
    EXPECT_NEAR(greatest(0, 47) * 3.6, 47, 1e-9);
    EXPECT_NEAR(greatest(0, 255) * 3.6, 255, 1e-9);
    EXPECT_NEAR(greatest(0, 0) * 3.6, 100, 1e-9) << "its own data";
    EXPECT_NEAR(greatest(1, 47) - 273.15, 28.75, 1e-9) << "a quarter of a step above its own";
}

TEST_F(PlotLayoutTest, PanelsAreHiddenReorderedAndSized) {
    std::mt19937 random(9);
    PlotData data = test::randomPlot(random);
    while (data.panels.size() < 4)
        data = test::randomPlot(random);
    data.panels.resize(4);
    for (PlotPanel& panel : data.panels) {
        panel.states.clear();
        panel.curves = {{0, PlotSamples(0, 1, {1, 2})}};
    }
    view_.panels = {{"Panel2", false, 2}, {"Panel9", false, 9}, {kSpeedPanel, true, 1}, {"Panel1", false, 1}};
    PlotLayout layout = layOutPlot(data, view_, context_, {1200, 900}, measure_);
    ASSERT_EQ(layout.panels.size(), 3u);
    EXPECT_EQ(layout.panels[0].panel, 2u);
    EXPECT_EQ(layout.panels[1].panel, 1u);
    EXPECT_EQ(layout.panels[2].panel, 3u);
    EXPECT_NEAR(layout.panels[0].area.height, 2 * layout.panels[1].area.height, 2);
    data.panels[2].curves = {{0, PlotSamples(0, 1, {kNoValue})}};
    const double before = layout.panels[1].area.height, left = layout.panels[2].scale.bottom;
    layout = layOutPlot(data, view_, context_, {1200, 900}, measure_);
    EXPECT_LT(layout.panels[0].area.height, 40) << "what shows nothing leaves the room to the others";
    EXPECT_GT(layout.panels[1].area.height, 1.5 * before);
    EXPECT_NEAR(layout.panels[2].scale.bottom, left, 3);
    view_.panels.back().height = 10;
    layout = layOutPlot(data, view_, context_, {1200, 240}, measure_);
    EXPECT_LE(layout.size.height, 240) << "the higher one leaves the others what they need";
    EXPECT_LT(layOutPlot(data, view_, context_, {1200, 100}, measure_).panels.size(), 3u)
        << "where there is no room, what shows nothing is left out";
    EXPECT_GT(layout.panels[1].area.height, layout.panels[2].area.height);
    for (std::size_t i = 0; i < 4; ++i)
        view_.panels.push_back({data.panels[i].key, true, 1});
    view_.panels.erase(view_.panels.begin(), view_.panels.begin() + 4);
    layout = layOutPlot(data, view_, context_, {1200, 900}, measure_);
    EXPECT_TRUE(layout.panels.empty());
    EXPECT_EQ(
        plotDescription(data, layout, context_),
        "All quantities are hidden. In the menu of the right mouse button, Quantities / Show All shows them again.");
}

TEST_F(PlotLayoutTest, MovingByWholePixelsLeavesColumnsOfPixelsWhereTheyAre) {
    std::mt19937 random(10);
    PlotData data = test::randomPlot(random);
    data.whole = {0, 40'000};
    for (const double pixel : {1.0, 0.5}) {
        view_.range = PlotRange{3000, 13'000};
        const PlotLayout first = layOutPlot(data, view_, context_, {1203, 700}, measure_, pixel);
        const double column = first.range().length() / (first.width() / pixel);
        EXPECT_NEAR(first.axis.from / column, std::round(first.axis.from / column), 1e-6);
        EXPECT_LE(std::abs(first.axis.from - 3000), column / 2);
        view_.range = PlotRange{3000 + 7 * column, 13'000 + 7 * column};
        const PlotLayout moved = layOutPlot(data, view_, context_, {1203, 700}, measure_, pixel);
        EXPECT_NEAR(moved.axis.from - first.axis.from, 7 * column, column * 1e-6);
    }
}

TEST_F(PlotLayoutTest, EventsAreDrawnOnceAColumnHoweverManyThereAre) {
    std::mt19937 random(3);
    PlotData data = test::randomPlot(random);
    data.events.clear();
    for (int i = 0; i < 100'000; ++i)
        data.events.push_back({PlotEventKind::HardBrake, data.whole.from + data.whole.length() * i / 1e5});
    const PlotLayout layout = layOutPlot(data, view_, context_, {800, 600}, measure_);
    std::size_t marks = 0;
    for (const DrawingCommand& command : drawPlot(data, view_, layout).commands)
        if (const auto* drawn = std::get_if<Marks>(&command); drawn && drawn->shape != MarkShape::Dot)
            marks = std::max(marks, drawn->places.size());
    EXPECT_LE(marks, 801U);
    EXPECT_GE(marks, static_cast<std::size_t>(layout.width()));
}

TEST_F(PlotLayoutTest, PointersAreFewCommandsHoweverMuchIsDrawn) {
    std::mt19937 random(11);
    for (int round = 0; round < 50; ++round) {
        const PlotData data = test::randomPlot(random);
        const PlotLayout layout = layOutPlot(data, view_, context_, {1600, 900}, measure_);
        PlotPointers pointers{data.whole.to / 2, PlotRange{-50, data.whole.to / 3}, {}};
        if (!data.bands.empty())
            pointers.band = 0;
        const Drawing over = drawPlotPointers(data, layout, pointers);
        EXPECT_LE(over.commands.size(), 3 + data.panels.size());
        for (const DrawingCommand& command : over.commands)
            for (const Point point : pointsOf(command))
                EXPECT_TRUE(point.x >= layout.axis.left - 1 && point.x <= layout.axis.right + 1 && point.y >= 0 &&
                            point.y <= layout.size.height);
    }
}

} // namespace
} // namespace quobrix
