#include "cli/trip_types.h"

#include "base/fold_case.h"
#include "cli/exporting.h"
#include "cli/printing.h"
#include "cli/record_writer.h"
#include "cli/writing.h"
#include "export/trip_type_rows.h"
#include "export/xlsx.h"
#include "messages/file_messages.h"
#include "model/fuel_entries.h"
#include "model/record_totals.h"
#include "model/trip_type_report.h"
#include "texts/text.h"

#include <algorithm>
#include <utility>

namespace quobrix::cli {
namespace {

/// Keeps the trips of the type that is WANTED; complains if there is none of that name.
bool keepWanted(const std::string& wanted, TripTypeReport& report) {
    const std::vector<std::string> names = occurringTypes(report.trips, report.types);
    for (TableRows& part : report.trips)
        keepType(part.rows, *part.table, wanted);
    if (wanted.empty() ||
        std::ranges::any_of(names, [&](const auto& name) { return foldCase(name) == foldCase(wanted); }))
        return true;
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : ", ") + name;
    complain(text(TextId::CliNoSuchTripType, wanted, all.empty() ? text(TextId::CliNoTripTypes) : all));
    return false;
}

} // namespace

ExitCode tripTypes(const TripTypeOptions& options) {
    if (!options.out.empty() && !mayReplace(options.out, options.files))
        return kUsage;
    const std::optional<FileFormat> format = chosenFormat(options.format, options.out, kTripTypeFormats);
    if (!format)
        return kUsage;
    if (format == FileFormat::Xlsx && (options.out.empty() || !canWriteXlsx())) {
        complain(options.out.empty() ? text(TextId::CliXlsxNeedsOut) : text(TextId::ExportNoXlsx));
        return kUsage;
    }
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;
    Result<TripTypes> types = loadTripTypes();
    if (!types) {
        complain(textFileMessage(types.error(), kTripTypesFile).text);
        return kFailed;
    }
    Selection selection;
    if (const ExitCode code = selection.choose(options, units); code != kDone)
        return code;
    TripTypeReport report{.trips = selection.rows(), .time = selection.time(), .types = std::move(types->types)};
    report.readings = odometerReadings(report.trips);
    if (!options.period.empty())
        report.period = text(std::ranges::find(periods(), std::string_view(options.period), &Period::name)->text);
    else if (report.time == TimeRange())
        report.period = text(TextId::TypeReportAllTrips);
    if (options.type && !keepWanted(*options.type, report))
        return kFailed;
    const TextContext context = units.context();
    const ShownText what = totalsText(selection.log(), report.trips, context);
    if (std::ranges::find(kReportFormats, *format) != std::end(kReportFormats)) {
        Report shown = tripTypeReport(report, context);
        return putReport(std::move(shown), *format, options.out, selection.completeness(), what);
    }
    ExportContent content = tripTypeContent(report.trips, report.types, context.zone);
    for (std::size_t part = 0; part < content.records.size(); ++part)
        content.records[part].file = selection.fileOf(part);
    if (!options.out.empty())
        return putExport(
            content, *format, context, options.out, [&] { return selection.completeness(); }, what);
    Output output;
    writeRecords(content.records, format == FileFormat::Json ? Format::Json : Format::Csv, units,
                 [&](std::string_view bytes) { return output.putData(bytes); });
    return output.finish(selection.completeness());
}

} // namespace quobrix::cli
