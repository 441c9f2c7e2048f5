#pragma once

#include "plots/plot_data.h"

#include <span>

namespace quobrix {

/// So many records can be compared.
inline constexpr std::size_t kLeastCompared = 2, kMostCompared = 6;

/// TRIPS, as tripPlot() makes them, over one another: along the time from the start of each, or along the distance
/// (ALONG Elapsed or Distance), which the speed comes to. Bands and events are those of the first. Of a trip whose
/// speed was not sampled, or that never moved, only the name is there by distance.
PlotData comparedPlot(std::span<const PlotData> trips, PlotAxis along);

} // namespace quobrix
