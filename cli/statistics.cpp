#include "cli/statistics.h"

#include "base/fold_case.h"
#include "base/path_text.h"
#include "cli/opened_document.h"
#include "cli/units.h"
#include "export/csv.h"
#include "export/json_text.h"
#include "model/parameters.h"
#include "report/render.h"
#include "summary/driving_report.h"
#include "summary/driving_rows.h"
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

/// The key of the one of GROUPS that WANTED names, by key or name in any case. Nothing, which is told, for none, which
/// NONE says, and for several.
std::optional<std::string> keyNamed(const std::vector<DrivingGroup>& groups, const std::string& wanted,
                                    TextOf<1> none) {
    const auto is = [folded = foldCase(wanted)](const std::string& text) { return foldCase(text) == folded; };
    if (const auto key = std::ranges::find_if(groups, is, &DrivingGroup::key); key != groups.end())
        return key->key;
    const auto name = std::ranges::find_if(groups, is, &DrivingGroup::name);
    if (name == groups.end())
        complain(text(none, wanted));
    else if (std::ranges::any_of(name + 1, groups.end(), is, &DrivingGroup::name))
        complain(text(TextId::CliSeveralOfThatName, wanted));
    else
        return name->key;
    return {};
}

std::string csvOf(const DrivingStatistics& statistics, const TUnitSystem& units) {
    const DrivingRow headings = drivingHeadings();
    std::string lines = csvRow({headings.begin(), headings.end()});
    for (DrivingRow& row : drivingRows(statistics, units)) {
        row[1] = csvWords(row[1]); // a name is what a person has written
        lines += csvRow({row.begin(), row.end()});
    }
    return lines;
}

std::string jsonReal(std::optional<double> value) {
    return value && hasValue(*value) && std::isfinite(*value) ? jsonNumber(*value) : "null";
}

JsonObject jsonOf(const DrivingTotals& totals) {
    JsonObject object;
    for (const DrivingFigure& figure : drivingFigures())
        object.add(figure.key, jsonReal(figure.value(totals)));
    for (const auto& [key, count] :
         {std::pair("watchedTrips", totals.watchedTrips), std::pair("fuelTrips", totals.fuelTrips),
          std::pair("unpricedFills", totals.unpricedFills)})
        object.add(key, jsonNumber(static_cast<std::int64_t>(count)));
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
                for (const ParameterFigure& figure : parameterFigures())
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
    OpenedDocument opened;
    if (!options.file.empty() && !opened.open(options.file))
        return kFailed;
    TQuobrixDocument& document = opened.document();
    std::vector<FuelFill> fills;
    if (const TFuelEntryTable* entries = options.file.empty() ? nullptr : document.fuelEntries())
        fills = entries->fills();
    const auto named = [&](std::vector<DrivingGroup> groups, const NamesTable& names) {
        rename(groups, names);
        return groups;
    };
    SummaryRows all;
    for (const SummaryRecord& record : *records)
        all.push_back(&record);
    DrivingChoice choice;
    if (!options.period.empty())
        choice.period = &*std::ranges::find(periods(), std::string_view(options.period), &Period::name);
    if (options.vehicle && !(choice.vehicle = keyNamed(named(byVehicle(all), document.vehicles()), *options.vehicle,
                                                       TextId::CliNoSuchVehicle)))
        return kFailed;
    if (options.driver &&
        !(choice.driver = keyNamed(named(byDriver(all), document.drivers()), *options.driver, TextId::CliNoSuchDriver)))
        return kFailed;
    const TextContext context = units.context();
    DrivingStatistics result = drivingStatistics(*records, choice, currentTime(), context.zone, fills);
    rename(result.vehicles, document.vehicles());
    rename(result.drivers, document.drivers());
    tellApart(result.vehicles);
    tellApart(result.drivers);
    Output output;
    if (options.format == "json")
        output.putData(jsonOf(result));
    else if (options.format == "csv") {
        TUnitSystem plain(csvLocale());
        plain.replace(context.units.choices());
        output.putData(csvOf(result, plain));
    } else if (!tellsAnything(result.totals))
        output.put(ShownText::asItIs(text(TextId::StatisticsNone) + "\n"));
    else {
        output.put(
            ShownText::asItIs(renderText(drivingReport(result, drivingTitle(result, choice, context), context.units))));
    }
    return output.finish(options.file.empty() ? kDone : opened.completeness());
}

} // namespace quobrix::cli
