#include "plots/plot_figures.h"

#include "texts/text.h"
#include "units/date_time.h"
#include "units/fine_text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace quobrix {
namespace {

/// Of the values between the least and the greatest, that the end must differ by from the beginning to be called so.
constexpr double kTrend = 0.1;

/// The samples in RANGE.
std::pair<std::size_t, std::size_t> samplesIn(const PlotSamples& samples, PlotRange range) {
    return {samples.firstFrom(range.from), samples.firstFrom(std::nextafter(range.to, HUGE_VAL))};
}

double meanOf(const PlotSamples& samples, std::size_t begin, std::size_t end, std::size_t& count) {
    double sum = 0;
    count = 0;
    for (std::size_t i = begin; i < end; ++i)
        if (samples.has(i)) {
            sum += samples.value(i);
            ++count;
        }
    return count > 0 ? sum / static_cast<double>(count) : kNoValue;
}

/// The state of PANEL that VALUE stands for.
std::size_t stateOf(const PlotPanel& panel, double value) {
    return static_cast<std::size_t>(std::clamp(value, 0.0, static_cast<double>(panel.states.size() - 1)));
}

ShownText titleOf(const PlotData& data, const PlotPanel& panel, const PlotCurve& curve) {
    return data.compares() ? text(TextId::PlotOfRecord, panel.title, data.records[curve.record]) : panel.title;
}

/// What is sampled with the speed, or whatever there is: a curve a record.
std::span<const PlotCurve> leading(const PlotData& data) {
    return data.panels.empty() ? std::span<const PlotCurve>() : data.panels.front().curves;
}

/// Of the first record.
const PlotCurve* speedOf(const PlotData& data) {
    for (const PlotPanel& panel : data.panels)
        if (panel.key == kSpeedPanel && panel.curves.front().record == 0)
            return &panel.curves.front();
    return nullptr;
}

} // namespace

ShownText plotTitle(const PlotData& data, const TextContext& context) {
    if (data.compares()) {
        ShownText all = data.records.front();
        for (std::size_t i = 1; i < data.records.size(); ++i)
            all = text(TextId::PlotAlso, all, data.records[i]);
        return text(TextId::PlotCompared, all);
    }
    return data.clock ? text(TextId::PlotAlso, data.records.front(),
                             dateTimeText(context.units, context.zone.toLocal(*data.clock)))
                      : data.records.front();
}

std::string valueText(const PlotPanel& panel, double value, const TextContext& context) {
    if (!hasValue(value))
        return {};
    if (panel.states.empty())
        return context.units.formatValueWithUnits(panel.unit, value);
    return panel.states[stateOf(panel, value)];
}

std::optional<std::size_t> sampleReadAt(const PlotData& data, const PlotCurve& curve, double place) {
    const PlotSamples& samples = curve.samples;
    const std::optional<std::size_t> sample = samples.lastUpTo(place);
    if (!sample || !samples.has(*sample))
        return {};
    if (*sample + 1 < samples.size())
        return sample;
    // The last one holds as long as one before it did, and no longer than anything of its record was sampled.
    const bool goesOn = std::ranges::any_of(data.panels, [&](const PlotPanel& panel) {
        return std::ranges::any_of(panel.curves, [&](const PlotCurve& other) {
            return other.record == curve.record && !other.samples.empty() &&
                   place <= other.samples.at(other.samples.size() - 1);
        });
    });
    const bool held = samples.step() == 0 || place <= samples.at(*sample) + samples.step();
    return goesOn && held ? sample : std::nullopt;
}

