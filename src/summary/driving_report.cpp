#include "summary/driving_report.h"

#include "base/utf8.h"
#include "model/parameters.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {
namespace {

constexpr ParameterFigure kParameterFigures[] = {
    {"threshold", SourceText("Threshold"), &MonitoredParameter::threshold, false},
    {"timeOver", SourceText("Time Over Thresh"), &MonitoredParameter::timeOver, true},
    {"timeUnder", SourceText("Time Under Thresh"), &MonitoredParameter::timeUnder, true},
    {"highest", SourceText("High Above Thresh"), &MonitoredParameter::highest, false},
    {"lowest", SourceText("Low Below Thresh"), &MonitoredParameter::lowest, false},
};

// Lists show the first figures only: those that tell how much was driven.
constexpr std::size_t kListFigures = 5;

template <class Of>
void addList(Report& report, ShownText heading, ShownText what, const std::vector<Of>& all, const TUnitSystem& units) {
    Grid grid{{{std::move(what), false}}, {}};
    const auto figures = drivingFigures().first(kListFigures);
    for (const DrivingFigure& figure : figures)
        grid.columns.push_back({figureTitle(figure, units)});
    for (const Of& each : all) {
        if (each.totals.trips == 0)
            continue;
        std::vector<std::string>& row = grid.rows.emplace_back();
        row.push_back(nameOf(each));
        for (const DrivingFigure& figure : figures)
            row.push_back(figureText(figure, each.totals, units));
    }
    if (grid.rows.empty())
        return;
    report.blocks.emplace_back(Heading{std::move(heading)});
    report.blocks.emplace_back(std::move(grid));
}

} // namespace

std::span<const ParameterFigure> parameterFigures() { return kParameterFigures; }

std::string parameterText(const ParameterFigure& figure, const MonitoredParameter& parameter, const TUnitSystem& units,
                          bool cell) {
    const double value = parameter.*figure.value;
    if (!hasValue(value))
        return {};
    if (figure.time)
        return durationText(std::llround(value));
    const UnitTypeId unit = unitTypeOfParameter(parameter.parameter);
    return cell ? units.formatValue(unit, value) : units.formatValueWithUnits(unit, value);
}

ShownText nameOf(const DrivingGroup& group) {
    return group.name.empty() ? text(TextId::StatisticsUnknown) : ShownText::asItIs(oneLine(group.name));
}

ShownText nameOf(const DrivingMonth& month) {
    const ShownText name = ShownText::asItIs(text(monthName(month.month)) + ' ' + std::to_string(month.year));
    return month.unfinished ? text(TextId::StatisticsUnfinished, name) : name;
}

ShownText changeText(std::optional<double> change) {
    return ShownText::asItIs(change ? fmt::format("{:+}%", wholePercent(*change)) : std::string());
}

ShownText drivingTitle(const DrivingStatistics& statistics, const DrivingChoice& choice) {
    ShownText title = choice.month    ? nameOf(DrivingMonth{choice.month->year, choice.month->month, false, {}})
                      : choice.period ? text(choice.period->text)
                                      : text(TextId::StatisticsAllTrips);
    return statistics.unfinished ? text(TextId::StatisticsUnfinished, title) : title;
}

ShownText drivingTitle(const DrivingStatistics& statistics, const DrivingChoice& choice, const TextContext& context) {
    ShownText title = drivingTitle(statistics, choice);
    const auto day = [&](std::int64_t time) {
        return dateText(context.units, context.zone.toLocal(static_cast<std::int32_t>(time)));
    };
    if (const auto& [from, until] = statistics.time; !choice.month && from && until)
        title = text(TextId::WithAside, title, text(TextId::TypeReportFromTo, day(*from), day(*until - 1)));
    for (const auto& [key, groups] :
         {std::pair(&choice.vehicle, &statistics.vehicles), std::pair(&choice.driver, &statistics.drivers)})
        if (*key)
            if (const auto of = std::ranges::find(*groups, **key, &DrivingGroup::key); of != groups->end())
                title = text(TextId::PlotAlso, title, nameOf(*of));
    return title;
}

Report drivingReport(const DrivingStatistics& statistics, ShownText title, const TUnitSystem& units) {
    Report report{std::move(title), {}};
    Grid figures{{{text(TextId::StatisticsFigure), false}, {text(TextId::StatisticsValue)}}, {}};
    if (statistics.before)
        figures.columns.push_back({text(TextId::StatisticsChange)});
    for (const DrivingFigure& figure : drivingFigures()) {
        if (figure.leftOut(statistics.totals))
            continue;
        std::vector<std::string>& row = figures.rows.emplace_back();
        row = {figureTitle(figure, units), remarkedFigure(figure, statistics.totals, units)};
        if (statistics.before)
            row.push_back(changeText(figureChange(figure, *statistics.before, statistics.totals, units)));
    }
    report.blocks.emplace_back(std::move(figures));
    addList(report, text(TextId::StatisticsMonths), text(TextId::StatisticsMonth), statistics.months, units);
    addList(report, text(TextId::StatisticsVehicles), text(TextId::FactVehicle), statistics.vehicles, units);
    addList(report, text(TextId::StatisticsDrivers), text(TextId::StatisticsDriver), statistics.drivers, units);
    if (statistics.parameters.empty())
        return report;
    Grid parameters{{{text(TextId::HeadingParameter), false}}, {}};
    for (const ParameterFigure& figure : kParameterFigures)
        parameters.columns.push_back({text(figure.title)});
    for (const MonitoredParameter& parameter : statistics.parameters) {
        std::vector<std::string>& row = parameters.rows.emplace_back();
        row.push_back(parameterChoiceName(parameter.parameter));
        for (const ParameterFigure& figure : kParameterFigures)
            row.push_back(parameterText(figure, parameter, units));
    }
    report.blocks.emplace_back(Heading{text(TextId::StatisticsParameters)});
    report.blocks.emplace_back(std::move(parameters));
    return report;
}

} // namespace quobrix
