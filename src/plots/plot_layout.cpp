#include "plots/plot_layout.h"

#include "texts/text.h"
#include "units/date_time.h"
#include "units/fine_text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kMargin = 0.7;
constexpr double kGap = 0.5;
constexpr double kTickGap = 0.35;
constexpr double kAboveArea = 0.45; // from the baseline of the title: the highest label begins there
constexpr double kLeastArea = 2.4;
constexpr double kEmptyArea = 0.8; // of a panel that shows nothing
constexpr double kAreaBesideMarks = 4.5;
constexpr double kUsualArea = 11;
constexpr double kLeastWidth = 26;
constexpr double kLineSample = 2.6;
constexpr double kLabelGap = 1.2;

constexpr double kMostOfWidth = 0.2; // for the names of bands

constexpr double kTickRoom = 1.7; // lines of small text between two ticks
constexpr double kMostTicks = 10; // beyond which more of them tell no more
constexpr double kStepParts = 4;  // of a step between ticks: an axis ends at one of them
constexpr double kMarksHeight = kPlotMarkSize + 3;

struct Shown {
    const PlotPanel* panel;
    std::size_t index;
    double height; ///< in proportion to the others; 0: the least
};

/// There is nothing to draw.
bool isEmpty(const PlotPanel& panel) {
    return panel.states.empty() && std::ranges::none_of(panel.curves, [](const PlotCurve& curve) {
               return curve.samples.extremes(0, curve.samples.size()).has_value();
           });
}

std::vector<Shown> shownOf(const PlotData& data, std::span<const PanelChoice> choices) {
    std::vector<Shown> shown;
    for (const std::size_t i : shownPanels(data, choices)) {
        const auto choice = std::ranges::find(choices, data.panels[i].key, &PanelChoice::key);
        const double height = choice != choices.end() ? choice->height : 1;
        shown.push_back({&data.panels[i], i, isEmpty(data.panels[i]) ? 0.0 : std::clamp(height, 0.1, 10.0)});
    }
    return shown;
}

/// A panel's values in the user's unit, least and greatest; one at least has a value.
std::pair<double, double> bounds(const PlotPanel& panel, const TUnitSystem& units) {
    double least = HUGE_VAL, greatest = -HUGE_VAL;
    for (const PlotCurve& curve : panel.curves)
        if (const auto extremes = curve.samples.extremes(0, curve.samples.size())) {
            least = std::min(least, units.toDisplay(panel.unit, extremes->least.value));
            greatest = std::max(greatest, units.toDisplay(panel.unit, extremes->greatest.value));
        }
    // From zero on where that takes less than half of the room.
    if (panel.speed || (least > 0 && least <= greatest / 2))
        least = std::min(least, 0.0);
    else if (greatest < 0 && greatest >= least / 2)
        greatest = 0;
    if (greatest - least <= 1e-9 * std::max(std::abs(least), std::abs(greatest)) || greatest == least) {
        const double room = std::max(std::abs(greatest) / 100, std::pow(10.0, -units.decimals(panel.unit)));
        if (least != 0)
            least -= room;
        greatest += room;
    }
    return {least, greatest};
}

/// The tops of labels of HEIGHT, given by their MIDDLES from the bottom up, moved no further than it takes for them to
/// lie between TOP and BOTTOM without touching; all of them have room there.
std::vector<double> apart(const std::vector<double>& middles, double height, double top, double bottom) {
    std::vector<double> tops;
    for (const double middle : middles) {
        tops.push_back(std::min(middle - height / 2, bottom - height));
        bottom = tops.back();
    }
    for (std::size_t i = tops.size(); i-- > 0; top = tops[i] + height)
        tops[i] = std::max(tops[i], top);
    return tops;
}

class Layouter {
public:
    /// Where it is TIGHT, what tells least gives way.
    Layouter(const PlotData& data, const PlotView& view, const TextContext& context, const TextMeasure& measure,
             bool tight)
        : data_(data), view_(view), context_(context), measure_(measure), em_(measure.fontSize()),
          line_(measure.lineHeight(FontRole::Body)), small_(measure.lineHeight(FontRole::Small)),
          shown_(shownOf(data, view.panels)), tight_(tight), titled_(!tight || data.axis != PlotAxis::Elapsed) {
        if (const auto empty = [](const Shown& shown) { return shown.height == 0; };
            tight_ && !std::ranges::all_of(shown_, empty))
            std::erase_if(shown_, empty);
    }

