#pragma once

#include "plots/comparison.h"
#include "plots/plot_data.h"
#include "texts/text.h"

#include <cmath>
#include <random>
#include <vector>

namespace quobrix::test {

/// A plot of any one record that may come, a stop among others: up to six panels of few or many values, large, tiny,
/// equal or missing ones, with events and bands.
inline PlotData randomPlot(std::mt19937& random) {
    const auto between = [&](double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random);
    };
    PlotData data;
    data.records.push_back(ShownText::asItIs("Trip " + std::to_string(random() % 1000)));
    if (random() % 4 > 0)
        data.clock = static_cast<std::int32_t>(random() % 2'000'000'000);
    data.whole = {0, std::floor(std::exp2(between(1, 17)))};
    if (random() % 6 == 0) {
        data.axis = PlotAxis::UntilStandstill;
        data.whole = {-data.whole.to, 0};
    }
    const UnitTypeId units[] = {UnitTypeId::Speed, UnitTypeId::EngineSpeed, UnitTypeId::Temperature,
                                UnitTypeId::P2,    UnitTypeId::Voltage,     UnitTypeId::Pressure};
    const std::size_t panels = random() % 6 + 1;
    for (std::size_t i = 0; i < panels; ++i) {
        PlotPanel& panel = data.panels.emplace_back();
        panel.key = i == 0 ? kSpeedPanel : "Panel" + std::to_string(i);
        panel.title = ShownText::asItIs(i == 0 ? "Speed" : "Short Term Fuel Trim (B" + std::to_string(i) + ")");
        panel.unit = units[i];
        panel.speed = i == 0;
        if (i > 0 && random() % 5 == 0)
            panel.states = {"O", "C", "O (SF)"};
        const double step = std::max(1.0, std::floor(std::exp2(between(0, 4))));
        const double offset = between(-1, 1) * std::pow(10, between(-3, 4)), size = std::pow(10, between(-3, 4));
        const int kind = static_cast<int>(random() % 4); // level, wandering, wild, all missing or some
        double value = offset;
        std::vector<double> values(static_cast<std::size_t>(data.whole.length() / step) + 1);
        for (double& v : values) {
            value = kind == 0 ? value : kind == 1 ? value + between(-1, 1) * size : offset + between(-1, 1) * size;
            v = panel.speed ? std::abs(value) : value;
            if (!panel.states.empty())
                v = static_cast<double>(random() % panel.states.size());
            if (kind == 3 && (i % 2 == 1 || random() % 3 == 0))
                v = kNoValue;
        }
        panel.curves.push_back({0, PlotSamples(data.whole.from, step, std::move(values))});
        data.finest = i == 0 ? step : std::min(data.finest, step);
    }
    for (std::size_t count = random() % 40; count > 0; --count)
        data.events.push_back(
            {static_cast<PlotEventKind>(random() % kPlotEventKinds), between(data.whole.from, data.whole.to)});
    double from = 0;
    for (std::size_t count = random() % 6; count > 0; --count) {
        const double to = from + between(0, 20);
        data.bands.push_back(
            {from, count > 1 ? std::optional(to) : std::nullopt, text(TextId::BandNumber, data.bands.size() + 1)});
        from = to;
    }
    return data;
}

/// That, or several trips over one another.
inline PlotData randomPlotOrComparison(std::mt19937& random) {
    PlotData first = randomPlot(random);
    if (random() % 3 > 0 || first.axis == PlotAxis::UntilStandstill)
        return first;
    std::vector<PlotData> trips{std::move(first)};
    for (std::size_t count = kLeastCompared + random() % (kMostCompared - kLeastCompared + 1); trips.size() < count;)
        if (PlotData trip = randomPlot(random); trip.axis == PlotAxis::Elapsed)
            trips.push_back(std::move(trip));
    return comparedPlot(trips, random() % 2 ? PlotAxis::Elapsed : PlotAxis::Distance);
}

} // namespace quobrix::test
