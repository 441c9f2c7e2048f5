#include "config/limit_pictures.h"

#include "texts/text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kLeastWidth = 28;
constexpr double kScaleHeight = 1.4;
constexpr double kTick = 0.4;
constexpr double kLabelGap = 0.8;
constexpr int kLabelLines = 2;
constexpr double kPlotHeight = 7;
constexpr double kBinWidth = 0.7;
constexpr double kBinGap = 0.1;
constexpr double kLeastBar = 0.5; // or one trip among fifty would hardly be seen
constexpr double kPlotGap = 0.15;
constexpr int kTextLines = 3;

constexpr double kLeastThresholdScale = 0.5 * 9.80665; // m/s2

bool ascends(std::span<const double> limits) {
    double before = 0;
    return std::ranges::all_of(limits, [&](double limit) { return std::exchange(before, limit) < limit; });
}

/// A scale from 0 to END across the whole of DRAWING.
class Scale {
public:
    Scale(Drawing& drawing, const TextMeasure& measure, double end) : drawing_(drawing), measure_(measure), end_(end) {}

    double at(double value) const { return drawing_.size.width * std::clamp(value / end_, 0.0, 1.0); }
    double end() const { return end_; }

    /// What lies between LIMITS, the parts in COLOURS (one more).
    void drawParts(double top, std::span<const double> limits, std::span<const ColourRole> colours) {
        double from = 0;
        for (std::size_t i = 0; i < colours.size(); ++i) {
            const double to = i < limits.size() ? limits[i] : end_;
            drawing_.commands.push_back(
                Rectangle{{at(from), top, at(to) - at(from), kScaleHeight * measure_.fontSize()}, colours[i]});
            from = to;
        }
    }
    /// A tick below each limit, and its text: in the next line where it would touch the one before.
    void drawLabels(double top, std::span<const double> limits, const std::function<std::string(double)>& label) {
        const double em = measure_.fontSize();
        std::array<double, kLabelLines> ends;
        ends.fill(-kLabelGap * em);
        for (const double limit : limits) {
            const std::string words = label(limit);
            const double width = measure_.width(words, FontRole::Body);
            const double left = std::clamp(at(limit) - width / 2, 0.0, drawing_.size.width - width);
            std::size_t line = 0;
            while (line + 1 < ends.size() && left < ends[line] + kLabelGap * em)
                ++line;
            ends[line] = left + width;
            const double lineTop = top + kTick * em + static_cast<double>(line) * measure_.lineHeight(FontRole::Body);
            drawing_.commands.push_back(Line{{at(limit), top}, {at(limit), lineTop}, {ColourRole::SecondaryText}});
            drawing_.commands.push_back(Text{{left, lineTop + measure_.ascent(FontRole::Body)}, words});
        }
    }
    double labelsHeight() const {
        return kTick * measure_.fontSize() + kLabelLines * measure_.lineHeight(FontRole::Body);
    }

private:
    Drawing& drawing_;
    const TextMeasure& measure_;
    double end_;
};

Drawing emptyDrawing(ShownText title, Size room, const TextMeasure& measure) {
    Drawing drawing;
    drawing.title = std::move(title);
    drawing.fontSize = measure.fontSize();
    drawing.size.width = std::max(room.width, kLeastWidth * measure.fontSize());
    return drawing;
}

/// TEXT in lines from TOP on; returns where the last one ends.
double addText(Drawing& drawing, std::string_view text, double top, ColourRole colour, const TextMeasure& measure) {
    for (std::string& line : wrapped(text, FontRole::Body, drawing.size.width, measure)) {
        drawing.commands.push_back(
            Text{{0, top + measure.ascent(FontRole::Body)}, std::move(line), Anchor::Start, FontRole::Body, colour});
        top += measure.lineHeight(FontRole::Body);
    }
    return top;
}

} // namespace