    PlotLayout layOut(Size room, double pixel) {
        result_.fontSize = em_;
        result_.pixel = pixel;
        result_.size.width = std::max(room.width, kLeastWidth * em_);
        double top = addHeadings(tight_ ? kGap * em_ / 2 : kMargin * em_);
        roomHeight_ = room.height;
        addPanels(top, room.height - belowPanels());
        if (shown_.empty())
            return std::move(result_);
        result_.axis.left = std::ceil(leftMargin());
        const double columns =
            std::max(1.0, std::floor((result_.size.width - rightMargin() - result_.axis.left) / pixel));
        result_.axis.right = result_.axis.left + columns * pixel;
        const PlotRange range = view_.range.value_or(data_.whole);
        const double column = range.length() / columns;
        result_.axis.from = std::round(range.from / column) * column;
        result_.axis.to = result_.axis.from + range.length();
        for (PanelLayout& panel : result_.panels) {
            panel.area.left = result_.axis.left;
            panel.area.width = result_.width();
            for (PlotTick& tick : panel.ticks)
                tick.at = panel.scale.row(tick.value);
            if (view_.options.bands && data_.panels[panel.panel].speed)
                addBands(panel);
        }
        addAxis();
        return std::move(result_);
    }

private:
    /// What the axis takes.
    double belowPanels() const {
        return kTickGap * em_ + small_ + (titled_ ? line_ : 0) + (tight_ ? 0 : kMargin * em_ / 2);
    }

    double addHeadings(double top) {
        const double left = kMargin * em_, right = result_.size.width - left;
        double baseline = top + measure_.ascent(FontRole::Strong);
        const double x = view_.named ? addTitle(left, right, baseline) : left;
        baseline = addLegend(x, left, right, baseline);
        return result_.headings.empty() && result_.legend.empty()
                   ? top
                   : baseline + line_ - measure_.ascent(FontRole::Body) + kGap * em_;
    }

    /// From LEFT on; where the legend can follow.
    double addTitle(double left, double right, double baseline) {
        ShownText title = data_.compares() ? text(TextId::PlotComparison) : data_.records.front();
        std::string when;
        if (data_.clock && !data_.compares())
            when = dateTimeText(context_.units, context_.zone.toLocal(*data_.clock));
        title = ShownText::asItIs(elided(title, FontRole::Strong, right - left, measure_));
        double x = left + measure_.width(title, FontRole::Strong);
        result_.headings.push_back({{left, baseline}, std::move(title), Anchor::Start, FontRole::Strong});
        if (const double width = measure_.width(when, FontRole::Body); !when.empty() && x + em_ + width <= right) {
            result_.headings.push_back(
                {{x + em_, baseline}, when, Anchor::Start, FontRole::Body, ColourRole::SecondaryText});
            x += em_ + width;
        }
        return x + 2 * em_;
    }

    /// From X on, in as many lines as it takes; the baseline of the last one.
    double addLegend(double x, double left, double right, double baseline) {
        const auto add = [&](LegendEntry entry, ShownText label, double sampleWidth) {
            const double width = sampleWidth + kTickGap * em_ + measure_.width(label, FontRole::Body);
            if (x + width > right && x > left) {
                x = left;
                baseline += line_;
            }
            entry.sample = {x + sampleWidth / 2, baseline - measure_.ascent(FontRole::Body) * 0.36};
            entry.label = {{x + sampleWidth + kTickGap * em_, baseline},
                           elided(label, FontRole::Body, right - x - sampleWidth - kTickGap * em_, measure_)};
            x += width + kLabelGap * em_;
            result_.legend.push_back(std::move(entry));
        };
        // What is not of all that are compared says of which it is.
        const auto ofFirst = [&](const ShownText& what) {
            return data_.compares() ? text(TextId::PlotOfRecord, what, data_.records.front()) : what;
        };
        if (data_.compares()) {
            for (std::size_t record = 0; record < data_.records.size(); ++record)
                add({.record = record}, data_.records[record], kLineSample * em_);
            if (showsBands() && !data_.bands.empty())
                add({.bands = true}, ofFirst(text(TextId::SectionSpeedBands)), kLineSample * em_);
        }
        for (std::size_t i = 0; i < kPlotEventKinds; ++i) {
            const auto kind = static_cast<PlotEventKind>(i);
            if (shows(view_.options, kind) &&
                std::ranges::find(data_.events, kind, &PlotEvent::kind) != data_.events.end())
                add({.event = kind}, ofFirst(plotEventName(kind)), kPlotMarkSize);
        }
        return baseline;
    }

