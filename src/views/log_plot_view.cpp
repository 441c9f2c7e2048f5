#include "views/log_plot_view.h"

#include "base/ui/qt_text.h"
#include "model/accident_log.h"
#include "model/trip_log.h"
#include "texts/text.h"

#include <utility>

namespace quobrix {

PlotPaneContext plotPaneContext(const ViewContext& context) {
    PlotPaneContext pane{context.text(), context.settings};
    if (context.windows) {
        pane.unitSystems = context.windows->unitSystems;
        if (context.windows->help)
            pane.help = [windows = context.windows] { windows->help({}); };
    }
    if (context.saveReport)
        pane.save = [save = context.saveReport](Report report) {
            if (*save)
                (*save)(std::move(report));
        };
    return pane;
}

namespace {

PlotData plotOf(const LogSpec& spec, const Table& log, RowIndex row, const TextContext& context) {
    return spec.id == LogId::Trips ? tripPlot(static_cast<const TTripLogTable&>(log), row, context)
                                   : stopPlot(static_cast<const TAccidentLogTable&>(log), row, context);
}

} // namespace

LogPlotView::LogPlotView(const ViewContext& context, const LogSpec& spec, QWidget* parent)
    : PlotPane(plotPaneContext(context), spec.id == LogId::Trips, parent), context_(context), spec_(spec) {
    setObjectName(toQt(spec.viewName("PlotView")));
    setAccessibleName(tr("%1 Plot").arg(toQt(spec.recordHeading())));
    showRecord(nullptr, std::nullopt);
}

void LogPlotView::showRecord(const Table* log, std::optional<RowIndex> row) {
    const std::optional<RecordKey> key = row ? std::optional(spec_.keyOf(*log, *row)) : std::nullopt;
    const bool same = key && key == shown_;
    shown_ = key;
    followSettings();
    if (row)
        return show(plotOf(spec_, *log, *row, context_.text()), same);
    PlotData nothing;
    nothing.records.push_back(text(TextId::NoRecord, text(spec_.record)));
    nothing.emptyText = text(TextId::NoRecordsYet, text(spec_.records));
    show(std::move(nothing), false);
}

void LogPlotView::showMark(const PlotMark& mark) {
    plot().markBand(mark.band);
    if (mark.place)
        plot().centreOn(*mark.place);
}

void LogPlotView::showSample(std::size_t sample) {
    for (const PlotPanel& panel : plot().data().panels)
        if (panel.key == kSpeedPanel && sample < panel.curves.front().samples.size())
            return plot().centreOn(panel.curves.front().samples.at(sample));
}

} // namespace quobrix