PlotReading readPlot(const PlotData& data, double place, const TextContext& context,
                     std::span<const PanelChoice> choices) {
    PlotReading reading;
    reading.place = placeText(data, place, context);
    if (data.clock && data.axis != PlotAxis::Distance) {
        const auto seconds = wholeSecond(place - data.whole.from);
        const auto moment =
            std::clamp<std::int64_t>(*data.clock + seconds, 0, std::numeric_limits<std::int32_t>::max());
        const DateTime local = context.zone.toLocal(static_cast<std::int32_t>(moment));
        reading.clock = timeTextWithSeconds(context.units, local);
    }
    for (const std::size_t i : shownPanels(data, choices))
        for (const PlotCurve& curve : data.panels[i].curves) {
            const std::optional<std::size_t> sample = sampleReadAt(data, curve, place);
            reading.values.push_back(
                {i, curve.record, titleOf(data, data.panels[i], curve),
                 sample ? valueText(data.panels[i], curve.samples.value(*sample), context) : std::string()});
        }
    if (const PlotCurve* speed = speedOf(data))
        if (const std::optional<std::size_t> sample = sampleReadAt(data, *speed, place))
            reading.band = bandOf(data, speed->samples.value(*sample));
    if (reading.band)
        reading.bandLabel = data.bands[*reading.band].label;
    const auto event =
        std::ranges::find_if(data.events, [&](const PlotEvent& e) { return std::abs(e.at - place) < data.finest / 2; });
    if (event != data.events.end())
        reading.event = static_cast<std::size_t>(event - data.events.begin());
    return reading;
}

ShownText spokenReading(const PlotData& data, const PlotReading& reading) {
    ShownText all = ShownText::asItIs(reading.place);
    const auto add = [&](const ShownText& more) { all = text(TextId::PlotAlso, all, more); };
    if (reading.event)
        add(plotEventName(data.events[*reading.event].kind));
    for (const PlotReading::Value& value : reading.values)
        if (!value.text.empty())
            add(text(TextId::SideBySide, value.title, value.text));
    if (reading.band)
        add(reading.bandLabel);
    return all;
}

double nearestSample(const PlotData& data, double place) {
    std::optional<double> nearest;
    const auto offer = [&](double sample) {
        if (!nearest || std::abs(sample - place) < std::abs(*nearest - place))
            nearest = sample;
    };
    for (const PlotCurve& curve : leading(data)) {
        if (const std::size_t next = curve.samples.firstFrom(place); next < curve.samples.size())
            offer(curve.samples.at(next));
        if (const auto before = curve.samples.lastUpTo(place))
            offer(curve.samples.at(*before));
    }
    return nearest.value_or(place);
}

double sampleBeside(const PlotData& data, double place, int direction) {
    const double here = nearestSample(data, place);
    std::optional<double> beside;
    for (const PlotCurve& curve : leading(data)) {
        const PlotSamples& samples = curve.samples;
        if (direction > 0) {
            if (const std::size_t next = samples.firstFrom(std::nextafter(here, HUGE_VAL)); next < samples.size())
                beside = std::min(beside.value_or(HUGE_VAL), samples.at(next));
        } else if (const auto before = samples.lastUpTo(std::nextafter(here, -HUGE_VAL))) {
            beside = std::max(beside.value_or(-HUGE_VAL), samples.at(*before));
        }
    }
    return beside.value_or(here);
}

RangeFigures figuresOf(const PlotData& data, PlotRange range, const TextContext& context,
                       std::span<const PanelChoice> choices) {
    RangeFigures figures;
    figures.range = {nearestSample(data, std::min(range.from, range.to)),
                     nearestSample(data, std::max(range.from, range.to))};
    const double length = figures.range.length();
    figures.length = data.axis == PlotAxis::Distance ? lengthText(context.units, UnitTypeId::Distance, length)
                                                     : durationText(std::llround(length));
    if (data.axis == PlotAxis::Distance) {
        figures.distance = length;
    } else if (const PlotCurve* curve = speedOf(data)) {
        const PlotSamples& speed = curve->samples;
        const auto [begin, end] = samplesIn(speed, figures.range);
        figures.distance = 0;
        for (std::size_t i = begin + 1; i < end; ++i)
            if (speed.has(i - 1) && speed.has(i))
                figures.distance += (speed.value(i - 1) + speed.value(i)) / 2 * (speed.at(i) - speed.at(i - 1));
    }
    figures.distanceText = lengthText(context.units, UnitTypeId::Distance, figures.distance);
    for (const std::size_t i : shownPanels(data, choices)) {
        const PlotPanel& panel = data.panels[i];
        if (!panel.states.empty())
            continue;
        for (const PlotCurve& curve : panel.curves) {
            CurveFigures& of = figures.curves.emplace_back();
            of.panel = i;
            of.record = curve.record;
            of.title = titleOf(data, panel, curve);
            const auto [begin, end] = samplesIn(curve.samples, figures.range);
            of.mean = meanOf(curve.samples, begin, end, of.count);
            if (const auto extremes = curve.samples.extremes(begin, end)) {
                of.least = extremes->least.value;
                of.greatest = extremes->greatest.value;
            }
            of.leastText = valueText(panel, of.least, context);
            of.meanText = valueText(panel, of.mean, context);
            of.greatestText = valueText(panel, of.greatest, context);
        }
    }
    return figures;
}

