#pragma once

#include "plots/plot_layout.h"

namespace quobrix {

/// DATA as LAYOUT has it for VIEW. How long that takes depends on the size of the picture and hardly on how many
/// samples there are. It has neither title nor description.
Drawing drawPlot(const PlotData& data, const PlotView& view, const PlotLayout& layout);

/// What the panels of LAYOUT show, in words. Looks at every sample.
ShownText plotDescription(const PlotData& data, const PlotLayout& layout, const TextContext& context);

/// What a person points at and has marked.
struct PlotPointers {
    std::optional<double> cursor{};    ///< on the axis
    std::optional<PlotRange> range{};  ///< on the axis
    std::optional<std::size_t> band{}; ///< of the data
    bool operator==(const PlotPointers&) const = default;
};

/// POINTERS, to be painted over the plot: a line through all panels with a dot on each curve, the ends of the range,
/// the edges of the band. Few commands, however large the plot is.
Drawing drawPlotPointers(const PlotData& data, const PlotLayout& layout, const PlotPointers& pointers);

} // namespace quobrix
