#include "cli/exporting.h"

#include "base/path_text.h"
#include "cli/writing.h"
#include "export/export_file.h"
#include "export/xlsx.h"
#include "messages/file_messages.h"
#include "model/record_totals.h"
#include "platform/file_system.h"
#include "texts/text.h"

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

} // namespace

ExitCode exportRecords(const ExportOptions& options) {
    const auto log = std::ranges::find(logs(), std::string_view(options.log), &LogSpec::name);
    const auto recordLog = std::ranges::find(logs(), std::string_view(options.log), &LogSpec::recordName);
    // The activity log and a record of it are called the same: "activity 1 FILE" asks for a record.
    const bool ofOneRecord =
        log == logs().end() || (log == recordLog && options.files.size() == 2 &&
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
    if (ofOneRecord) {
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
        [&] { return ofOneRecord ? document.completeness() : selection.completeness(); }, count);
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
