#include "cli/statistics.h"

#include "base/fold_case.h"
#include "base/path_text.h"
#include "cli/units.h"
#include "export/csv.h"
#include "export/json_text.h"
#include "model/parameters.h"
#include "report/render.h"
#include "summary/driving_figures.h"
#include "summary/summary_database.h"
#include "texts/text.h"
#include "units/date_time.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace quobrix::cli {
namespace {

Result<std::vector<SummaryRecord>> readRecords(const std::filesystem::path& path) {
    SummaryDatabase database;
    QUOBRIX_TRY(database.open(path, SummaryDatabase::Access::Read));
    return database.readAll();
}

void complainOf(const Error& error, const std::filesystem::path& path) {
    if (path.empty() || error.kind == ErrorKind::NotFound)
        complain(text(TextId::CliNoSummaryDatabase, utf8(path)));
    else
        complain(summaryProblem(error, path));
}

/// The key of the one of GROUPS that WANTED names, by key or name in any case.
std::optional<std::string> keyNamed(const std::vector<DrivingGroup>& groups, std::string_view wanted) {
    const auto found = std::ranges::find_if(groups, [&](const DrivingGroup& group) {
        return foldCase(group.key) == foldCase(wanted) || foldCase(group.name) == foldCase(wanted);
    });
    return found != groups.end() ? std::optional(found->key) : std::nullopt;
}

ShownText nameOf(const DrivingGroup& group) {
    return group.name.empty() ? text(TextId::StatisticsUnknown) : ShownText::asItIs(oneLine(group.name));
}

ShownText nameOf(const DrivingMonth& month) {
    const ShownText name = ShownText::asItIs(text(monthName(month.month)) + ' ' + std::to_string(month.year));
    return month.unfinished ? text(TextId::StatisticsUnfinished, name) : name;
}

ShownText changeText(std::optional<double> change) {
    return ShownText::asItIs(change ? fmt::format("{:+}%", std::lround(*change * 100)) : std::string());
}

/// What is made of few trips says so.
ShownText valueText(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units) {
    const ShownText value = figureText(figure, totals, units);
    return !value.empty() && figure.ofFewTrips(totals) ? text(TextId::StatisticsFewTrips, value) : value;
}

struct ParameterFigure {
    std::string_view key;
    SourceText title;
    double MonitoredParameter::*value;
    bool time;
};
constexpr ParameterFigure kParameterFigures[] = {
    {"threshold", SourceText("Threshold"), &MonitoredParameter::threshold, false},
    {"timeOver", SourceText("Time Over Thresh"), &MonitoredParameter::timeOver, true},
    {"timeUnder", SourceText("Time Under Thresh"), &MonitoredParameter::timeUnder, true},
    {"highest", SourceText("High Above Thresh"), &MonitoredParameter::highest, false},
    {"lowest", SourceText("Low Below Thresh"), &MonitoredParameter::lowest, false},
};

/// With its unit, or as a CELL below one.
std::string parameterText(const ParameterFigure& figure, const MonitoredParameter& parameter, const TUnitSystem& units,
                          bool cell = false) {
    const double value = parameter.*figure.value;
    if (!hasValue(value))
        return {};
    if (figure.time)
        return durationText(std::llround(value));
    const UnitTypeId unit = unitTypeOfParameter(parameter.parameter);
    return cell ? units.formatValue(unit, value) : units.formatValueWithUnits(unit, value);
}

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

Report reportOf(const DrivingStatistics& statistics, ShownText title, const TUnitSystem& units) {
    Report report{std::move(title), {}};
    Grid figures{{{text(TextId::StatisticsFigure), false}, {text(TextId::StatisticsValue)}}, {}};
    if (statistics.before)
        figures.columns.push_back({text(TextId::StatisticsChange)});
    for (const DrivingFigure& figure : drivingFigures()) {
        std::vector<std::string>& row = figures.rows.emplace_back();
        row = {figureTitle(figure, units), valueText(figure, statistics.totals, units)};
        if (statistics.before)
            row.push_back(changeText(figureChange(figure, *statistics.before, statistics.totals)));
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

std::string csvOf(const DrivingStatistics& statistics, const TUnitSystem& units) {
    std::string lines =
        csvRow({text(TextId::StatisticsOf), text(TextId::StatisticsName), text(TextId::StatisticsFigure),
                text(TextId::StatisticsValue), text(TextId::WithAside, text(TextId::StatisticsChange), "%"),
                text(TextId::StatisticsNumberOfTrips)});
    // Who reads a rate of few trips is to know.
    const auto change = [](std::optional<double> part) {
        return ShownText::asItIs(part ? std::to_string(std::lround(*part * 100)) : std::string());
    };
    const auto add = [&](const ShownText& what, const std::string& name, const DrivingTotals& totals,
                         const DrivingTotals* before) {
        if (totals.trips == 0)
            return;
        for (const DrivingFigure& figure : drivingFigures())
            lines += csvRow({what, csvWords(name), figureHeading(figure, units), figureCell(figure, totals, units),
                             change(before ? figureChange(figure, *before, totals) : std::nullopt),
                             std::to_string(totals.trips)});
    };
    add(text(TextId::StatisticsAll), {}, statistics.totals, statistics.before ? &*statistics.before : nullptr);
    for (const DrivingMonth& month : statistics.months)
        add(text(TextId::StatisticsMonth), nameOf(month), month.totals, nullptr);
    for (const DrivingGroup& vehicle : statistics.vehicles)
        add(text(TextId::FactVehicle), nameOf(vehicle), vehicle.totals, nullptr);
    for (const DrivingGroup& driver : statistics.drivers)
        add(text(TextId::StatisticsDriver), nameOf(driver), driver.totals, nullptr);
    for (const MonitoredParameter& parameter : statistics.parameters)
        for (const ParameterFigure& figure : kParameterFigures)
            lines += csvRow(
                {text(TextId::HeadingParameter), parameterChoiceName(parameter.parameter),
                 figure.time ? text(figure.title)
                             : text(TextId::WithAside, text(figure.title),
                                    text(unitRecord(units.unit(unitTypeOfParameter(parameter.parameter))).shownName)),
                 parameterText(figure, parameter, units, true), std::string(), std::to_string(parameter.trips)});
    return lines;
}

std::string jsonReal(std::optional<double> value) {
    return value && hasValue(*value) && std::isfinite(*value) ? jsonNumber(*value) : "null";
}

JsonObject jsonOf(const DrivingTotals& totals) {
    JsonObject object;
    for (const DrivingFigure& figure : drivingFigures())
        object.add(figure.key, jsonReal(figure.value(totals)));
    object.add("fewTrips", totals.trips < kFewTrips ? "true" : "false");
    return object;
}

std::string jsonOf(const DrivingStatistics& statistics) {
    const auto time = [](std::optional<std::int64_t> seconds) { return seconds ? jsonNumber(*seconds) : "null"; };
    const auto group = [](const DrivingGroup& each) {
        JsonObject object;
        object.add("key", jsonText(each.key));
        object.add("name", jsonText(each.name));
        object.add("figures", jsonOf(each.totals).text());
        return object.text();
    };
    JsonObject all;
    all.add("from", time(statistics.time.from));
    all.add("until", time(statistics.time.until));
    all.add("unfinished", statistics.unfinished ? "true" : "false");
    all.add("figures", jsonOf(statistics.totals).text());
    all.add("before", statistics.before ? jsonOf(*statistics.before).text() : "null");
    all.add("months", jsonArray(statistics.months, [](const DrivingMonth& month) {
                JsonObject object;
                object.add("month", jsonText(fmt::format("{}-{:02}", month.year, month.month)));
                object.add("unfinished", month.unfinished ? "true" : "false");
                object.add("figures", jsonOf(month.totals).text());
                return object.text();
            }));
    all.add("vehicles", jsonArray(statistics.vehicles, group));
    all.add("drivers", jsonArray(statistics.drivers, group));
    all.add("parameters", jsonArray(statistics.parameters, [](const MonitoredParameter& parameter) {
                JsonObject object;
                object.add("parameter", jsonNumber(parameter.parameter));
                object.add("trips", jsonNumber(parameter.trips));
                for (const ParameterFigure& figure : kParameterFigures)
                    object.add(figure.key, jsonReal(parameter.*figure.value));
                return object.text();
            }));
    return all.text() + "\n";
}

} // namespace

ExitCode statistics(const StatisticsOptions& options) {
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;
    const std::filesystem::path path =
        options.database.empty() ? summaryDatabasePath() : pathFromUtf8(options.database);
    const Result<std::vector<SummaryRecord>> records = readRecords(path);
    if (!records) {
        complainOf(records.error(), path);
        return kFailed;
    }
    SummaryRows all;
    for (const SummaryRecord& record : *records)
        all.push_back(&record);
    DrivingChoice choice;
    if (!options.period.empty())
        choice.period = &*std::ranges::find(periods(), std::string_view(options.period), &Period::name);
    if (options.vehicle && !(choice.vehicle = keyNamed(byVehicle(all), *options.vehicle))) {
        complain(text(TextId::CliNoSuchVehicle, *options.vehicle));
        return kFailed;
    }
    if (options.driver && !(choice.driver = keyNamed(byDriver(all), *options.driver))) {
        complain(text(TextId::CliNoSuchDriver, *options.driver));
        return kFailed;
    }
    const TextContext context = units.context();
    const DrivingStatistics result = drivingStatistics(*records, choice, currentTime(), context.zone);
    Output output;
    if (options.format == "json")
        output.putData(jsonOf(result));
    else if (options.format == "csv") {
        TUnitSystem plain(csvLocale());
        plain.replace(context.units.choices());
        output.putData(csvOf(result, plain));
    } else if (result.totals.trips == 0)
        output.put(ShownText::asItIs(text(TextId::StatisticsNone) + "\n"));
    else {
        ShownText title = choice.period ? text(choice.period->text) : text(TextId::StatisticsAllTrips);
        output.put(ShownText::asItIs(renderText(
            reportOf(result, result.unfinished ? text(TextId::StatisticsUnfinished, title) : title, context.units))));
    }
    return output.finish(kDone);
}

} // namespace quobrix::cli
