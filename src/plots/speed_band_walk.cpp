#include "plots/speed_band_walk.h"

#include <algorithm>

namespace quobrix {

std::vector<BandRows> walkBands(std::span<const std::optional<double>> upperEnds, const ValueScale& scale) {
    std::vector<BandRows> rows;
    const int top = static_cast<int>(scale.top);
    int before = static_cast<int>(scale.bottom);
    for (const std::optional<double>& end : upperEnds) {
        const int row = end ? scale.row(*end) : top;
        BandRows& band = rows.emplace_back(BandRows{std::max((before + row) / 2, top), {}});
        if (rows.size() > 1) {
            if (row <= top)
                break;
            band.line = row;
        }
        before = row;
    }
    return rows;
}

} // namespace quobrix
