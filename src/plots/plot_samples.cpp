#include "plots/plot_samples.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {

PlotSamples::PlotSamples(double start, double step, std::vector<double> values)
    : start_(start), step_(step), perPlace_(1 / step), values_(std::move(values)) {
    build();
}

PlotSamples::PlotSamples(std::vector<double> places, std::vector<double> values)
    : places_(std::move(places)), values_(std::move(values)) {
    build();
}

void PlotSamples::build() {
    for (double& value : values_)
        if (!hasValue(value) || !std::isfinite(value))
            value = std::numeric_limits<double>::quiet_NaN();
    within_.resize(size());
    for (std::size_t begin = 0; begin < size(); begin += kFan) {
        const std::size_t end = std::min(begin + kFan, size());
        for (std::size_t i = begin, least = begin, greatest = begin; i < end; ++i) { // of equal ones the first
            least = values_[i] < values_[least] || !has(least) ? i : least;
            greatest = values_[i] > values_[greatest] || !has(greatest) ? i : greatest;
            within_[i].leastUpTo = static_cast<std::uint8_t>(least - begin);
            within_[i].greatestUpTo = static_cast<std::uint8_t>(greatest - begin);
        }
        for (std::size_t i = end, least = end - 1, greatest = end - 1; i-- > begin;) {
            least = values_[i] <= values_[least] || !has(least) ? i : least;
            greatest = values_[i] >= values_[greatest] || !has(greatest) ? i : greatest;
            within_[i].leastFrom = static_cast<std::uint8_t>(least - begin);
            within_[i].greatestFrom = static_cast<std::uint8_t>(greatest - begin);
        }
    }
    Level level;
    for (std::size_t i = 0; i < size() / kFan; ++i) {
        Block whole; // which has no NaN
        whole.include(from(i * kFan));
        level.add(whole);
    }
    while (level.size() > 0) {
        levels_.push_back(std::exchange(level, {}));
        const Level& below = levels_.back();
        for (std::size_t begin = 0; begin + kFan <= below.size(); begin += kFan) {
            Block whole;
            for (std::size_t i = begin; i < begin + kFan; ++i)
                whole.include(below.block(i, i));
            level.add(whole);
        }
    }
}

void PlotSamples::Level::add(const Block& block) {
    least.push_back(block.least);
    greatest.push_back(block.greatest);
    leastAt.push_back(block.leastAt);
    greatestAt.push_back(block.greatestAt);
}

std::size_t PlotSamples::firstFrom(double place) const {
    if (!places_.empty())
        return static_cast<std::size_t>(std::ranges::lower_bound(places_, place) - places_.begin());
    if (empty() || place <= start_)
        return 0;
    if (place > at(size() - 1))
        return size();
    // What is rounded is put right by what at() says.
    auto sample = std::min(static_cast<std::size_t>((place - start_) * perPlace_), size() - 1);
    while (sample > 0 && at(sample - 1) >= place)
        --sample;
    while (at(sample) < place)
        ++sample;
    return sample;
}

std::optional<std::size_t> PlotSamples::lastUpTo(double place) const {
    const std::size_t behind = firstFrom(std::nextafter(place, HUGE_VAL));
    return behind > 0 ? std::optional(behind - 1) : std::nullopt;
}

void PlotSamples::fetch(std::size_t begin, std::size_t end) const {
    if (end > size() || levels_.empty())
        return;
    const std::size_t block = begin / kFan, behind = std::min({end / kFan, block + kFan, levels_[0].size()});
    __builtin_prefetch(&within_[begin]);
    __builtin_prefetch(&values_[block * kFan]);
    __builtin_prefetch(&values_[block * kFan] + kFan / 2);
    for (std::size_t i = block + 1; i < behind; i += 8) { // as many as a line of memory holds
        __builtin_prefetch(&levels_[0].least[i]);
        __builtin_prefetch(&levels_[0].greatest[i]);
    }
    if (block + 1 < behind) {
        __builtin_prefetch(&levels_[0].least[behind - 1]);
        __builtin_prefetch(&levels_[0].greatest[behind - 1]);
        __builtin_prefetch(&levels_[0].leastAt[block + 1]);
        __builtin_prefetch(&levels_[0].greatestAt[block + 1]);
    }
}

void PlotSamples::includeBlocks(Block& found, std::size_t level, std::size_t begin, std::size_t end) const {
    const Level& blocks = levels_[level];
    const auto includeUpTo = [&](std::size_t behind) {
        if (begin >= behind)
            return;
        std::size_t lower = begin, higher = begin;
        double least = blocks.least[begin], greatest = blocks.greatest[begin];
        for (std::size_t i = begin + 1; i < behind; ++i) {
            const double low = blocks.least[i], high = blocks.greatest[i];
            lower = low < least ? i : lower;
            least = low < least ? low : least;
            higher = high > greatest ? i : higher;
            greatest = high > greatest ? high : greatest;
        }
        found.include(blocks.block(lower, higher));
        begin = behind;
    };
    const std::size_t above = (begin + kFan - 1) / kFan, aboveEnd = end / kFan;
    if (above < aboveEnd) {
        includeUpTo(above * kFan);
        includeBlocks(found, level + 1, above, aboveEnd);
        begin = aboveEnd * kFan;
    }
    includeUpTo(end);
}

std::optional<PlotSamples::Extremes> PlotSamples::extremes(std::size_t begin, std::size_t end) const {
    Block found;
    if (const std::size_t next = (begin / kFan + 1) * kFan; next > end) { // within a block
        for (; begin < end; ++begin)
            found.include(sample(begin));
    } else {
        found.include(from(begin));
        if (next + kFan <= end)
            includeBlocks(found, 0, next / kFan, end / kFan);
        begin = end / kFan * kFan;
        if (begin < end)
            found.include(upTo(end - 1));
    }
    if (found.leastAt == kNone)
        return {};
    return Extremes{{found.leastAt, found.least}, {found.greatestAt, found.greatest}};
}

} // namespace quobrix
