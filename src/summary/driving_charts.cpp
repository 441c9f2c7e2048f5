#include "summary/driving_charts.h"

#include "report/report.h"
#include "summary/driving_report.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/unit_system.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kBars = 7;
constexpr double kLeastMonth = 2.2;
constexpr double kGap = 0.3; // of a month

/// A bar, from below.
struct MonthBar {
    std::vector<double> parts; ///< none: there is nothing to make them of
    ShownText text;            ///< what they come to
    double whole() const { return std::accumulate(parts.begin(), parts.end(), 0.0); }
};

struct Kind {
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

const DrivingFigure& figureOf(std::string_view key) {
    return *std::ranges::find(drivingFigures(), key, &DrivingFigure::key);
}

constexpr std::string_view kEvents[] = {"hardBrakes", "extremeBrakes", "hardAccelerations", "extremeAccelerations"};
constexpr ColourRole kEventColours[] = {ColourRole::StepMiddle, ColourRole::StepTop, ColourRole::Line2,
                                        ColourRole::Line5};
constexpr ColourRole kBandColours[] = {ColourRole::Track, ColourRole::StepLow, ColourRole::StepMiddle,
                                       ColourRole::StepHigh, ColourRole::StepTop};
static_assert(std::size(kBandColours) == std::tuple_size_v<decltype(DrivingTotals::bands)>);

Kind kindOf(DrivingChart chart, const TUnitSystem& units) {
    if (chart == DrivingChart::Distance)
        return {figureTitle(figureOf("distance"), units), {{{}, ColourRole::Accent}}};
    Kind kind;
    if (chart == DrivingChart::Events) {
        kind.title = rateTitle(text(TextId::StatisticsEvents), units);
        for (std::size_t i = 0; i < std::size(kEvents); ++i)
            kind.parts.emplace_back(text(figureOf(kEvents[i]).title), kEventColours[i]);
        return kind;
    }
    kind.title = text(TextId::StatisticsBands);
    for (std::size_t band = 0; band < std::size(kBandColours); ++band)
        kind.parts.emplace_back(band == 0                             ? text(TextId::BandIdle)
                                : band + 1 == std::size(kBandColours) ? text(TextId::StatisticsTopBand)
                                                                      : text(TextId::StatisticsBand, band),
                                kBandColours[band]);
    return kind;
}

MonthBar barOf(DrivingChart chart, const DrivingTotals& totals, const TUnitSystem& units) {
    MonthBar bar;
    if (chart == DrivingChart::Distance) {
        if (totals.trips > 0)
            bar = {{totals.distance}, figureText(figureOf("distance"), totals, units)};
    } else if (chart == DrivingChart::Events) {
        if (!figureOf(kEvents[0]).value(totals))
            return bar;
        for (const std::string_view key : kEvents) {
            bar.parts.push_back(*figureOf(key).value(totals));
            bar.text = ShownText::asItIs(bar.text + (bar.text.empty() ? "" : ", ") + text(figureOf(key).title) + ' ' +
                                         figureText(figureOf(key), totals, units));
        }
    } else if (totals.bandTime() > 0) {
        for (const double time : totals.bands) {
            bar.parts.push_back(time / totals.bandTime());
            bar.text = ShownText::asItIs(bar.text + (bar.text.empty() ? "" : ", ") + shareText(bar.parts.back()));
        }
    }
    return bar;
}

} // namespace

Drawing drawMonths(DrivingChart chart, std::span<const DrivingMonth> months, const TUnitSystem& units, Size room,
                   const TextMeasure& measure) {
    const double em = measure.fontSize(), line = measure.lineHeight(FontRole::Small);
    const Kind kind = kindOf(chart, units);
    const double step =
        std::max(room.width / static_cast<double>(std::max<std::size_t>(months.size(), 1)), kLeastMonth * em);
    Drawing drawing{kind.title, {}, {}, em, {}};
    drawing.size.width = step * static_cast<double>(months.size());
    double y = measure.lineHeight(FontRole::Strong);
    drawing.commands.emplace_back(
        Text{{0, measure.ascent(FontRole::Strong)}, kind.title, Anchor::Start, FontRole::Strong, ColourRole::Text});
    // What the colours stand for.
    double x = 0;
    for (const auto& [name, colour] : kind.parts) {
        if (name.empty())
            continue;
        const double width = measure.width(name, FontRole::Small) + 2 * em;
        if (x > 0 && x + width > drawing.size.width) {
            x = 0;
            y += line;
        }
        drawing.commands.emplace_back(Rectangle{{x, y + 0.2 * em, 0.7 * em, 0.7 * em}, colour});
        drawing.commands.emplace_back(Text{{x + em, y + measure.ascent(FontRole::Small)},
                                           name,
                                           Anchor::Start,
                                           FontRole::Small,
                                           ColourRole::SecondaryText});
        x += width;
    }
    y += (x > 0 ? line : 0) + 0.4 * em;

    std::vector<MonthBar> bars;
    double highest = 0;
    for (const DrivingMonth& month : months) {
        bars.push_back(barOf(chart, month.totals, units));
        highest = std::max(highest, bars.back().whole());
        if (!bars.back().parts.empty())
            drawing.description += (drawing.description.empty() ? "" : "; ") + nameOf(month) + ": " + bars.back().text;
    }
    const double foot = y + kBars * em;
    for (std::size_t i = 0; i < months.size(); ++i) {
        const double left = step * static_cast<double>(i);
        double top = foot;
        for (std::size_t part = 0; part < bars[i].parts.size() && highest > 0; ++part) {
            const double height = bars[i].parts[part] / highest * kBars * em;
            top -= height;
            if (height > 0)
                drawing.commands.emplace_back(
                    Rectangle{{left + step * kGap / 2, top, step * (1 - kGap), height}, kind.parts[part].second});
        }
        std::string name = shortName(months[i].month);
        if (months[i].unfinished)
            name = '(' + name + ')';
        drawing.commands.emplace_back(Text{{left + step / 2, foot + 0.2 * em + measure.ascent(FontRole::Small)},
                                           elided(name, FontRole::Small, step, measure),
                                           Anchor::Middle,
                                           FontRole::Small,
                                           ColourRole::SecondaryText});
    }
    drawing.commands.emplace_back(Line{{0, foot}, {drawing.size.width, foot}, {}});
    drawing.size.height = foot + 0.2 * em + line;
    return drawing;
}

} // namespace quobrix
