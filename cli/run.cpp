#include "cli/run.h"

#include "cli/check.h"
#include "cli/compact.h"
#include "cli/configure.h"
#include "cli/describe.h"
#include "cli/download.h"
#include "cli/exporting.h"
#include "cli/option_prompter.h"
#include "cli/plotting.h"
#include "cli/printing.h"
#include "cli/readiness.h"
#include "cli/reading.h"
#include "cli/statistics.h"
#include "cli/trip_types.h"
#include "cli/writing.h"
#include "model/record_filter.h"
#include "texts/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <utility>

namespace quobrix::cli {
namespace {

constexpr SourceText kFooter(
    "Exit codes:\n"
    "  0  done; for check: the document is sound\n"
    "  1  failed, one line on standard error says why; for check: the document is damaged\n"
    "  2  wrong usage, an unknown unit system, or a format that this version was built without\n"
    "  3  done, but parts of the document could not be read (check: a later version has written\n"
    "     it; check --repair: not all is in the new document), or the saved file may not survive a power cut, or a "
    "file was written but\n"
    "     the result could not be printed; for list and export: one of several documents could not be read, or a text\n"
    "     was cut; for download: saved, but some records were refused, a\n"
    "     part of the logger's memory could not be read, or the logger was not cleared or its clock\n"
    "     not set as asked\n"
    "Reading commands change nothing. No command waits for a person.\n"
    "QUOBRIX_LIBRARY names the logger library, or its folder; TZ the time zone of times.");

const std::map<std::string, Format> kFormats = {{"table", Format::Table}, {"csv", Format::Csv}, {"json", Format::Json}};

/// The words of the help that the parser of options has of its own.
void translateHelp(CLI::FormatterBase& help) {
    struct Word {
        const char* english;
        TextOf<0> id;
    };
    constexpr Word kWords[] = {
        {"Usage", TextId::CliHelpWordUsage},       {"Positionals", TextId::CliHelpWordPositionals},
        {"OPTIONS", TextId::CliHelpWordOptions},   {"SUBCOMMAND", TextId::CliHelpWordSubcommand},
        {"REQUIRED", TextId::CliHelpWordRequired}, {"Needs", TextId::CliHelpWordNeeds},
        {"Excludes", TextId::CliHelpWordExcludes}, {"TEXT", TextId::CliHelpWordText},
    };
    for (const auto& [word, id] : kWords)
        help.label(word, text(id));
}

} // namespace

ExitCode run(const ProgramArguments& arguments) {
    CLI::App app(text(TextId::CliDescription), "quobrix-cli");
    app.allow_windows_style_options(false); // a file may be called "/…"
    translateHelp(*app.get_formatter());
    app.option_defaults()->group(text(TextId::CliGroupOptions));
    app.set_help_flag("-h,--help", text(TextId::CliHelpHelp));
    app.set_version_flag("--version", "quobrix-cli " QUOBRIX_VERSION, text(TextId::CliHelpVersion));
    app.footer(text(kFooter));
    app.require_subcommand(1);

    const auto subcommand = [&app](const char* name, TextOf<0> what) -> CLI::App& {
        CLI::App& command = *app.add_subcommand(name, text(what))->group(text(TextId::CliGroupSubcommands));
        command.set_help_flag("-h,--help", text(TextId::CliHelpHelp));
        return command;
    };

    const auto file = [](CLI::App& command, std::string& target) {
        command.add_option("file", target, text(TextId::CliHelpFile))->required();
    };
    const auto units = [](CLI::App& command, std::optional<std::string>& target) {
        command.add_option("--units", target, text(TextId::CliHelpUnits));
    };

    const auto intake = [](CLI::App& command, IntakeOptions& target) {
        command.add_option("--into", target.file, text(TextId::CliHelpDownloadInto))->required();
        command.add_option("--vehicle", target.vehicle, text(TextId::CliHelpVehicle));
        command.add_option("--yes-to", target.yesTo, text(TextId::CliHelpYesTo))
            ->check(CLI::IsMember(questionKeys()))
            ->type_name(text(TextId::CliHelpWordQuestion));
    };
    DownloadOptions downloadOptions;
    CLI::App& downloadCommand = subcommand("download", TextId::CliHelpDownload);
    downloadCommand.add_option("--port", downloadOptions.port, text(TextId::CliHelpPort));
    intake(downloadCommand, downloadOptions);
    std::string clock = "logger";
    downloadCommand.add_option("--time", clock, text(TextId::CliHelpTime))
        ->check(CLI::IsMember({"logger", "computer"}))
        ->type_name(text(TextId::CliHelpWordText));
    downloadCommand.add_flag("--clear", downloadOptions.clear, text(TextId::CliHelpClear));
    downloadCommand.add_flag("--set-clock", downloadOptions.setClock, text(TextId::CliHelpSetClock));

    ImportOptions importOptions;
    CLI::App& importCommand = subcommand("import", TextId::CliHelpImport);
    importCommand.add_option("logs", importOptions.logs, text(TextId::CliHelpImportFile))->required();
    intake(importCommand, importOptions);

    const auto selection = [](CLI::App& command, SelectionOptions& target) {
        command.add_option("file", target.files, text(TextId::CliHelpFiles))->required();
        command.add_option("--find", target.find, text(TextId::CliHelpFind));
        CLI::Option& from = *command.add_option("--from", target.from, text(TextId::CliHelpFrom));
        CLI::Option& to = *command.add_option("--to", target.to, text(TextId::CliHelpTo));
        std::vector<std::string> names;
        for (const Period& period : periods())
            names.emplace_back(period.name);
        command.add_option("--period", target.period, text(TextId::CliHelpPeriod))
            ->check(CLI::IsMember(names))
            ->type_name(text(TextId::CliHelpWordText))
            ->excludes(&from)
            ->excludes(&to);
        command.add_option("--vehicle", target.vehicle, text(TextId::CliHelpOfVehicle));
        command.add_option("--driver", target.driver, text(TextId::CliHelpOfDriver));
        command.add_option("--logger", target.logger, text(TextId::CliHelpOfLogger));
        command.add_flag("--once", target.once, text(TextId::CliHelpOnce));
    };
    const auto log = [](CLI::App& command, std::string& target, const std::vector<std::string>& names, TextOf<0> what) {
        command.add_option("log", target, text(what))
            ->required()
            ->check(CLI::IsMember(names))
            ->type_name(text(TextId::CliHelpWordText));
    };
    ListOptions listOptions;
    CLI::App& listCommand = subcommand("list", TextId::CliHelpList);
    log(listCommand, listOptions.log, logNames(), TextId::CliHelpLog);
    selection(listCommand, listOptions);
    listCommand.add_flag("--samples", listOptions.samples, text(TextId::CliHelpSamples));
    std::string format = "table";
    listCommand.add_option("--format", format, text(TextId::CliHelpListFormat))
        ->check(CLI::IsMember({"table", "csv", "json"}))
        ->type_name(text(TextId::CliHelpWordText));
    units(listCommand, listOptions.units);

    ExportOptions exportOptions;
    CLI::App& exportCommand = subcommand("export", TextId::CliHelpExport);
    std::vector<std::string> exported = logNames();
    for (const std::string& record : recordNames())
        if (std::ranges::find(exported, record) == exported.end())
            exported.push_back(record);
    exported.emplace_back(kFuelEntries);
    log(exportCommand, exportOptions.log, exported, TextId::CliHelpExportWhat);
    selection(exportCommand, exportOptions);
    exportCommand.add_option("-o,--out", exportOptions.out, text(TextId::CliHelpOut))->required();
    exportCommand.add_option("--format", exportOptions.format, text(TextId::CliHelpExportFormat))
        ->check(CLI::IsMember(namesOf(kExportFormats)))
        ->type_name(text(TextId::CliHelpWordText));
    exportCommand.add_flag("--samples", exportOptions.samples, text(TextId::CliHelpSamples));
    units(exportCommand, exportOptions.units);

    ColumnsOptions columnsOptions;
    CLI::App& columnsCommand = subcommand("columns", TextId::CliHelpColumns);
    log(columnsCommand, columnsOptions.log, logNames(), TextId::CliHelpLog);
    std::string columnsFormat = "table";
    columnsCommand.add_option("--format", columnsFormat, text(TextId::CliHelpColumnsFormat))
        ->check(CLI::IsMember({"table", "json"}))
        ->type_name(text(TextId::CliHelpWordText));

    ReportOptions reportOptions;
    CLI::App& reportCommand = subcommand("report", TextId::CliHelpReport);
    reportCommand.add_option("record", reportOptions.record, text(TextId::CliHelpReportKind))
        ->required()
        ->check(CLI::IsMember(recordNames()))
        ->type_name(text(TextId::CliHelpWordText));
    reportCommand.add_option("number", reportOptions.number, text(TextId::CliHelpNumber))->required();
    file(reportCommand, reportOptions.file);
    reportCommand.add_option("-o,--out", reportOptions.out, text(TextId::CliHelpReportOut));
    reportCommand.add_option("--format", reportOptions.format, text(TextId::CliHelpReportFormat))
        ->check(CLI::IsMember(namesOf(kReportFormats)))
        ->type_name(text(TextId::CliHelpWordText));
    units(reportCommand, reportOptions.units);

    PrintOptions printOptions;
    CLI::App& printCommand = subcommand("print", TextId::CliHelpPrint);
    log(printCommand, printOptions.log, logNames(), TextId::CliHelpLog);
    selection(printCommand, printOptions);
    printCommand.add_option("--records", printOptions.records, text(TextId::CliHelpRecords));
    printCommand.add_option("-o,--out", printOptions.out, text(TextId::CliHelpOut))->required();
    printCommand.add_option("--format", printOptions.format, text(TextId::CliHelpPrintFormat))
        ->check(CLI::IsMember(namesOf(kPrintFormats)))
        ->type_name(text(TextId::CliHelpWordText));
    units(printCommand, printOptions.units);

    PlottingOptions plottingOptions;
    CLI::App& plotCommand = subcommand("plot", TextId::CliHelpPlot);
    log(plotCommand, plottingOptions.record, plottedRecordNames(), TextId::CliHelpPlotKind);
    plotCommand.add_option("file", plottingOptions.files, text(TextId::CliHelpPlotFiles))->required();
    plotCommand.add_option("-o,--out", plottingOptions.out, text(TextId::CliHelpPlotOut))->required();
    plotCommand.add_option("--format", plottingOptions.format, text(TextId::CliHelpPlotFormat))
        ->check(CLI::IsMember(namesOf(kPlotFormats)))
        ->type_name(text(TextId::CliHelpWordText));
    plotCommand.add_option("--size", plottingOptions.size, text(TextId::CliHelpPlotSize));
    plotCommand.add_option("--from", plottingOptions.from, text(TextId::CliHelpPlotFrom));
    plotCommand.add_option("--to", plottingOptions.to, text(TextId::CliHelpPlotTo));
    CLI::Option& lines = *plotCommand.add_flag("--lines", plottingOptions.lines, text(TextId::CliHelpPlotLines));
    plotCommand.add_flag("--areas", plottingOptions.areas, text(TextId::CliHelpPlotAreas))->excludes(&lines);
    plotCommand.add_option("--normalize", plottingOptions.normalize, text(TextId::CliHelpPlotNormalize));
    const auto eitherWay = [](std::optional<bool>& choice) { return [&choice](auto times) { choice = times > 0; }; };
    plotCommand.add_flag_function("--bands,!--no-bands", eitherWay(plottingOptions.bands),
                                  text(TextId::CliHelpPlotBands));
    plotCommand.add_flag_function("--events,!--no-events", eitherWay(plottingOptions.events),
                                  text(TextId::CliHelpPlotEvents));
    plotCommand.add_option("--by", plottingOptions.by, text(TextId::CliHelpPlotBy))
        ->check(CLI::IsMember({"time", "distance"}))
        ->type_name(text(TextId::CliHelpWordText));
    units(plotCommand, plottingOptions.units);

    StatisticsOptions statisticsOptions;
    CLI::App& statisticsCommand = subcommand("statistics", TextId::CliHelpStatistics);
    std::vector<std::string> periodNames;
    for (const Period& period : periods())
        periodNames.emplace_back(period.name);
    statisticsCommand.add_option("file", statisticsOptions.file, text(TextId::CliHelpStatisticsFile));
    statisticsCommand.add_option("--period", statisticsOptions.period, text(TextId::CliHelpStatisticsPeriod))
        ->check(CLI::IsMember(periodNames))
        ->type_name(text(TextId::CliHelpWordText));
    statisticsCommand.add_option("--vehicle", statisticsOptions.vehicle, text(TextId::CliHelpStatisticsVehicle));
    statisticsCommand.add_option("--driver", statisticsOptions.driver, text(TextId::CliHelpStatisticsDriver));
    statisticsCommand.add_option("--database", statisticsOptions.database, text(TextId::CliHelpStatisticsDatabase));
    statisticsCommand.add_option("--format", statisticsOptions.format, text(TextId::CliHelpStatisticsFormat))
        ->check(CLI::IsMember({"text", "csv", "json"}))
        ->type_name(text(TextId::CliHelpWordText));
    units(statisticsCommand, statisticsOptions.units);

    TripTypeOptions tripTypeOptions;
    tripTypeOptions.log = logSpec(LogId::Trips).name;
    CLI::App& tripTypesCommand = subcommand("trip-types", TextId::CliHelpTripTypes);
    selection(tripTypesCommand, tripTypeOptions);
    tripTypesCommand.add_option("--type", tripTypeOptions.type, text(TextId::CliHelpTripType));
    tripTypesCommand.add_option("-o,--out", tripTypeOptions.out, text(TextId::CliHelpReportOut));
    tripTypesCommand.add_option("--format", tripTypeOptions.format, text(TextId::CliHelpTripTypesFormat))
        ->check(CLI::IsMember(namesOf(kTripTypeFormats)))
        ->type_name(text(TextId::CliHelpWordText));
    units(tripTypesCommand, tripTypeOptions.units);

    ReadinessOptions readinessOptions;
    CLI::App& readinessCommand = subcommand("readiness", TextId::CliHelpReadiness);
    file(readinessCommand, readinessOptions.file);
    readinessCommand.add_option("--vehicle", readinessOptions.vehicle, text(TextId::CliHelpReadinessVehicle));
    readinessCommand.add_option("-o,--out", readinessOptions.out, text(TextId::CliHelpReportOut));
    readinessCommand.add_option("--format", readinessOptions.format, text(TextId::CliHelpReportFormat))
        ->check(CLI::IsMember(namesOf(kReportFormats)))
        ->type_name(text(TextId::CliHelpWordText));
    units(readinessCommand, readinessOptions.units);

    std::vector<std::string> codes;
    CLI::App& describeCommand = subcommand("describe", TextId::CliHelpDescribe);
    describeCommand.add_option("code", codes, text(TextId::CliHelpCode))->required();

    CheckOptions checkOptions;
    CLI::App& checkCommand = subcommand("check", TextId::CliHelpCheck);
    file(checkCommand, checkOptions.file);
    CLI::Option& repair = *checkCommand.add_flag("--repair", checkOptions.repair, text(TextId::CliHelpRepair));
    CLI::Option& into = *checkCommand.add_option("--into", checkOptions.into, text(TextId::CliHelpRepairInto));
    repair.needs(&into);
    into.needs(&repair);
    checkCommand.add_flag("--force", checkOptions.force, text(TextId::CliHelpForce))->needs(&into);

    std::string compactedFile;
    CLI::App& compactCommand = subcommand("compact", TextId::CliHelpCompact);
    file(compactCommand, compactedFile);

    ConfigureOptions configureOptions;
    CLI::App& configureCommand = subcommand("configure", TextId::CliHelpConfigure);
    configureCommand.add_option("--port", configureOptions.port, text(TextId::CliHelpPort));
    CLI::Option& saveOption = *configureCommand.add_option("--save", configureOptions.save, text(TextId::CliHelpSave));
    CLI::Option& loadOption = *configureCommand.add_option("--load", configureOptions.load, text(TextId::CliHelpLoad));
    CLI::Option& defaultsOption =
        *configureCommand.add_flag("--defaults", configureOptions.defaults, text(TextId::CliHelpDefaults));
    saveOption.excludes(&loadOption)->excludes(&defaultsOption);
    loadOption.excludes(&defaultsOption);
    configureCommand.add_flag("--force", configureOptions.force, text(TextId::CliHelpForce))->needs(&saveOption);

    try {
        app.parse(arguments.count(), arguments.texts().data());
    } catch (const CLI::CallForHelp&) {
        Output output;
        output.put(ShownText::asItIs(app.help()));
        return output.finish(kDone);
    } catch (const CLI::CallForVersion& version) {
        Output output;
        output.put(ShownText::asItIs(std::string(version.what()) + "\n"));
        return output.finish(kDone);
    } catch (const CLI::ParseError& error) {
        const std::vector<std::string> unknown = app.remaining();
        const bool unknownCommand = app.get_subcommands().empty() && !unknown.empty();
        complain(text(TextId::CliSeeHelp,
                      unknownCommand ? text(TextId::CliNoSuchCommand, unknown.front()) : std::string(error.what())));
        return kUsage;
    }
    if (downloadCommand) {
        downloadOptions.computerTime = clock == "computer";
        return download(downloadOptions);
    }
    if (importCommand)
        return importLogs(importOptions);
    if (configureCommand)
        return configure(configureOptions);
    if (listCommand) {
        listOptions.format = kFormats.at(format);
        return list(listOptions);
    }
    if (exportCommand)
        return exportRecords(exportOptions);
    if (columnsCommand) {
        columnsOptions.json = columnsFormat == "json";
        return columns(columnsOptions);
    }
    if (reportCommand)
        return report(reportOptions);
    if (printCommand)
        return print(printOptions);
    if (plotCommand)
        return plot(plottingOptions);
    if (statisticsCommand)
        return statistics(statisticsOptions);
    if (tripTypesCommand)
        return tripTypes(tripTypeOptions);
    if (readinessCommand)
        return readiness(readinessOptions);
    if (describeCommand)
        return describe(codes);
    if (compactCommand)
        return compact(compactedFile);
    return check(checkOptions);
}

} // namespace quobrix::cli
