#pragma once

#include "base/no_value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace quobrix {

/// What was sampled of one quantity, in base units, along the axis of a plot. The extremes of any part are found in a
/// time that hardly grows with how many samples it has: a pyramid knows those of every 4, 16, … samples.
class PlotSamples {
public:
    PlotSamples() = default;
    /// VALUES (kNoValue: none) at START, START + STEP, …; STEP must be above 0.
    PlotSamples(double start, double step, std::vector<double> values);
    /// VALUES at PLACES, as many of them, none of which is before the one ahead of it.
    PlotSamples(std::vector<double> places, std::vector<double> values);

    std::size_t size() const { return values_.size(); }
    bool empty() const { return values_.empty(); }
    double at(std::size_t sample) const {
        return places_.empty() ? start_ + step_ * static_cast<double>(sample) : places_[sample];
    }
    double value(std::size_t sample) const { return values_[sample]; }
    bool has(std::size_t sample) const { return hasValue(values_[sample]); }
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
    static constexpr std::size_t kFan = 4;
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    struct Block {
        std::uint32_t least = kNone, greatest = kNone;
    };

    void build();
    void include(Block& block, std::uint32_t least, std::uint32_t greatest) const;

    double start_ = 0, step_ = 0;
    std::vector<double> places_; ///< empty: at even distances
    std::vector<double> values_;
    std::vector<std::vector<Block>> levels_; ///< of 4 samples each, of 16, …; whole blocks only
};

} // namespace quobrix
