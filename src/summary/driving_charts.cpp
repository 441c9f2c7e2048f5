#include "summary/driving_charts.h"

#include "plots/scales.h"
#include "report/report.h"
#include "summary/driving_report.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kBars = 7;
constexpr double kLeastMonth = 2.2;
constexpr double kGap = 0.3; // of a month
constexpr int kTicks = 4;    // at most, above 0

/// A bar, from below, in what its figure is shown in.
struct MonthBar {
    std::vector<double> parts; ///< none: there is nothing to make them of
    ShownText text;            ///< what they come to
    double whole() const { return std::accumulate(parts.begin(), parts.end(), 0.0); }
};

struct Look {
    ShownText title;
    std::vector<std::pair<ShownText, ColourRole>> parts;
};

/// The first three characters.
std::string shortName(int month) {
    const ShownText name = text(monthName(month));
    std::size_t end = 0;
    for (int characters = 0; end < name.size(); ++end)
        if ((static_cast<unsigned char>(name[end]) & 0xC0u) != 0x80u && ++characters > 3)
            break;
    return name.substr(0, end);
}

constexpr std::string_view kEvents[] = {"hardBrakes", "extremeBrakes", "hardAccelerations", "extremeAccelerations"};
constexpr ColourRole kEventColours[] = {ColourRole::StepMiddle, ColourRole::StepTop, ColourRole::Line2,
                                        ColourRole::Line5};
constexpr ColourRole kBandColours[] = {ColourRole::SecondaryText, ColourRole::StepLow, ColourRole::StepMiddle,
                                       ColourRole::StepHigh, ColourRole::StepTop};
static_assert(std::size(kBandColours) == std::tuple_size_v<decltype(DrivingTotals::bands)>);

Look lookOf(const DrivingChart& chart, const TUnitSystem& units) {
    if (chart.kind == DrivingChart::Kind::Figure)
        return {figureHeading(*chart.figure, units), {{{}, ColourRole::Accent}}};
    Look look;
    if (chart.kind == DrivingChart::Kind::Events) {
        look.title = rateTitle(text(TextId::StatisticsEvents), units);
        for (std::size_t i = 0; i < std::size(kEvents); ++i)
            look.parts.emplace_back(text(drivingFigure(kEvents[i])->title), kEventColours[i]);
        return look;
    }
    look.title = text(TextId::WithAside, text(TextId::StatisticsBands), "%");
    for (std::size_t band = 0; band < std::size(kBandColours); ++band)
        look.parts.emplace_back(band == 0                             ? text(TextId::BandIdle)
                                : band + 1 == std::size(kBandColours) ? text(TextId::StatisticsTopBand)
                                                                      : text(TextId::StatisticsBand, band),
                                kBandColours[band]);
    return look;
}

MonthBar barOf(const DrivingChart& chart, const DrivingTotals& totals, const TUnitSystem& units) {
    MonthBar bar;
    if (chart.kind == DrivingChart::Kind::Figure) {
        if (const std::optional<double> value = chart.figure->value(totals))
            bar = {{shownFigure(*chart.figure, *value, units)}, remarkedFigure(*chart.figure, totals, units)};
    } else if (chart.kind == DrivingChart::Kind::Events) {
        if (!drivingFigure(kEvents[0])->value(totals))
            return bar;
        for (const std::string_view key : kEvents) {
            const DrivingFigure& figure = *drivingFigure(key);
            bar.parts.push_back(shownFigure(figure, *figure.value(totals), units));
            bar.text = ShownText::asItIs(bar.text + (bar.text.empty() ? "" : ", ") + text(figure.title) + ' ' +
                                         figureText(figure, totals, units));
        }
        if (const ShownText remark = figureRemark(*drivingFigure(kEvents[0]), totals, units); !remark.empty())
            bar.text = text(TextId::WithAside, bar.text, remark);
    } else if (totals.bandTime() > 0) {
        for (std::size_t band = 0; band < totals.bands.size(); ++band) {
            const double part = totals.bands[band] / totals.bandTime();
            bar.parts.push_back(part * 100);
            bar.text = ShownText::asItIs(bar.text + (bar.text.empty() ? "" : ", ") +
                                         lookOf(chart, units).parts[band].first + ' ' + shareText(part));
        }
    }
    return bar;
}

/// The values at which lines stand, from 0 to at least HIGHEST, and how they read.
struct Scale {
    std::vector<double> values;
    std::vector<std::string> texts;
    double top = 1;
};
Scale scaleOf(const DrivingChart& chart, double highest, const TUnitSystem& units) {
    const FigureKind kind = chart.kind == DrivingChart::Kind::Figure   ? chart.figure->kind
                            : chart.kind == DrivingChart::Kind::Events ? FigureKind::Rate
                                                                       : FigureKind::Share;
    if (chart.kind == DrivingChart::Kind::Bands)
        highest = 100; // rounding included
    if (!(highest > 0) || !std::isfinite(highest))
        highest = 1;
    Steps steps = stepsFrom(highest / kTicks);
    if (kind == FigureKind::Time)
        steps = {timeStepFrom(highest / kTicks), 0};
    else if (kind == FigureKind::Count && steps.step < 1)
        steps = {1, 0};
    Scale scale;
    scale.top = std::ceil(highest / steps.step - 1e-9) * steps.step;
    scale.values = multiples(steps.step, 0, scale.top);
    for (const double value : scale.values)
        scale.texts.push_back(kind == FigureKind::Time ? durationText(static_cast<std::int64_t>(value))
                                                       : units.formatNumber(value, steps.decimals));
    return scale;
}

