#include "plots/plot_report.h"

#include "plots/plot_drawing.h"
#include "plots/plot_figures.h"

#include <memory>
#include <utility>

namespace quobrix {
namespace {

constexpr double kPagePixel = 1 / 3.0; // points: some 200 dots an inch

} // namespace

ShownPlot::ShownPlot(PlotData data, PlotView view, const TextContext& context)
    : data_(std::move(data)), view_(std::move(view)), units_(context.units.locale()), zone_(context.zone) {
    units_.replace(context.units.choices());
}

Drawing ShownPlot::draw(Size room, const TextMeasure& measure, double pixel) const {
    const TextContext context{units_, zone_};
    const PlotLayout layout = layOutPlot(data_, view_, context, room, measure, pixel);
    Drawing drawing = drawPlot(data_, view_, layout);
    drawing.title = plotTitle(data_, context);
    drawing.description = plotDescription(data_, layout, context);
    return drawing;
}

Report ShownPlot::report(PlotData data, PlotView view, const TextContext& context) {
    Report report{plotTitle(data, context), {}, true};
    if (data.panels.empty()) {
        report.blocks.emplace_back(Paragraph{data.emptyText});
        return report;
    }
    view.named = false; // the report is
    const RangeFigures figures = figuresOf(data, view.range.value_or(data.whole), context, view.panels);
    Paragraph range{rangeText(data, figures, false, context)};
    const auto shown = std::make_shared<const ShownPlot>(std::move(data), std::move(view), context);
    report.blocks.emplace_back(
        Picture{[shown](Size room, const TextMeasure& measure) { return shown->draw(room, measure, kPagePixel); }});
    report.blocks.emplace_back(std::move(range));
    report.blocks.emplace_back(figuresGrid(figures));
    return report;
}

} // namespace quobrix