    bool showsBands() const {
        return view_.options.bands &&
               std::ranges::any_of(shown_, [](const Shown& shown) { return shown.panel->speed; });
    }

    bool marksEvents() const {
        return std::ranges::any_of(data_.events,
                                   [&](const PlotEvent& event) { return shows(view_.options, event.kind); });
    }

    void addPanels(double top, double bottom) {
        const double frame = line_ + kGap * em_;
        const auto count = static_cast<double>(shown_.size());
        // Where there is little room, the events are marked above the first panel only.
        const bool marks = marksEvents();
        const bool marksAll = marks && bottom - top >= count * (frame + kMarksHeight + kAreaBesideMarks * em_);
        const std::vector<double> heights =
            areaHeights(bottom + kGap * em_ - top - frame * count - kMarksHeight * (marksAll ? count : marks));
        for (const Shown& shown : shown_) {
            PanelLayout& panel = result_.panels.emplace_back();
            panel.panel = shown.index;
            top += line_;
            panel.title = {{kMargin * em_, top - kAboveArea * em_}, titleOf(*shown.panel)};
            panel.title.text =
                elided(panel.title.text, FontRole::Body, result_.size.width - 2 * kMargin * em_, measure_);
            if (marksAll || (marks && result_.panels.size() == 1)) {
                panel.marksAt = top + kPlotMarkSize / 2;
                top += kMarksHeight;
            }
            panel.area.top = std::floor(top);
            panel.area.height = heights[result_.panels.size() - 1];
            panel.scale.top = panel.area.top;
            panel.scale.bottom = panel.area.top + panel.area.height;
            scale(panel, *shown.panel);
            panel.grip = {panel.title.place.x, panel.title.place.y - measure_.ascent(FontRole::Body),
                          measure_.width(panel.title.text, FontRole::Body), line_};
            top = panel.scale.bottom + kGap * em_;
        }
        result_.tickBaseline = top - kGap * em_ + kTickGap * em_ + measure_.ascent(FontRole::Small);
        result_.size.height = std::ceil(top - kGap * em_ + belowPanels());
        if (std::isfinite(roomHeight_))
            result_.size.height = std::max(result_.size.height, roomHeight_);
        if (shown_.empty()) {
            result_.headings.push_back(
                {{kMargin * em_, top + line_}, data_.panels.empty() ? data_.emptyText : text(TextId::PlotAllHidden)});
            if (!std::isfinite(roomHeight_))
                result_.size.height = std::ceil(top + 2 * line_ + kMargin * em_);
        }
    }

    /// Of all panels together ROOM, in proportion, but none less than it can be read in: then the others get less.
    std::vector<double> areaHeights(double room) const {
        const double least = std::ceil(kLeastArea * em_);
        std::vector<double> heights;
        double parts = 0;
        for (const Shown& shown : shown_) {
            heights.push_back(shown.height == 0 ? std::ceil(kEmptyArea * em_) : 0);
            room -= heights.back();
            parts += shown.height;
        }
        if (!std::isfinite(room))
            room = parts * kUsualArea * em_;
        for (bool again = true; again;) {
            again = false;
            for (std::size_t i = 0; i < heights.size(); ++i)
                if (heights[i] == 0 && room * shown_[i].height < least * parts) {
                    heights[i] = least;
                    room -= least;
                    parts -= shown_[i].height;
                    again = true;
                }
        }
        for (std::size_t i = 0; i < heights.size(); ++i)
            if (heights[i] == 0)
                heights[i] = std::max(std::floor(room * shown_[i].height / parts), least);
        return heights;
    }

