#pragma once

#include "drawing/text_measure.h"
#include "summary/driving_figures.h"

#include <array>
#include <span>
#include <string>
#include <vector>

namespace quobrix {

/// What the bars of twelve months show: a figure, or what it is made up of.
struct DrivingChart {
    enum class Kind {
        Figure,
        Events, ///< for 100 miles or kilometres, by kind
        Bands,  ///< shares of the time at idle and in each speed band
    };
    Kind kind = Kind::Figure;
    const DrivingFigure* figure = nullptr; ///< of Kind::Figure
};
/// Those of the home page: distance, events, bands.
std::array<DrivingChart, 3> drivingCharts();

/// A month in such a picture.
struct MonthPlace {
    Box box;          ///< all of its column
    ShownText name;   ///< "March 2026"
    std::string text; ///< what its bar comes to, with units; empty: it has none
};
struct MonthsPicture {
    Drawing drawing;
    std::vector<MonthPlace> months;
};

/// A bar for each of MONTHS beside a scale, as wide as ROOM; in words, too. An unfinished month says so, or has
/// its name in brackets where there is no room for that.
MonthsPicture drawMonths(const DrivingChart& chart, std::span<const DrivingMonth> months, const TUnitSystem& units,
                         Size room, const TextMeasure& measure);

} // namespace quobrix
