#pragma once

#include "drawing/drawing.h"
#include "plots/plot_layout.h"

#include <vector>

namespace quobrix {

/// LINE, as far as it is within BOX, in pieces.
std::vector<std::vector<Point>> clippedLine(const std::vector<Point>& line, const Box& box);

/// A curve as it is drawn, clipped to a little more than its panel's area: nothing is painted far outside.
struct CurveShape {
    std::vector<std::vector<Point>> lines;
    std::vector<Point> dots;               ///< samples, where all are drawn and there is room between them, or alone
    std::vector<std::vector<Point>> areas; ///< between samples and the base line; only if asked for
    std::vector<Columns> columns;          ///< the same where there are too many samples for that
    bool sparse = false;                   ///< there is room between the samples
};

/// SAMPLES of PANEL in LAYOUT; as steps, where a value holds until the next one. Samples that stand alone are dots
/// always, all of them only if asked for.
CurveShape shapeOf(const PlotSamples& samples, const PanelLayout& panel, const PlotLayout& layout, bool steps,
                   bool areas, bool dots);

} // namespace quobrix
