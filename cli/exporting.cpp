#include "cli/exporting.h"

#include "base/path_text.h"
#include "cli/writing.h"
#include "export/export_file.h"
#include "export/xlsx.h"
#include "messages/file_messages.h"
#include "model/fuel_entries.h"
#include "model/record_totals.h"
#include "platform/file_system.h"
#include "tables/columns.h"
#include "tables/declare.h"
#include "texts/text.h"
#include "units/economy.h"
#include "units/unit_system.h"

#include <algorithm>
#include <optional>

namespace quobrix::cli {
namespace {

/// The samples of the record of LOG that OPTIONS name.
ExitCode samplesOf(const LogSpec& log, const ExportOptions& options, OpenedDocument& document, const UserUnits& units,
                   ExportContent& content, ShownText& count) {
    if (!document.open(options.files[1]))
        return kFailed;
    const std::optional<RowIndex> row = rowOf(log, options.files[0], document);
    if (!row)
        return kFailed;
    const Table& table = document.table(log);
    const RecordTable samples = log.tables(&table, row, units.context()).front();
    content = contentOf(samples);
    if (content.rowCount() == 0) {
        complain(samples.emptyText);
        return kFailed;
    }
    count = counted(TextId::CliSamples, content.rowCount(), content.rowCount());
    return kDone;
}

/// Economies as numbers of what they are shown in.
QUOBRIX_COLUMN_CLASS(ShownEconomyColumn, RealColumn, "ShownEconomyColumn", D1, "Economy", "", Computed)

/// The fuel entries of the document that OPTIONS name; for people, where no program wants base units.
ExitCode entriesOf(const ExportOptions& options, bool forPeople, OpenedDocument& document, const UserUnits& units,
                   ExportContent& content, ShownText& count) {
    const std::string& file = options.files.front();
    if (!document.open(file))
        return kFailed;
    const TFuelEntryTable* entries = document.document().fuelEntries();
    if (!entries) {
        const ExitCode code = document.completeness(); // it may be what cannot be read
        complain(text(TextId::CliNoFuelEntries, file));
        return std::max(code, kFailed);
    }
    content = {.records = {{exportColumns(*entries, Repeats::LeaveOut), allRows(*entries)}},
               .title = text(entries->spec().title)};
    for (ExportColumn& column : content.records.front().columns)
        if (forPeople && column.column == &entries->column<TFuelEntryEconomyColumn>()) {
            const TUnitSystem& shownIn = units.context().units;
            auto shown = std::make_shared<ShownEconomyColumn>();
            shown->setAll(std::vector<double>(entries->rowCount(), kNoValue));
            for (RowIndex row = 0; row < entries->rowCount(); ++row)
                if (const std::optional<FuelUse>& use = entries->uses()[row])
                    shown->set(row, shownEconomy(use->distance / use->fuel, shownIn));
            column = {shown.get(), text(TextId::WithAside, plainHeading(column.column->spec()), economyUnit(shownIn))};
            content.made.push_back(std::move(shown));
        }
    count = counted(TextId::CliFuelEntries, content.rowCount(), content.rowCount());
    return kDone;
}

} // namespace

ExitCode exportRecords(const ExportOptions& options) {
    const bool ofEntries = options.log == kFuelEntries;
    if (ofEntries && (options.files.size() != 1 || options.any() || options.samples)) {
        complain(text(TextId::CliExportOfEntries));
        return kUsage;
    }
    const auto log = std::ranges::find(logs(), std::string_view(options.log), &LogSpec::name);
    const auto recordLog = std::ranges::find(logs(), std::string_view(options.log), &LogSpec::recordName);
    // The activity log and a record of it are called the same: "activity 1 FILE" asks for a record.
    const bool ofOneRecord =
        (log == logs().end() && !ofEntries) || (log == recordLog && options.files.size() == 2 &&
                                                options.files[0].find_first_not_of("0123456789") == std::string::npos);
    if (ofOneRecord && (options.files.size() != 2 || options.any() || options.samples)) {
        complain(text(TextId::CliExportOfOneRecord, options.log));
        return kUsage;
    }
    if (ofOneRecord && !recordLog->tables) {
        complain(text(TextId::CliLogWithoutSamples, text(recordLog->title)));
        return kUsage;
    }
    if (ofOneRecord && !isNumber(options.files[0]))
        return kUsage;
    if (!mayReplace(options.out, options.files))
        return kUsage;
    const std::optional<FileFormat> format = chosenFormat(options.format, options.out, kExportFormats);
    if (!format)
        return kUsage;
    const bool json = format == FileFormat::Json, xlsx = format == FileFormat::Xlsx;
    if (!json && options.samples) {
        complain(text(TextId::CliSamplesNeedJson));
        return kUsage;
    }
    if (xlsx && !canWriteXlsx()) {
        complain(text(TextId::ExportNoXlsx));
        return kUsage;
    }
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;

    Selection selection;
    OpenedDocument document;
    ExportContent content;
    ShownText count;
    if (ofEntries) {
        if (const ExitCode code = entriesOf(options, !json, document, units, content, count); code != kDone)
            return code;
    } else if (ofOneRecord) {
        if (const ExitCode code = samplesOf(*recordLog, options, document, units, content, count); code != kDone)
            return code;
    } else {
        if (const ExitCode code = selection.choose(options, units); code != kDone)
            return code;
        content.records =
            recordsFor(selection, json ? Format::Json : Format::Csv, options.samples ? Owned::Keep : Owned::LeaveOut);
        content.title = text(log->title);
        count = totalsText(*log, selection.rows(), units.context());
    }
    return putExport(
        content, *format, units.context(), options.out,
        [&] { return ofOneRecord || ofEntries ? document.completeness() : selection.completeness(); }, count);
}

ExitCode putExport(const ExportContent& content, FileFormat format, const TextContext& context, const std::string& out,
                   const std::function<ExitCode()>& completeness, const ShownText& what) {
    const auto failed = [&](const Error& error) {
        complain(fileMessage(error, FileAction::Save, out).text);
        return kFailed;
    };
    if (format == FileFormat::Xlsx && content.rowCount() > kMostXlsxRecords) {
        complain(text(TextId::CliTooManyForXlsx, kMostXlsxRecords, content.rowCount()));
        return kFailed;
    }
    Result<ReplacementFile> file = ReplacementFile::create(pathFromUtf8(out));
    if (!file)
        return failed(file.error());
    const Result<std::size_t> cut = writeExport(content, format, context, *file);
    if (!cut)
        return failed(cut.error());
    ExitCode code = completeness();
    if (*cut > 0) {
        complain(counted(TextId::CliTextsCut, *cut, *cut, out));
        code = kIncomplete;
    }
    if (const Result<void> committed = file->commit(); !committed) {
        failed(committed.error());
        if (committed.error().kind != ErrorKind::NotDurable)
            return kFailed;
        code = kIncomplete;
    }
    Output output;
    output.put(text(TextId::CliExported, out, what));
    return output.finish(code, text(TextId::CliHasBeenWritten, out));
}

} // namespace quobrix::cli
