#include "plots/comparison.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

/// How far a trip has come at any time.
class Way {
public:
    explicit Way(const PlotData& trip) {
        const auto speed = std::ranges::find(trip.panels, kSpeedPanel, &PlotPanel::key);
        if (speed == trip.panels.end())
            return;
        speed_ = &speed->curves.front().samples;
        metres_.resize(speed_->size());
        for (std::size_t i = 1; i < metres_.size(); ++i) {
            const auto value = [&](std::size_t sample) { return speed_->has(sample) ? speed_->value(sample) : 0.0; };
            metres_[i] = metres_[i - 1] + (value(i - 1) + value(i)) / 2 * (speed_->at(i) - speed_->at(i - 1));
        }
    }

    bool known() const { return !metres_.empty(); }
    std::size_t samples() const { return metres_.size(); }
    double length() const { return metres_.back(); }
    double at(double time) const {
        const std::size_t behind = speed_->firstFrom(time);
        if (behind == 0 || behind >= metres_.size())
            return behind == 0 ? 0 : length();
        const double part = (time - speed_->at(behind - 1)) / (speed_->at(behind) - speed_->at(behind - 1));
        return metres_[behind - 1] + part * (metres_[behind] - metres_[behind - 1]);
    }

private:
    const PlotSamples* speed_ = nullptr;
    std::vector<double> metres_; ///< by sample of the speed
};

PlotSamples along(const Way& way, const PlotSamples& samples) {
    std::vector<double> places(samples.size()), values(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        places[i] = way.at(samples.at(i));
        values[i] = samples.value(i);
    }
    return {std::move(places), std::move(values)};
}

/// CURVE's states by their places in INTO, which gets those that it lacks.
PlotSamples withStates(const PlotSamples& samples, const std::vector<std::string>& from,
                       std::vector<std::string>& into) {
    std::vector<double> values(samples.size(), kNoValue);
    for (std::size_t i = 0; i < values.size(); ++i)
        if (samples.has(i)) {
            const std::string& state = from[static_cast<std::size_t>(samples.value(i))];
            auto place = std::ranges::find(into, state);
            if (place == into.end())
                place = into.insert(into.end(), state);
            values[i] = static_cast<double>(place - into.begin());
        }
    return {samples.at(0), samples.step(), std::move(values)};
}

} // namespace

PlotData comparedPlot(std::span<const PlotData> trips, PlotAxis axis) {
    PlotData all;
    all.axis = axis;
    all.emptyText = trips.front().emptyText;
    all.bands = trips.front().bands;
    all.whole = {0, 0};
    all.finest = HUGE_VAL;
    for (std::size_t record = 0; record < trips.size(); ++record) {
        const PlotData& trip = trips[record];
        all.records.push_back(trip.records.front());
        const Way way(trip);
        const bool byDistance = axis == PlotAxis::Distance;
        if (byDistance && !way.known())
            continue;
        if (!trip.panels.empty()) {
            if (byDistance && !(way.length() > 0))
                continue; // it stood: nothing of it is anywhere but at the start
            all.whole.to = std::max(all.whole.to, byDistance ? way.length() : trip.whole.to);
            all.finest =
                std::min(all.finest, byDistance ? way.length() / static_cast<double>(way.samples()) : trip.finest);
        }
        for (const PlotPanel& panel : trip.panels) {
            auto place = std::ranges::find(all.panels, panel.key, &PlotPanel::key);
            if (place == all.panels.end())
                place = all.panels.insert(all.panels.end(),
                                          {panel.key, panel.title, panel.unit, panel.speed, panel.states, {}});
            for (const PlotCurve& curve : panel.curves) {
                PlotSamples samples =
                    panel.states.empty() ? curve.samples : withStates(curve.samples, panel.states, place->states);
                place->curves.push_back({record, byDistance ? along(way, samples) : std::move(samples)});
            }
        }
        if (record == 0)
            for (const PlotEvent& event : trip.events)
                all.events.push_back({event.kind, byDistance ? way.at(event.at) : event.at});
    }
    if (!(all.whole.length() > 0))
        all.whole = {0, 1};
    if (!std::isfinite(all.finest) || !(all.finest > 0))
        all.finest = all.whole.length();
    return all;
}

} // namespace quobrix
