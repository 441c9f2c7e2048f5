#pragma once

#include "plots/plot_data.h"

namespace quobrix {

/// The part of the axis that is seen after a change, and whether less of it was asked for than is ever shown: then the
/// message MaximumZoom is due.
struct ZoomResult {
    PlotRange range;
    bool maximumReached = false;
};

/// What of the axis a plot area of WIDTH units shows at least: an interval of samples is never wider than eight units,
/// unless all of it is.
double leastRange(const PlotData& data, double width);

/// WANTED, but no less than the least range and nothing that is not there.
ZoomResult zoomedTo(const PlotData& data, PlotRange wanted, double width);
/// RANGE, FACTOR times as large (above 1: less of the axis is seen) about the place AT, which stays where it is.
ZoomResult zoomedAt(const PlotData& data, PlotRange range, double at, double factor, double width);
/// RANGE, moved along the axis as far as there is something.
PlotRange panned(const PlotData& data, PlotRange range, double by);
/// RANGE, moved so that AT is in its middle, as far as there is something.
PlotRange centred(const PlotData& data, PlotRange range, double at);

} // namespace quobrix
