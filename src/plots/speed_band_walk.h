#pragma once

#include "plots/scales.h"

#include <optional>
#include <span>
#include <vector>

namespace quobrix {

/// How one speed band shows in a panel.
struct BandRows {
    int label = 0;           ///< the row midway between its boundaries
    std::optional<int> line; ///< the row of its upper boundary, if that is drawn
    bool operator==(const BandRows&) const = default;
};

/// Walks the bands from the lowest upward, given their upper ends (m/s; none: open), as SCALE has them, whose plot area
/// has whole edges. A label is midway between the boundary before and its own, but never above the top edge. There is
/// no line at the first boundary, which is where standing still ends. From the second on, one at or above the top edge
/// ends the walk: the result has one entry a band that was reached.
std::vector<BandRows> walkBands(std::span<const std::optional<double>> upperEnds, const ValueScale& scale);

} // namespace quobrix