    ShownText titleOf(const PlotPanel& panel) const {
        const UnitRecord& unit = unitRecord(context_.units.unit(panel.unit));
        return unit.name.empty() || !panel.states.empty() ? panel.title
                                                          : text(TextId::WithAside, panel.title, text(unit.shownName));
    }

    void scale(PanelLayout& panel, const PlotPanel& data) {
        const double room = panel.area.height;
        if (!data.states.empty()) {
            const auto count = static_cast<double>(data.states.size());
            panel.scale.least = -0.5;
            panel.scale.greatest = count - 0.5;
            const auto every = static_cast<std::size_t>(std::max(1.0, std::ceil(small_ * count / room)));
            for (std::size_t i = 0; i < data.states.size(); i += every)
                panel.ticks.push_back({static_cast<double>(i), 0, data.states[i]});
            panel.baseline = panel.scale.least;
            return;
        }
        if (isEmpty(data)) {
            panel.title.text = text(TextId::PlotNothing, data.title);
            return;
        }
        const TUnitSystem& units = context_.units;
        const auto base = [&](double shown) { return units.toBase(data.unit, shown); };
        const double most = std::clamp(std::floor(room / (kTickRoom * small_)), 2.0, kMostTicks);
        auto [least, greatest] = bounds(data, units);
        const bool normalized = data.speed && view_.options.normalize && view_.options.maximum > 0;
        if (normalized) {
            least = 0;
            greatest = units.toDisplay(data.unit, view_.options.maximum);
        }
        Steps steps = stepsFrom((greatest - least) / most);
        double lower = least, upper = greatest;
        if (!normalized) {
            const auto widen = [&, from = least, to = greatest](double unit) {
                lower = std::floor(from / unit + 1e-9) * unit;
                upper = std::ceil(to / unit - 1e-9) * unit;
            };
            widen(steps.step / kStepParts);
            if ((upper - lower) / steps.step > most + 1e-9) {
                steps = stepsFrom(steps.step * 1.5);
                widen(steps.step / kStepParts);
            }
            if (multiples(steps.step, lower, upper).size() < 2)
                widen(steps.step);
        }
        for (const double value : multiples(steps.step, lower, upper))
            panel.ticks.push_back({base(value), 0, units.formatNumber(value, steps.decimals)});
        panel.scale.least = base(lower);
        panel.scale.greatest = base(upper);
        panel.baseline = base(std::clamp(0.0, lower, upper));
    }

    double leftMargin() const {
        double width = 0;
        for (const PanelLayout& panel : result_.panels)
            for (const PlotTick& tick : panel.ticks)
                width = std::max(width, measure_.width(tick.label, FontRole::Small));
        return kMargin * em_ + width + kTickGap * em_;
    }

    /// Beside the panels, where no curve runs through them, stand the names of the bands; below, the last label of the
    /// axis may go on by half.
    double rightMargin() const {
        double width = std::max(kMargin * em_, labelWidth(placeText(data_, data_.whole.to, context_)) / 2 + 1);
        if (showsBands())
            for (const PlotBand& band : data_.bands)
                width = std::max(width, kTickGap * em_ + measure_.width(band.label, FontRole::Fine) + 1);
        return std::min(width, kMostOfWidth * result_.size.width);
    }