Drawing drawSpeedBands(const std::array<double, 3>& limits, const TextContext& context, Size room,
                       const TextMeasure& measure) {
    constexpr ColourRole kColours[] = {ColourRole::StepLow, ColourRole::StepMiddle, ColourRole::StepHigh,
                                       ColourRole::StepTop};
    Drawing drawing = emptyDrawing(text(TextId::SpeedBandsPicture), room, measure);
    const double line = measure.lineHeight(FontRole::Body);
    Scale scale(drawing, measure, limits.back() * 1.25);
    drawing.size.height = line + kScaleHeight * measure.fontSize() + scale.labelsHeight();
    if (!ascends(limits)) {
        drawing.description = text(TextId::LimitsMustAscend);
        addText(drawing, drawing.description, 0, ColourRole::Text, measure);
        return drawing;
    }
    const auto speed = [&](double value) { return context.units.formatValueWithUnits(UnitTypeId::Speed, value); };
    double from = 0;
    for (std::size_t i = 0; i < std::size(kColours); ++i) {
        const double to = i < limits.size() ? limits[i] : scale.end();
        const std::string number = std::to_string(i + 1);
        if (scale.at(to) - scale.at(from) > measure.width(number, FontRole::Strong))
            drawing.commands.push_back(Text{{(scale.at(from) + scale.at(to)) / 2, measure.ascent(FontRole::Strong)},
                                            number,
                                            Anchor::Middle,
                                            FontRole::Strong});
        drawing.description +=
            (i == 0 ? "" : ", ") + (i < limits.size() ? text(TextId::BandFromTo, i + 1, speed(from), speed(to))
                                                      : text(TextId::BandAbove, i + 1, speed(from)));
        from = to;
    }
    scale.drawParts(line, limits, kColours);
    scale.drawLabels(line + kScaleHeight * measure.fontSize(), limits, speed);
    return drawing;
}

Drawing drawThresholds(Maneuver maneuver, const std::array<double, 2>& thresholds, const DrivingHistory& history,
                       const TextContext& context, Size room, const TextMeasure& measure) {
    constexpr ColourRole kColours[] = {ColourRole::StepLow, ColourRole::StepHigh, ColourRole::StepTop};
    const bool braking = maneuver == Maneuver::Braking;
    Drawing drawing = emptyDrawing(
        braking ? text(TextId::BrakingThresholdsPicture) : text(TextId::AccelerationThresholdsPicture), room, measure);
    const double em = measure.fontSize(), line = measure.lineHeight(FontRole::Body);
    const std::vector<double> greatest = history.greatest(maneuver);
    const double mostOfTrips = greatest.empty() ? 0 : std::ranges::max(greatest);
    const bool valid = ascends(thresholds);
    Scale scale(drawing, measure,
                std::max({kLeastThresholdScale, mostOfTrips * 1.05, valid ? thresholds.back() * 1.2 : 0.0}));
    const double plot = 1.5 * line, axis = plot + (kPlotHeight + kPlotGap) * em, labels = axis + kScaleHeight * em;
    const double texts = labels + scale.labelsHeight() + 0.5 * em;
    drawing.size.height = texts + kTextLines * line;

    const std::size_t trips = history.trips();
    if (trips > 0) {
        const ShownText heading = braking ? counted(TextId::HardestBraking, trips, trips)
                                          : counted(TextId::HardestAcceleration, trips, trips);
        addText(drawing, elided(heading, FontRole::Body, drawing.size.width, measure), 0, ColourRole::SecondaryText,
                measure);
        std::vector<std::size_t> bins(static_cast<std::size_t>(drawing.size.width / (kBinWidth * em)));
        const double width = drawing.size.width / static_cast<double>(bins.size());
        for (const double value : greatest)
            ++bins[std::min(static_cast<std::size_t>(scale.at(value) / width), bins.size() - 1)];
        const double unit = kPlotHeight * em / static_cast<double>(std::ranges::max(bins));
        for (std::size_t i = 0; i < bins.size(); ++i) {
            const double value = (static_cast<double>(i) + 0.5) / static_cast<double>(bins.size()) * scale.end();
            const double height = std::max(kLeastBar * em, unit * static_cast<double>(bins[i]));
            const std::size_t step = !valid ? 0 : (value > thresholds[0]) + (value > thresholds[1]);
            if (bins[i] > 0)
                drawing.commands.push_back(Rectangle{{static_cast<double>(i) * width + kBinGap * em / 2,
                                                      axis - kPlotGap * em - height, width - kBinGap * em, height},
                                                     kColours[step]});
        }
    }
    if (!valid) {
        drawing.commands.push_back(Rectangle{{0, axis, drawing.size.width, kScaleHeight * em}, ColourRole::Track});
        drawing.description = text(TextId::LimitsMustAscend);
    } else {
        scale.drawParts(axis, thresholds, kColours);
        scale.drawLabels(labels, thresholds, [&](double value) {
            return context.units.formatValueWithUnits(UnitTypeId::Acceleration, value);
        });
        const DrivingHistory::Counts counts = history.count(maneuver, thresholds);
        drawing.description = trips == 0 ? text(TextId::NoSampledTrips)
                              : braking
                                  ? counted(TextId::WouldBrakeHard, trips, counts.hard, trips, counts.extreme)
                                  : counted(TextId::WouldAccelerateHard, trips, counts.hard, trips, counts.extreme);
    }
    addText(drawing, drawing.description, texts, ColourRole::Text, measure);
    return drawing;
}

} // namespace quobrix
