#include "plots/plot_drawing.h"

#include "plots/curve.h"
#include "plots/plot_figures.h"
#include "texts/text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {
namespace {

constexpr double kSampleDot = 4.5;
constexpr double kCursorDot = 6.5;
constexpr double kTickLength = 4;
constexpr double kLineSampleHalf = 1.3;  // sizes of the body's font
constexpr double kFewSamplesWidth = 1.5; // of a line with room between its samples, to other lines
constexpr double kFewSamplesRoom = 3;    // units of the drawing
constexpr double kRangeEdge = 3;

ColourRole curveColour(const PlotData& data, std::size_t record) {
    return data.compares() ? kLineColours[record % std::size(kLineColours)] : ColourRole::Curve;
}
Dash curveDash(const PlotData& data, std::size_t record) {
    return data.compares() ? kDashes[record % std::size(kDashes)] : Dash::Solid;
}

/// A line of one pixel covers whole pixels when it runs along their middle.
double crisp(double at) { return std::floor(at) + 0.5; }

class Artist {
public:
    Artist(const PlotData& data, const PlotView& view, const PlotLayout& layout)
        : data_(data), view_(view), layout_(layout) {
        drawing_.size = layout.size;
        drawing_.fontSize = layout.fontSize;
    }

    Drawing draw() {
        add(Rectangle{{0, 0, layout_.size.width, layout_.size.height}});
        for (const Text& heading : layout_.headings)
            add(heading);
        for (const LegendEntry& entry : layout_.legend)
            drawLegend(entry);
        for (const PanelLayout& panel : layout_.panels)
            drawPanel(panel, data_.panels[panel.panel]);
        if (!layout_.panels.empty())
            drawAxis();
        return std::move(drawing_);
    }

private:
    template <class Command>
    void add(Command command) {
        drawing_.commands.emplace_back(std::move(command));
    }

    void drawLegend(const LegendEntry& entry) {
        if (entry.event) {
            const PlotEventSpec& spec = plotEventSpec(*entry.event);
            add(Marks{spec.shape, kPlotMarkSize, {entry.sample}, spec.colour});
        } else {
            const double half = kLineSampleHalf * layout_.fontSize;
            const Stroke stroke = entry.bands
                                      ? Stroke{ColourRole::SecondaryText, hair_, Dash::Dashed}
                                      : Stroke{curveColour(data_, entry.record), 2, curveDash(data_, entry.record)};
            add(Line{{entry.sample.x - half, entry.sample.y}, {entry.sample.x + half, entry.sample.y}, stroke});
        }
        add(entry.label);
    }