    void addBands(PanelLayout& panel) const {
        std::vector<std::optional<double>> ends;
        for (const PlotBand& band : data_.bands)
            ends.push_back(band.to);
        panel.bands = walkBands(ends, panel.scale);
        std::vector<std::size_t> named(panel.bands.size());
        std::iota(named.begin(), named.end(), std::size_t{0});
        const double height = measure_.lineHeight(FontRole::Fine), ascent = measure_.ascent(FontRole::Fine);
        // Where not all of them have room, the lowest bands tell least.
        const auto room = static_cast<std::size_t>(std::max(1.0, std::floor(panel.area.height / height)));
        named.erase(named.begin(), named.end() - static_cast<std::ptrdiff_t>(std::min(room, named.size())));
        std::vector<double> middles;
        for (const std::size_t band : named)
            middles.push_back(panel.bands[band].label);
        const std::vector<double> tops = apart(middles, height, panel.scale.top, panel.scale.bottom);
        const double left = result_.axis.right + kTickGap * em_;
        for (std::size_t i = 0; i < named.size(); ++i)
            panel.bandLabels.push_back(
                {{left, tops[i] + ascent},
                 elided(data_.bands[named[i]].label, FontRole::Fine, result_.size.width - left, measure_),
                 Anchor::Start,
                 FontRole::Fine,
                 ColourRole::SecondaryText});
    }

    void addAxis() {
        const PlaceScale& axis = result_.axis;
        const double perUnit = (axis.to - axis.from) / result_.width();
        const TUnitSystem& units = context_.units;
        const bool times = data_.axis != PlotAxis::Distance;
        std::vector<double> places;
        if (times) {
            const double width = std::max(labelWidth(placeText(data_, axis.from, context_)),
                                          labelWidth(placeText(data_, axis.to, context_)));
            places = multiples(timeStepFrom(perUnit * (width + kLabelGap * em_)), axis.from, axis.to);
            for (const double place : places)
                addTick(place, placeText(data_, place, context_));
        } else {
            const double from = units.toDisplay(UnitTypeId::Distance, axis.from);
            const double to = units.toDisplay(UnitTypeId::Distance, axis.to);
            const Steps finest = stepsFrom((to - from) / result_.width() * kLabelGap * em_);
            const double width = std::max(labelWidth(units.formatNumber(from, finest.decimals)),
                                          labelWidth(units.formatNumber(to, finest.decimals)));
            const Steps steps = stepsFrom((to - from) / result_.width() * (width + kLabelGap * em_));
            for (const double shown : multiples(steps.step, from, to))
                addTick(units.toBase(UnitTypeId::Distance, shown), units.formatNumber(shown, steps.decimals));
        }
        if (!titled_)
            return;
        const ShownText title = data_.axis == PlotAxis::Elapsed ? text(TextId::PlotElapsedTime)
                                : data_.axis == PlotAxis::UntilStandstill
                                    ? text(TextId::PlotTimeBeforeStandstill)
                                    : text(TextId::WithAside, text(TextId::FactDistance),
                                           text(unitRecord(units.unit(UnitTypeId::Distance)).shownName));
        result_.axisTitle = {{(axis.left + axis.right) / 2, result_.tickBaseline - measure_.ascent(FontRole::Small) +
                                                                small_ + measure_.ascent(FontRole::Body)},
                             title,
                             Anchor::Middle,
                             FontRole::Body,
                             ColourRole::SecondaryText};
    }
    double labelWidth(const std::string& label) const { return measure_.width(label, FontRole::Small); }
    /// A label that would leave the drawing is left out; the tick stays.
    void addTick(double place, std::string label) {
        const double x = result_.axis.x(place), half = labelWidth(label) / 2;
        if (x - half < 0 || x + half > result_.size.width)
            label.clear();
        result_.ticks.push_back({place, x, std::move(label)});
    }

    const PlotData& data_;
    const PlotView& view_;
    const TextContext& context_;
    const TextMeasure& measure_;
    double em_, line_, small_;
    double roomHeight_ = kUnlimited;
    std::vector<Shown> shown_;
    const bool tight_;
    const bool titled_; ///< the axis, whose labels say enough where they are times
    PlotLayout result_;
};

} // namespace

bool hides(std::span<const PanelChoice> choices, const PlotPanel& panel) {
    const auto choice = std::ranges::find(choices, panel.key, &PanelChoice::key);
    return choice != choices.end() && choice->hidden;
}