Scale scaleOf(const DrivingChart& chart, std::span<const DrivingMonth> months, const TUnitSystem& units) {
    double highest = 0;
    for (const DrivingMonth& month : months)
        highest = std::max(highest, barOf(chart, month.totals, units).whole());
    return scaleOf(chart, highest, units);
}

double widthOf(const Scale& scale, const TextMeasure& measure) {
    double widest = 0;
    for (const std::string& text : scale.texts)
        widest = std::max(widest, measure.width(text, FontRole::Small) + 0.6 * measure.fontSize());
    return widest;
}

} // namespace

std::array<DrivingChart, 3> drivingCharts() {
    return {DrivingChart{DrivingChart::Kind::Figure, drivingFigure("distance")},
            DrivingChart{DrivingChart::Kind::Events}, DrivingChart{DrivingChart::Kind::Bands}};
}

MonthsPicture drawMonths(const DrivingChart& chart, std::span<const DrivingMonth> months, const TUnitSystem& units,
                         Size room, const TextMeasure& measure) {
    const double em = measure.fontSize(), line = measure.lineHeight(FontRole::Small);
    const Look look = lookOf(chart, units);
    MonthsPicture picture;
    Drawing& drawing = picture.drawing;
    drawing = {look.title, {}, {}, em, {}};
    std::vector<MonthBar> bars;
    for (const DrivingMonth& month : months) {
        bars.push_back(barOf(chart, month.totals, units));
        picture.months.push_back({{}, nameOf(month), bars.back().text});
        if (!bars.back().parts.empty())
            drawing.description += (drawing.description.empty() ? "" : "; ") + nameOf(month) + ": " + bars.back().text;
    }
    const Scale scale = scaleOf(chart, months, units);
    double left = widthOf(scale, measure); // of the bars; a month stands in one place in all charts of a page
    for (const DrivingChart& other : drivingCharts())
        left = std::max(left, widthOf(scaleOf(other, months, units), measure));
    const double step =
        std::max((room.width - left) / static_cast<double>(std::max<std::size_t>(months.size(), 1)), kLeastMonth * em);
    drawing.size.width = left + step * static_cast<double>(months.size());
    const auto write = [&](Point place, std::string text, Anchor anchor) {
        drawing.commands.emplace_back(Text{place, std::move(text), anchor, FontRole::Small, ColourRole::SecondaryText});
    };

    double y = measure.lineHeight(FontRole::Strong);
    drawing.commands.emplace_back(Text{{0, measure.ascent(FontRole::Strong)},
                                       elided(look.title, FontRole::Strong, drawing.size.width, measure),
                                       Anchor::Start,
                                       FontRole::Strong,
                                       ColourRole::Text});
    // What the colours stand for.
    double x = 0;
    for (const auto& [name, colour] : look.parts) {
        if (name.empty())
            continue;
        const double width = measure.width(name, FontRole::Small) + 2 * em;
        if (x > 0 && x + width > drawing.size.width) {
            x = 0;
            y += line;
        }
        drawing.commands.emplace_back(Rectangle{{x, y + 0.2 * em, 0.7 * em, 0.7 * em}, colour});
        write({x + em, y + measure.ascent(FontRole::Small)}, name, Anchor::Start);
        x += width;
    }
    y += (x > 0 ? line : 0) + 0.7 * em;

    const double foot = y + kBars * em;
    for (std::size_t i = 0; i < scale.values.size(); ++i) {
        const double height = foot - scale.values[i] / scale.top * kBars * em;
        drawing.commands.emplace_back(Line{{left, height}, {drawing.size.width, height}, {}});
        write({left - 0.6 * em, height + 0.35 * measure.ascent(FontRole::Small)}, scale.texts[i], Anchor::End);
    }
    for (std::size_t i = 0; i < months.size(); ++i) {
        const double begin = left + step * static_cast<double>(i);
        picture.months[i].box = {begin, y, step, foot - y + 0.2 * em + line};
        double top = foot;
        for (std::size_t part = 0; part < bars[i].parts.size(); ++part) {
            const double height = bars[i].parts[part] / scale.top * kBars * em;
            top -= height;
            if (height > 0)
                drawing.commands.emplace_back(
                    Rectangle{{begin + step * kGap / 2, top, step * (1 - kGap), height}, look.parts[part].second});
        }
        std::string name = shortName(months[i].month);
        if (months[i].unfinished) {
            const std::string soFar = text(TextId::StatisticsUnfinished, name);
            name = measure.width(soFar, FontRole::Small) <= step ? soFar : '(' + name + ')';
        }
        write({begin + step / 2, foot + 0.2 * em + measure.ascent(FontRole::Small)},
              elided(name, FontRole::Small, step, measure), Anchor::Middle);
    }
    drawing.size.height = foot + 0.2 * em + line;
    return picture;
}

} // namespace quobrix