ShownText rangeText(const PlotData& data, const RangeFigures& figures, bool selected, const TextContext& context) {
    const bool aside = data.axis != PlotAxis::Distance && !data.compares() && !figures.distanceText.empty();
    const std::string length =
        aside ? std::string(text(TextId::PlotAlso, figures.length, figures.distanceText)) : figures.length;
    return text(selected ? TextOf<3>(TextId::PlotSelected) : TextOf<3>(TextId::PlotShown),
                placeText(data, figures.range.from, context), placeText(data, figures.range.to, context), length);
}

Grid figuresGrid(const RangeFigures& figures) {
    Grid grid{{{text(TextId::PlotQuantity), false},
               {text(TextId::HeadingMinimum)},
               {text(TextId::PlotMean)},
               {text(TextId::HeadingMaximum)}},
              {}};
    for (const CurveFigures& curve : figures.curves)
        if (curve.count > 0)
            grid.rows.push_back({curve.title, curve.leastText, curve.meanText, curve.greatestText});
    return grid;
}

std::vector<ShownText> sentencesOf(const PlotData& data, const PlotPanel& panel, PlotRange range,
                                   const TextContext& context) {
    std::vector<ShownText> sentences;
    for (const PlotCurve& curve : panel.curves) {
        const PlotSamples& samples = curve.samples;
        const ShownText title = titleOf(data, panel, curve);
        const auto [begin, end] = samplesIn(samples, range);
        const auto extremes = samples.extremes(begin, end);
        if (!extremes) {
            sentences.push_back(text(TextId::PlotNothing, title));
            continue;
        }
        if (!panel.states.empty()) {
            std::vector<std::size_t> counts(panel.states.size());
            for (std::size_t i = begin; i < end; ++i)
                if (samples.has(i))
                    ++counts[stateOf(panel, samples.value(i))];
            const auto most = static_cast<std::size_t>(std::ranges::max_element(counts) - counts.begin());
            sentences.push_back(std::ranges::count_if(counts, [](std::size_t n) { return n > 0; }) == 1
                                    ? text(TextId::PlotOneState, title, panel.states[most])
                                    : text(TextId::PlotStates, title, panel.states[most]));
            continue;
        }
        std::size_t count = 0;
        const double mean = meanOf(samples, begin, end, count);
        const double least = extremes->least.value, greatest = extremes->greatest.value;
        const auto value = [&](double base) { return valueText(panel, base, context); };
        const auto say = [&](TextOf<4> how) {
            sentences.push_back(text(how, title, value(least), value(mean), value(greatest)));
        };
        std::size_t counted[2];
        const std::size_t middle = begin + (end - begin) / 2;
        const double before = meanOf(samples, begin, middle, counted[0]),
                     after = meanOf(samples, middle, end, counted[1]);
        if (counted[0] == 0 || counted[1] == 0 || std::abs(after - before) < kTrend * (greatest - least))
            say(TextId::PlotLevel);
        else if (after > before)
            say(TextId::PlotRises);
        else
            say(TextId::PlotFalls);
    }
    return sentences;
}

} // namespace quobrix
