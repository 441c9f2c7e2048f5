#pragma once

#include "drawing/text_measure.h"
#include "summary/driving_figures.h"

#include <span>

namespace quobrix {

/// What the bars of twelve months show.
enum class DrivingChart {
    Distance,
    Events, ///< for 100 miles or kilometres, by kind
    Bands,  ///< shares of the time at idle and in each speed band
};
inline constexpr DrivingChart kDrivingCharts[] = {DrivingChart::Distance, DrivingChart::Events, DrivingChart::Bands};

/// A bar for each of MONTHS, as wide as ROOM; in words, too. An unfinished month has its name in brackets.
Drawing drawMonths(DrivingChart chart, std::span<const DrivingMonth> months, const TUnitSystem& units, Size room,
                   const TextMeasure& measure);

} // namespace quobrix
