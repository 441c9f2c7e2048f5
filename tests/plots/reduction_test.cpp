#include "plots/reduction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>

namespace quobrix {
namespace {

/// Samples that wander, some of them without a value; at even distances, or, if SCATTERED, at places of their own of
/// which some are the same.
PlotSamples randomSamples(std::mt19937& random, std::size_t count, double missing, bool scattered) {
    std::normal_distribution<double> step(0, 1);
    std::uniform_real_distribution<double> part(0, 1);
    std::vector<double> values(count), places(count);
    double value = 0, place = 0;
    bool gap = false;
    for (std::size_t i = 0; i < count; ++i) {
        value += step(random);
        if (part(random) < missing)
            gap = !gap;
        values[i] = gap ? kNoValue : std::round(value); // equal ones among them
        place += part(random) < 0.3 ? 0 : part(random) * 4;
        places[i] = place;
    }
    return scattered ? PlotSamples(std::move(places), std::move(values)) : PlotSamples(3, 2, std::move(values));
}

TEST(PlotSamples, FindPlacesAndExtremesAsALookAtEachOfThemDoes) {
    std::mt19937 random(1);
    for (int round = 0; round < 60; ++round) {
        const PlotSamples samples = randomSamples(random, random() % 3000 + 1, 0.05 * (round % 3), round % 2);
        for (int i = 0; i < 60; ++i) {
            std::size_t begin = random() % (samples.size() + 1), end = random() % (samples.size() + 1);
            if (begin > end)
                std::swap(begin, end);
            std::optional<std::pair<std::size_t, std::size_t>> raw; // least, greatest
            for (std::size_t k = begin; k < end; ++k)
                if (samples.has(k)) {
                    if (!raw)
                        raw.emplace(k, k);
                    raw->first = samples.value(k) < samples.value(raw->first) ? k : raw->first;
                    raw->second = samples.value(k) > samples.value(raw->second) ? k : raw->second;
                }
            const auto found = samples.extremes(begin, end);
            ASSERT_EQ(found.has_value(), raw.has_value());
            if (raw) {
                ASSERT_EQ(found->least.number, raw->first);
                ASSERT_EQ(found->least.value, samples.value(raw->first));
                ASSERT_EQ(found->greatest.number, raw->second);
                ASSERT_EQ(found->greatest.value, samples.value(raw->second));
            }
            const double last = samples.at(samples.size() - 1);
            const double place = i % 2 ? samples.at(random() % samples.size())
                                       : std::uniform_real_distribution<double>(-5, last + 5)(random);
            std::size_t first = 0;
            while (first < samples.size() && samples.at(first) < place)
                ++first;
            ASSERT_EQ(samples.firstFrom(place), first);
            while (first < samples.size() && samples.at(first) <= place)
                ++first;
            ASSERT_EQ(samples.lastUpTo(place), first > 0 ? std::optional(first - 1) : std::nullopt);
        }
    }
}

TEST(Reduction, KeepsOfEachColumnWhatAWholeLineShowsThere) {
    std::mt19937 random(2);
    for (int round = 0; round < 120; ++round) {
        const PlotSamples samples = randomSamples(random, random() % 20'000 + 2, 0.02 * (round % 3), round % 2);
        const std::size_t columns = random() % 500 + 1;
        const double length = samples.at(samples.size() - 1) - samples.at(0) + 1;
        const double width = length / static_cast<double>(columns) / static_cast<double>(1 + random() % 4);
        const double origin =
            std::round((samples.at(0) + length * static_cast<double>(random() % 8) / 8) / width) * width;
        const Reduction reduction = reduce(samples, origin, width, columns);
        const auto column = [&](std::size_t i) { // by edges at multiples of the width
            double n = std::floor(samples.at(i) / width) + 2;
            while (n * width > samples.at(i))
                --n;
            return n;
        };

        std::map<double, std::vector<std::size_t>> kept;
        std::set<std::size_t> all;
        std::size_t before = 0;
        bool first = true;
        for (const auto& run : reduction.runs) {
            ASSERT_FALSE(run.empty());
            for (std::size_t k = 0; k < run.size(); ++k) {
                const std::size_t sample = run[k].number;
                ASSERT_EQ(samples.value(sample), run[k].value);
                ASSERT_TRUE(first || sample > before) << "in their order";
                if (!first && column(sample) != column(before)) {
                    bool gap = false;
                    for (std::size_t i = before; i < sample; ++i)
                        gap = gap || !samples.has(i);
                    ASSERT_EQ(gap, k == 0) << "a line is broken where a value is missing, and only there";
                }
                first = false;
                before = sample;
                kept[column(before)].push_back(before);
                all.insert(before);
            }
        }
        const double end = origin + width * static_cast<double>(columns);
        std::map<double, std::vector<std::size_t>> raw;
        for (std::size_t i = 0; i < samples.size(); ++i)
            if (samples.has(i) && samples.at(i) >= origin && samples.at(i) < end)
                raw[column(i)].push_back(i);
        for (const auto& [at, those] : raw) {
            const auto value = [&](std::size_t i) { return samples.value(i); };
            const auto [least, greatest] = std::ranges::minmax(kept[at], {}, value);
            const auto [rawLeast, rawGreatest] = std::ranges::minmax(those, {}, value);
            ASSERT_EQ(value(least), value(rawLeast));
            ASSERT_EQ(value(greatest), value(rawGreatest));
            ASSERT_EQ(kept[at].front(), those.front());
            ASSERT_EQ(kept[at].back(), those.back());
            ASSERT_TRUE(!reduction.reduced || kept[at].size() <= 4u);
        }
        // Lines go on to what is beside the plot.
        for (const std::size_t beside :
             {samples.firstFrom(origin) - 1, samples.firstFrom(std::nextafter(end, HUGE_VAL))})
            ASSERT_TRUE(beside >= samples.size() || !samples.has(beside) || all.contains(beside));
    }
}

TEST(Reduction, KeepsTheSameSamplesWhileAPlotIsMoved) {
    std::mt19937 random(3);
    const PlotSamples samples = randomSamples(random, 30'000, 0, false);
    const double width = 37.5;
    const auto keptFrom = [&](double origin) {
        std::set<std::size_t> kept;
        for (const auto& run : reduce(samples, origin, width, 400).runs)
            for (const auto& [i, value] : run)
                if (samples.at(i) >= 300 * width && samples.at(i) < 400 * width)
                    kept.insert(i);
        return kept;
    };
    for (int moved = 1; moved < 300; moved += 7)
        EXPECT_EQ(keptFrom(moved * width), keptFrom(0)) << moved;
}

} // namespace
} // namespace quobrix
