#pragma once

#include "drawing/palette.h"
#include "drawing/svg.h"
#include "export/csv.h"
#include "export/json.h"
#include "model/accident_log.h"
#include "model/logs.h"
#include "model/trip_log.h"
#include "plots/comparison.h"
#include "plots/plot_report.h"
#include "report/pages.h"
#include "report/render.h"
#include "support/fixed_measure.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace quobrix::test {

/// REPORT in every form that it is shown in.
inline void walkReport(const Report& report) {
    (void)renderText(report);
    (void)renderHtml(report);
    static const FixedMeasure measure;
    const Pages pages(report, {{320, 344}, {10, 10, 10, 10}}, measure);
    for (std::size_t i = 0; i < std::min<std::size_t>(pages.count(), 5); ++i)
        (void)writeSvg(pages.page(i), kPaperPalette);
    if (!pages.fits() &&
        std::ranges::none_of(report.blocks, [](const Block& block) { return std::holds_alternative<Picture>(block); }))
        std::abort(); // texts always do
}

/// DATA as a plot with its figures, all of it and its middle.
inline void walkPlot(const PlotData& data, const TextContext& context) {
    const PlotRange& whole = data.whole;
    PlotView view;
    for (const bool lines : {false, true}) {
        view.options.lines = lines;
        walkReport(ShownPlot::report(data, view, context));
        view.range = PlotRange{whole.from + whole.length() / 3, whole.to - whole.length() / 3};
    }
}

/// Everything that is made of the first records of TABLE, which is that of LOG: reports, plots, exports.
inline void walkRecords(const LogSpec& log, const Table& table, const TextContext& context) {
    constexpr RowIndex kRecords = 3;
    const RowIndex count = std::min(static_cast<RowIndex>(table.rowCount()), kRecords);
    ExportRecords records{exportColumns(table, Repeats::Keep, Owned::Keep), {}};
    std::vector<PlotData> plots;
    for (RowIndex row = 0; row < count; ++row) {
        records.rows.push_back(row);
        walkReport(recordReport(log, table, row, context));
        if (log.id == LogId::Trips)
            plots.push_back(tripPlot(static_cast<const TTripLogTable&>(table), row, context));
        else if (log.id == LogId::Accidents)
            plots.push_back(stopPlot(static_cast<const TAccidentLogTable&>(table), row, context));
    }
    for (const PlotData& plot : plots)
        walkPlot(plot, context);
    if (log.id == LogId::Trips && plots.size() > 1)
        for (const PlotAxis axis : {PlotAxis::Elapsed, PlotAxis::Distance})
            walkPlot(comparedPlot(plots, axis), context);
    const ExportSink sink = [](std::string_view) { return true; };
    writeJson({&records, 1}, sink);
    records.columns = exportColumns(table, Repeats::Keep);
    writeCsv({&records, 1}, context, sink);
}

} // namespace quobrix::test
