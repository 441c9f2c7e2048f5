#include "summary/driving_figures.h"

#include "report/report.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/economy.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

namespace quobrix {
namespace {

std::optional<double> ratio(double part, double whole) {
    return whole > 0 ? std::optional(part / whole) : std::nullopt;
}

bool hasSource(FigureSource source, const DrivingTotals& totals) {
    return source == FigureSource::FuelEntries ||
           (source == FigureSource::WatchedTrips ? totals.watchedTrips : totals.trips) > 0;
}

constexpr DrivingFigure kFigures[] = {
#define FIGURE(Key, Title, Kind, Source, Unit, OfTotals)                                                               \
    {#Key,                                                                                                             \
     SourceText(Title),                                                                                                \
     FigureKind::Kind,                                                                                                 \
     FigureSource::Source,                                                                                             \
     UnitTypeId::Unit,                                                                                                 \
     [](const DrivingTotals& t) -> std::optional<double> {                                                             \
         return hasSource(FigureSource::Source, t) ? std::optional<double>(OfTotals) : std::nullopt;                   \
     }},
#include "summary/driving_figures.def"
#undef FIGURE
};

/// Within what whole numbers can hold, whatever a damaged database says.
std::int64_t wholeNumber(double value) {
    constexpr double kMost = 9'007'199'254'740'992; // 2^53: beyond it not every one can be told
    return std::isnan(value) ? 0 : std::llround(std::clamp(value, -kMost, kMost));
}

} // namespace

std::span<const DrivingFigure> drivingFigures() { return kFigures; }

const DrivingFigure* drivingFigure(std::string_view key) {
    const auto* found = std::ranges::find(kFigures, key, &DrivingFigure::key);
    return found != std::end(kFigures) ? found : nullptr;
}

double shownFigure(const DrivingFigure& figure, double value, const TUnitSystem& units) {
    constexpr double kMile = 1609.344; // m
    switch (figure.kind) {
    case FigureKind::Quantity:
        return units.toDisplay(figure.unit, value);
    case FigureKind::Rate:
    case FigureKind::Price:
        return value * 100 * (inMiles(units) ? kMile : 1000);
    case FigureKind::Share:
        return value * 100;
    case FigureKind::Economy:
        return shownEconomy(value, units);
    case FigureKind::Count:
    case FigureKind::Time:
    case FigureKind::Money:
        break;
    }
    return value;
}

ShownText rateTitle(const ShownText& what, const TUnitSystem& units) {
    return inMiles(units) ? text(TextId::FigurePer100Miles, what) : text(TextId::FigurePer100Kilometres, what);
}

ShownText figureTitle(const DrivingFigure& figure, const TUnitSystem& units) {
    const ShownText title = text(figure.title);
    return figure.kind == FigureKind::Rate || figure.kind == FigureKind::Price ? rateTitle(title, units) : title;
}

ShownText figureText(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units) {
    const std::optional<double> value = figure.value(totals);
    if (!value)
        return {};
    ValueText buffer;
    switch (figure.kind) {
    case FigureKind::Count:
        return ShownText::asItIs(units.formatInteger(wholeNumber(*value)));
    case FigureKind::Time:
        return ShownText::asItIs(durationText(wholeNumber(*value)));
    case FigureKind::Quantity:
        return ShownText::asItIs(units.formatValueWithUnits(figure.unit, *value));
    case FigureKind::Rate:
        return ShownText::asItIs(
            std::string(formatNumber(units.locale().numbers, shownFigure(figure, *value, units), 1, buffer)));
    case FigureKind::Economy:
        return economyText(*value, units);
    case FigureKind::Money:
    case FigureKind::Price:
        return ShownText::asItIs(
            std::string(formatNumber(units.locale().numbers, shownFigure(figure, *value, units), 2, buffer)));
    case FigureKind::Share:
        break;
    }
    return ShownText::asItIs(shareText(*value));
}

ShownText figureRemark(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units) {
    if (!figure.value(totals))
        return {};
    const auto number = [&](std::size_t count) { return units.formatInteger(static_cast<std::int64_t>(count)); };
    if (figure.kind == FigureKind::Money && totals.unpricedFills > 0)
        return counted(TextId::RemarkUnpriced, totals.unpricedFills, number(totals.unpricedFills));
    if (figure.ofFewTrips(totals))
        return text(TextId::RemarkFewTrips);
    return figure.source == FigureSource::FuelEntries && figure.kind != FigureKind::Money &&
                   totals.filledVehicles < totals.vehicles
               ? text(TextId::RemarkSomeVehicles, number(totals.filledVehicles), number(totals.vehicles))
               : ShownText();
}

ShownText remarkedFigure(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units) {
    const ShownText value = figureText(figure, totals, units), remark = figureRemark(figure, totals, units);
    return remark.empty() ? value : text(TextId::WithAside, value, remark);
}

bool tellsAnything(const DrivingTotals& totals) {
    return std::ranges::any_of(kFigures, [&](const DrivingFigure& figure) { return figure.value(totals).has_value(); });
}

ShownText figureHeading(const DrivingFigure& figure, const TUnitSystem& units) {
    const ShownText title = figureTitle(figure, units);
    if (figure.kind == FigureKind::Quantity)
        return text(TextId::WithAside, title, text(unitRecord(units.unit(figure.unit)).shownName));
    if (figure.kind == FigureKind::Economy)
        return text(TextId::WithAside, title, economyUnit(units));
    return figure.kind == FigureKind::Share ? text(TextId::WithAside, title, "%") : title;
}

ShownText figureCell(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units) {
    const std::optional<double> value = figure.value(totals);
    ValueText buffer;
    if (value && figure.kind == FigureKind::Quantity)
        return ShownText::asItIs(units.formatValue(figure.unit, *value));
    if (value && (figure.kind == FigureKind::Share || figure.kind == FigureKind::Economy))
        return ShownText::asItIs(
            std::string(formatNumber(units.locale().numbers, shownFigure(figure, *value, units), 1, buffer)));
    return figureText(figure, totals, units);
}

std::optional<double> figureChange(const DrivingFigure& figure, const DrivingTotals& before, const DrivingTotals& now,
                                   const TUnitSystem& units) {
    const std::optional<double> old = figure.value(before), present = figure.value(now);
    if (!old || !present || *old == 0 || figure.ofFewTrips(before))
        return {};
    return shownFigure(figure, *present, units) / shownFigure(figure, *old, units) - 1;
}

std::int64_t wholePercent(double part) {
    return std::isnan(part) ? 0 : std::llround(std::clamp(part * 100, -1e6, 1e6));
}

} // namespace quobrix
