#pragma once

#include "plots/ui/plot_pane.h"
#include "views/page.h"
#include "views/record_view.h"

namespace quobrix {

/// What a page shows plots through.
PlotPaneContext plotPaneContext(const ViewContext& context);

/// The plot of one record. What of it is seen and marked stays while that record is edited or told in other units.
class LogPlotView final : public PlotPane, public RecordView {
public:
    /// SPEC, which must have plots, must outlive the view.
    LogPlotView(const ViewContext& context, const LogSpec& spec, QWidget* parent = nullptr);

    QWidget& widget() override { return *this; }
    void showRecord(const Table* log, std::optional<RowIndex> row) override;
    Report printable() const override { return PlotPane::printable(); }

    /// Marks a band; moves the cursor to a place, and that into the middle.
    void showMark(const PlotMark& mark);
    /// Moves the cursor to a speed sample.
    void showSample(std::size_t sample);

private:
    ViewContext context_;
    const LogSpec& spec_;
    std::optional<RecordKey> shown_;
};

} // namespace quobrix