    void drawPanel(const PanelLayout& panel, const PlotPanel& data) {
        const Box& area = panel.area;
        const double right = area.left + area.width, bottom = area.top + area.height;
        std::vector<std::pair<const PlotCurve*, CurveShape>> curves;
        const bool areas = !view_.options.lines && !data_.compares() && data.states.empty();
        for (const PlotCurve& curve : data.curves)
            curves.emplace_back(&curve,
                                shapeOf(curve.samples, panel, layout_, !data.states.empty(), areas, !data_.compares()));

        add(Clip{area});
        for (auto& [curve, shape] : curves) {
            for (std::vector<Point>& points : shape.areas)
                add(Area{std::move(points), ColourRole::CurveArea});
            for (Columns& columns : shape.columns)
                add(std::move(columns));
        }
        Segments grid{{}, {ColourRole::Track, hair_}};
        for (const PlotTick& tick : panel.ticks)
            if (const double y = crisp(tick.at); y > area.top + 1 && y < bottom - 1)
                grid.points.insert(grid.points.end(), {{area.left, y}, {right, y}});
        for (const PlotTick& tick : layout_.ticks)
            grid.points.insert(grid.points.end(), {{crisp(tick.at), area.top}, {crisp(tick.at), bottom}});
        add(std::move(grid));
        Segments bands{{}, {ColourRole::SecondaryText, hair_, Dash::Dashed}};
        for (const BandRows& band : panel.bands)
            if (band.line)
                bands.points.insert(bands.points.end(), {{area.left, *band.line + 0.5}, {right, *band.line + 0.5}});
        if (!bands.points.empty())
            add(std::move(bands));
        for (auto& [curve, shape] : curves) {
            std::size_t drawn = 0;
            for (const std::vector<Point>& line : shape.lines)
                drawn += line.size();
            // As wide on paper, where pixels are finer, as it is on a screen.
            const bool few = shape.sparse && static_cast<double>(drawn) * kFewSamplesRoom < layout_.width();
            const Stroke stroke{curveColour(data_, curve->record), hair_ * (few ? kFewSamplesWidth : 1),
                                curveDash(data_, curve->record)};
            for (std::vector<Point>& points : shape.lines)
                add(Polyline{std::move(points), stroke});
            if (!shape.dots.empty())
                add(Marks{MarkShape::Dot, kSampleDot, std::move(shape.dots), stroke.colour});
        }
        add(EndClip{});
        drawEvents(panel);
        for (const Text& label : panel.bandLabels)
            add(label);

        add(Segments{{{area.left - 0.5, area.top},
                      {area.left - 0.5, bottom},
                      {area.left - 1, bottom + 0.5},
                      {right, bottom + 0.5}},
                     {ColourRole::SecondaryText, hair_}});
        add(panel.title);
        for (const PlotTick& tick : panel.ticks)
            drawTick(panel, tick);
    }

    /// Labels stay within the panel's height, so that those of two panels do not meet.
    void drawTick(const PanelLayout& panel, const PlotTick& tick) {
        const double size = layout_.fontSize * fontStyle(FontRole::Small).scale;
        const double middle = std::clamp(tick.at, panel.scale.top + size * 0.45, panel.scale.bottom - size * 0.35);
        add(Text{{panel.area.left - kTickLength - 1, middle + size * 0.35},
                 tick.label,
                 Anchor::End,
                 FontRole::Small,
                 ColourRole::SecondaryText});
    }

    void drawEvents(const PanelLayout& panel) {
        for (std::size_t i = 0; i < kPlotEventKinds; ++i) { // those that are extreme over those that are hard
            constexpr PlotEventKind kOrder[] = {PlotEventKind::HardAcceleration, PlotEventKind::HardBrake,
                                                PlotEventKind::ExtremeAcceleration, PlotEventKind::ExtremeBrake};
            if (!shows(view_.options, kOrder[i]))
                continue;
            const PlotEventSpec& spec = plotEventSpec(kOrder[i]);
            Segments lines{{}, {spec.colour, hair_, Dash::Dotted}};
            Marks marks{spec.shape, kPlotMarkSize, {}, spec.colour};
            for (const PlotEvent& event : data_.events) {
                if (event.kind != kOrder[i] || event.at < layout_.axis.from || event.at > layout_.axis.to)
                    continue;
                const double x = crisp(std::clamp(layout_.axis.x(event.at), layout_.axis.left, layout_.axis.right));
                if (!lines.points.empty() && lines.points.back().x == x)
                    continue; // they follow each other along the axis: it would lie on the one before
                lines.points.insert(lines.points.end(), {{x, panel.area.top}, {x, panel.scale.bottom}});
                if (panel.marksAt)
                    marks.places.push_back({x, *panel.marksAt});
            }
            if (!lines.points.empty())
                add(std::move(lines));
            if (!marks.places.empty())
                add(std::move(marks));
        }
    }

    void drawAxis() {
        const double bottom = layout_.panels.back().scale.bottom;
        Segments ticks{{}, {ColourRole::SecondaryText, hair_}};
        for (const PlotTick& tick : layout_.ticks) {
            ticks.points.insert(ticks.points.end(), {{crisp(tick.at), bottom}, {crisp(tick.at), bottom + kTickLength}});
            if (!tick.label.empty())
                add(Text{{tick.at, layout_.tickBaseline},
                         tick.label,
                         Anchor::Middle,
                         FontRole::Small,
                         ColourRole::SecondaryText});
        }
        add(std::move(ticks));
        if (!layout_.axisTitle.text.empty())
            add(layout_.axisTitle);
    }

