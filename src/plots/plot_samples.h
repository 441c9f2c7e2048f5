#pragma once

#include "base/no_value.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace quobrix {

/// What was sampled of one quantity, in base units, along the axis of a plot. The extremes of any part are found in a
/// time that hardly grows with how many samples it has: a pyramid knows those of every 4, 16, … samples.
class PlotSamples {
public:
    PlotSamples() = default;
    /// VALUES (kNoValue, or what is no number: none) at START, START + STEP, …; STEP must be above 0.
    PlotSamples(double start, double step, std::vector<double> values);
    /// VALUES at PLACES, as many of them, none of which is before the one ahead of it.
    PlotSamples(std::vector<double> places, std::vector<double> values);

    std::size_t size() const { return values_.size(); }
    bool empty() const { return values_.empty(); }
    double at(std::size_t sample) const {
        return places_.empty() ? start_ + step_ * static_cast<double>(sample) : places_[sample];
    }
    /// NaN where it has none.
    double value(std::size_t sample) const { return values_[sample]; }
    bool has(std::size_t sample) const { return values_[sample] == values_[sample]; }
    /// Between samples; 0 where they are not at even distances.
    double step() const { return step_; }

    /// The first sample at PLACE or behind it; size() if there is none.
    std::size_t firstFrom(double place) const;
    /// The last sample at PLACE or before it.
    std::optional<std::size_t> lastUpTo(double place) const;

    /// Which samples are the least and the greatest of a part; of equal ones the first.
    struct Extremes {
        std::size_t least, greatest;
    };
    /// Of the samples from BEGIN up to before END; nothing if none of them has a value.
    std::optional<Extremes> extremes(std::size_t begin, std::size_t end) const;

private:
    static constexpr std::size_t kFanBits = 2, kFan = std::size_t{1} << kFanBits;
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    /// Extremes beside the samples that they are of: to look them up among the samples takes longer than all else.
    struct Block {
        double least = std::numeric_limits<double>::infinity(), greatest = -std::numeric_limits<double>::infinity();
        std::uint32_t leastAt = kNone, greatestAt = kNone;

        /// Without branches, which nobody could foretell.
        void include(const Block& later) {
            const bool less = later.least < least;
            const bool more = later.greatest > greatest;
            leastAt = less ? later.leastAt : leastAt;
            least = less ? later.least : least;
            greatestAt = more ? later.greatestAt : greatestAt;
            greatest = more ? later.greatest : greatest;
        }
    };

    void build();
    Block sample(std::size_t at) const {
        const auto number = static_cast<std::uint32_t>(at);
        return {values_[at], values_[at], number, number};
    }

    double start_ = 0, step_ = 0;
    std::vector<double> places_;             ///< empty: at even distances
    std::vector<double> values_;             ///< NaN where there is none, which no comparison takes for an extreme
    std::vector<std::vector<Block>> levels_; ///< of 4 samples each, of 16, …; whole blocks only
};

} // namespace quobrix
