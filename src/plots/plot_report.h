#pragma once

#include "plots/plot_layout.h"
#include "report/report.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

namespace quobrix {

/// What a plot shows, whatever becomes of the window and its units: pages are made later, and on another thread.
class ShownPlot {
public:
    ShownPlot(PlotData data, PlotView view, const TextContext& context);

    /// With its title and its description. PIXEL is the width of a pixel of the device, in units of the drawing.
    Drawing draw(Size room, const TextMeasure& measure, double pixel) const;
    /// The plot over the figures of what of it is seen, for pages.
    static Report report(PlotData data, PlotView view, const TextContext& context);

private:
    PlotData data_;
    PlotView view_;
    TUnitSystem units_;
    TimeZone zone_;
};

} // namespace quobrix
