#pragma once

#include "plots/plot_samples.h"

#include <vector>

namespace quobrix {

/// What of SAMPLES is drawn of a plot.
struct Reduction {
    /// Samples in their order, in pieces that hang together: between two of them is nothing, or a sample without a
    /// value.
    std::vector<std::vector<PlotSamples::Sample>> runs;
    bool reduced = false; ///< some have been left out
};

/// The samples that a line through COLUMNS columns of pixels needs, the first of which begins at ORIGIN on the axis and
/// each of which is WIDTH wide: of each column the first, the least, the greatest and the last one, in their order (M4;
/// Jugel et al., VLDB 2014), or all, where there are not many more samples than columns. Beside them one sample on
/// either side, or lines would end within the plot. Columns that begin at whole multiples of WIDTH hold the same
/// samples wherever the plot begins, so that a curve does not waver while it is moved.
Reduction reduce(const PlotSamples& samples, double origin, double width, std::size_t columns);

} // namespace quobrix
