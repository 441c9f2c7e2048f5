#pragma once

#include "base/no_value.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace quobrix {

/// What was sampled of one quantity, in base units, along the axis of a plot. The extremes of any part are found in a
/// time that hardly grows with how many samples it has: those of every 16, 256, … samples are known, and of each sample
/// those of its 16 up to it and from it on.
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

    struct Sample {
        std::size_t number;
        double value;
    };
    /// The least and the greatest sample of a part; of equal ones the first.
    struct Extremes {
        Sample least, greatest;
    };
    /// Of the samples from BEGIN up to before END; nothing if none of them has a value.
    std::optional<Extremes> extremes(std::size_t begin, std::size_t end) const;
    /// The extremes of this part will soon be asked for: what is read for them is fetched from memory meanwhile.
    void fetch(std::size_t begin, std::size_t end) const;

private:
    static constexpr std::size_t kFanBits = 4, kFan = std::size_t{1} << kFanBits;
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

    /// Where in its block of 16 the extremes up to a sample and from it on are; a sample without a value stands for
    /// none.
    struct Within {
        std::uint8_t leastUpTo, greatestUpTo, leastFrom, greatestFrom;
    };

    void build();
    /// The extremes of blocks, by their number: values beside values, since few of the places are looked at.
    struct Level {
        std::vector<double> least, greatest;
        std::vector<std::uint32_t> leastAt, greatestAt;

        std::size_t size() const { return least.size(); }
        void add(const Block& block);
        Block block(std::size_t lower, std::size_t higher) const {
            return {least[lower], greatest[higher], leastAt[lower], greatestAt[higher]};
        }
    };

    /// Those of LEVEL from BEGIN up to before END, in their order, by greater ones where they hold them.
    void includeBlocks(Block& found, std::size_t level, std::size_t begin, std::size_t end) const;
    Block sample(std::size_t at) const { return block(at, at); }
    Block block(std::size_t least, std::size_t greatest) const {
        return {values_[least], values_[greatest], static_cast<std::uint32_t>(least),
                static_cast<std::uint32_t>(greatest)};
    }
    Block upTo(std::size_t sample) const {
        const std::size_t begin = sample & ~(kFan - 1);
        return block(begin + within_[sample].leastUpTo, begin + within_[sample].greatestUpTo);
    }
    Block from(std::size_t sample) const {
        const std::size_t begin = sample & ~(kFan - 1);
        return block(begin + within_[sample].leastFrom, begin + within_[sample].greatestFrom);
    }

    double start_ = 0, step_ = 0;
    double perPlace_ = 0;        ///< samples; to divide takes longer than to multiply
    std::vector<double> places_; ///< empty: at even distances
    std::vector<double> values_; ///< NaN where there is none, which no comparison takes for an extreme
    std::vector<Within> within_; ///< as many as values
    std::vector<Level> levels_;  ///< of 16 samples each, of 256, …; whole blocks only
};

} // namespace quobrix