    const PlotData& data_;
    const PlotView& view_;
    const PlotLayout& layout_;
    const double hair_ = std::min(1.0, 2 * layout_.pixel); ///< the width of lines: less on paper than on a screen
    Drawing drawing_;
};

} // namespace

Drawing drawPlot(const PlotData& data, const PlotView& view, const PlotLayout& layout) {
    return Artist(data, view, layout).draw();
}

ShownText plotDescription(const PlotData& data, const PlotLayout& layout, const TextContext& context) {
    if (layout.panels.empty())
        return data.panels.empty() ? data.emptyText : text(TextId::PlotAllHidden);
    std::string all;
    for (const PanelLayout& panel : layout.panels)
        for (const ShownText& sentence : sentencesOf(data, data.panels[panel.panel], layout.range(), context))
            all += (all.empty() ? "" : " ") + sentence;
    return ShownText::asItIs(std::move(all));
}

Drawing drawPlotPointers(const PlotData& data, const PlotLayout& layout, const PlotPointers& pointers) {
    Drawing drawing;
    drawing.size = layout.size;
    drawing.fontSize = layout.fontSize;
    const PlaceScale& axis = layout.axis;
    const auto seen = [&](double place) { return place >= axis.from && place <= axis.to; };
    Segments cursor{{}, {ColourRole::Text, 1}};
    Segments edges{{}, {ColourRole::Accent, kRangeEdge}}, ends{{}, {ColourRole::Accent, 1}};
    for (const PanelLayout& panel : layout.panels) {
        const double top = panel.scale.top, bottom = panel.scale.bottom;
        if (pointers.range && pointers.range->to >= axis.from && pointers.range->from <= axis.to) {
            const double left = axis.x(std::max(pointers.range->from, axis.from));
            const double right = axis.x(std::min(pointers.range->to, axis.to));
            for (const double end : {pointers.range->from, pointers.range->to})
                if (seen(end))
                    ends.points.insert(ends.points.end(), {{crisp(axis.x(end)), top}, {crisp(axis.x(end)), bottom}});
            for (const double y : {top, bottom})
                edges.points.insert(edges.points.end(), {{left, y}, {right, y}});
        }
        if (pointers.band && *pointers.band < panel.bands.size()) {
            const PlotBand& band = data.bands[*pointers.band];
            for (const std::optional<double>& end : {band.from, band.to}) {
                const double y = std::clamp(end ? panel.scale.y(*end) : top, top, bottom);
                edges.points.insert(edges.points.end(), {{axis.left, y}, {axis.right, y}});
            }
        }
        if (pointers.cursor && seen(*pointers.cursor)) {
            const double x = crisp(axis.x(*pointers.cursor));
            cursor.points.insert(cursor.points.end(), {{x, top}, {x, bottom}});
        }
    }
    for (Segments* segments : {&edges, &ends, &cursor})
        if (!segments->points.empty())
            drawing.commands.emplace_back(std::move(*segments));
    if (pointers.cursor && seen(*pointers.cursor))
        for (const PanelLayout& panel : layout.panels)
            for (const PlotCurve& curve : data.panels[panel.panel].curves)
                if (const auto sample = sampleReadAt(data, curve, *pointers.cursor)) {
                    const Point place{axis.x(curve.samples.at(*sample)), panel.scale.y(curve.samples.value(*sample))};
                    if (place.x >= axis.left && place.y >= panel.scale.top)
                        drawing.commands.emplace_back(
                            Marks{MarkShape::Dot, kCursorDot, {place}, curveColour(data, curve.record)});
                }
    return drawing;
}

} // namespace quobrix