std::vector<std::size_t> shownPanels(const PlotData& data, std::span<const PanelChoice> choices) {
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < data.panels.size(); ++i)
        if (!hides(choices, data.panels[i]))
            shown.push_back(i);
    std::ranges::stable_sort(shown, {}, [&](std::size_t i) {
        return std::ranges::find(choices, data.panels[i].key, &PanelChoice::key) - choices.begin();
    });
    return shown;
}

bool shows(const PlotOptions& options, PlotEventKind kind) {
    return plotEventSpec(kind).braking ? options.brakes : options.accelerations;
}

PlotLayout layOutPlot(const PlotData& data, const PlotView& view, const TextContext& context, Size room,
                      const TextMeasure& measure, double pixel) {
    PlotLayout layout = Layouter(data, view, context, measure, false).layOut(room, pixel);
    return layout.size.height > room.height ? Layouter(data, view, context, measure, true).layOut(room, pixel) : layout;
}

std::int64_t wholeSecond(double place) { return static_cast<std::int64_t>(std::floor(place + 1e-6)); }

std::string placeText(const PlotData& data, double place, const TextContext& context) {
    switch (data.axis) {
    case PlotAxis::Elapsed:
        return durationText(wholeSecond(std::max(place, 0.0)));
    case PlotAxis::UntilStandstill:
        return durationText(-wholeSecond(std::min(place, 0.0)));
    case PlotAxis::Distance:
        break;
    }
    return fineText(context.units, UnitTypeId::Distance, place, data.finest); // so that two samples read different
}

std::optional<std::size_t> PlotLayout::panelAt(Point point) const {
    for (std::size_t i = 0; i < panels.size(); ++i) {
        const Box& area = panels[i].area;
        if (point.x >= area.left && point.x <= area.left + area.width && point.y >= area.top &&
            point.y <= area.top + area.height)
            return i;
    }
    return {};
}

std::optional<std::size_t> PlotLayout::titleAt(Point point) const {
    for (std::size_t i = 0; i < panels.size(); ++i) {
        const Box& grip = panels[i].grip;
        if (point.x >= grip.left && point.x <= grip.left + grip.width && point.y >= grip.top &&
            point.y <= grip.top + grip.height)
            return i;
    }
    return {};
}

std::size_t PlotLayout::placeOfPanel(double y) const {
    std::size_t place = 0;
    while (place < panels.size() && y > (panels[place].grip.top + panels[place].scale.bottom) / 2)
        ++place;
    return place;
}

std::optional<std::size_t> PlotLayout::borderAt(Point point) const {
    constexpr double kReach = 3; // units
    for (std::size_t i = 0; i < panels.size(); ++i)
        if (point.x >= axis.left && point.x <= axis.right && std::abs(point.y - panels[i].scale.bottom) <= kReach)
            return i;
    return {};
}

std::optional<double> PlotLayout::placeAt(double x) const {
    return !panels.empty() && x >= axis.left && x <= axis.right ? std::optional(axis.placeAt(x)) : std::nullopt;
}

std::optional<std::size_t> PlotLayout::eventAt(const PlotData& data, const PlotOptions& options, Point point) const {
    std::optional<std::size_t> nearest;
    const auto touched = [&](const PanelLayout& panel) {
        return panel.marksAt && std::abs(point.y - *panel.marksAt) <= kPlotMarkSize / 2 + 1;
    };
    if (std::ranges::none_of(panels, touched))
        return nearest;
    double distance = kPlotMarkSize;
    for (std::size_t i = 0; i < data.events.size(); ++i)
        if (shows(options, data.events[i].kind))
            // Of two at the same place the graver one is painted over the other.
            if (const double away = std::abs(axis.x(data.events[i].at) - point.x);
                away < distance || (nearest && away == distance && data.events[i].kind > data.events[*nearest].kind)) {
                distance = away;
                nearest = i;
            }
    return nearest;
}

std::optional<std::size_t> PlotLayout::bandAt(const PlotData& data, Point point) const {
    const std::optional<std::size_t> panel = panelAt(point);
    if (!panel || panels[*panel].bands.empty())
        return {};
    return bandOf(data, panels[*panel].scale.valueAt(point.y));
}

} // namespace quobrix
