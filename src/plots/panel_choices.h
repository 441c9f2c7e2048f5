#pragma once

#include "plots/plot_layout.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace quobrix {

class Settings;

// What a person makes of the panels of plots. It holds for every plot that has a panel of the same key; panels that a
// plot does not have keep their choices.

/// As they are remembered; what cannot be read is as if nobody had chosen.
std::vector<PanelChoice> rememberedPanels(const Settings& settings);
void rememberPanels(Settings& settings, const std::vector<PanelChoice>& choices);

/// CHOICES, with one for every panel of DATA: what shows is the same.
std::vector<PanelChoice> withAllPanels(const PlotData& data, std::vector<PanelChoice> choices);
/// CHOICES of withAllPanels(), where PANEL, which is below the count, is hidden or not.
std::vector<PanelChoice> withHidden(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel,
                                    bool hidden);
/// Where PANEL has changed places with the next one that is shown above it (STEP -1) or below (1); nothing has changed
/// if there is none.
std::vector<PanelChoice> withMoved(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel, int step);
/// Where PANEL has come to stand above the panel BEFORE, or without one below all others.
std::vector<PanelChoice> withPlaced(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel,
                                    std::optional<std::size_t> before);
/// Where PANEL takes FACTOR times as much of the height as before, as far as all stay worth looking at.
std::vector<PanelChoice> withHeight(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel,
                                    double factor);
/// Where the border between the panels LAYOUT has in the places UPPER and UPPER + 1 has moved down BY units, as far as
/// both stay worth looking at.
std::vector<PanelChoice> withBorder(const PlotData& data, std::vector<PanelChoice> choices, const PlotLayout& layout,
                                    std::size_t upper, double by);

} // namespace quobrix
