#include "cli/exporting.h"

#include "base/fold_case.h"
#include "base/path_text.h"
#include "cli/writing.h"
#include "export/xlsx.h"
#include "messages/file_messages.h"
#include "model/record_totals.h"
#include "platform/file_system.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>

namespace quobrix::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCsv = "csv", kJson = "json", kXlsx = "xlsx";

/// What is written, and what is said of it.
struct Content {
    std::vector<ExportRecords> records;
    ShownText title, count;
    std::vector<std::shared_ptr<const Column>> made{}; ///< columns of the records that are there for them only
};

/// Collects what is written to a new file into blocks.
class FileSink {
public:
    explicit FileSink(File& file) : file_(file) {}

    bool put(std::string_view bytes) {
        constexpr std::size_t kBlock = 1 << 20;
        pending_ += bytes;
        return pending_.size() < kBlock || flush();
    }
    Result<void> finish() {
        flush();
        return result_;
    }

private:
    bool flush() {
        if (result_)
            result_ = file_.writeAt(offset_,
                                    ByteView(reinterpret_cast<const std::uint8_t*>(pending_.data()), pending_.size()));
        offset_ += pending_.size();
        pending_.clear();
        return static_cast<bool>(result_);
    }

    File& file_;
    std::uint64_t offset_ = 0;
    std::string pending_;
    Result<void> result_;
};

/// One of exportFormats(); complains if there is none.
std::string formatOf(const ExportOptions& options) {
    if (!options.format.empty())
        return options.format;
    std::string ending = utf8(pathFromUtf8(options.out).extension());
    ending.erase(0, 1);
    ending = foldCase(ending);
    const std::vector<std::string> formats = exportFormats();
    if (std::ranges::find(formats, ending) != formats.end())
        return ending;
    complain(text(TextId::CliNoFormat, options.out, fmt::format("{}", fmt::join(formats, ", "))));
    return {};
}

/// The samples of the record of LOG that OPTIONS name.
ExitCode samplesOf(const LogSpec& log, const ExportOptions& options, OpenedDocument& document, const UserUnits& units,
                   Content& content) {
    if (!document.open(options.files[1]))
        return kFailed;
    const std::optional<RowIndex> row = rowOf(log, options.files[0], document);
    if (!row)
        return kFailed;
    const Table& table = document.table(log);
    const RecordTable samples = log.tables(&table, row, units.exported()).front();
    if (samples.columns.empty() || samples.columns.front().column->rowCount() == 0) {
        complain(samples.emptyText);
        return kFailed;
    }
    ExportRecords& records = content.records.emplace_back();
    for (const RecordTable::Shown& shown : samples.columns)
        records.columns.push_back({shown.column, shown.heading});
    for (RowIndex sample = 0; sample < samples.columns.front().column->rowCount(); ++sample)
        records.rows.push_back(sample);
    content.made = samples.made;
    content.title = text(samples.title);
    content.count = counted(TextId::CliSamples, records.rows.size(), records.rows.size());
    return kDone;
}

/// How many texts had to be cut.
Result<std::size_t> write(const Content& content, const std::string& format, const UserUnits& units,
                          ReplacementFile& file) {
    if (format == kXlsx)
        return writeXlsx(content.records, content.title, units.context(), file.temporary());
    FileSink sink(file.file());
    writeRecords(content.records, format == kJson ? Format::Json : Format::Csv, units,
                 [&](std::string_view bytes) { return sink.put(bytes); });
    QUOBRIX_TRY(sink.finish());
    return std::size_t{0};
}

} // namespace

std::vector<std::string> exportFormats() { return {std::string(kCsv), std::string(kJson), std::string(kXlsx)}; }

ExitCode exportRecords(const ExportOptions& options) {
    const auto log = std::ranges::find(logs(), std::string_view(options.log), &LogSpec::name);
    const auto recordLog = std::ranges::find(logs(), std::string_view(options.log), &LogSpec::recordName);
    const bool ofOneRecord = log == logs().end();
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
    const std::string format = options.out.empty() ? std::string(kCsv) : formatOf(options);
    if (format.empty())
        return kUsage;
    if (format != kJson && options.samples) {
        complain(text(TextId::CliSamplesNeedJson));
        return kUsage;
    }
    if (format == kXlsx && !canWriteXlsx()) {
        complain(text(TextId::ExportNoXlsx));
        return kUsage;
    }
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;

    Selection selection;
    OpenedDocument document;
    Content content;
    if (ofOneRecord) {
        if (const ExitCode code = samplesOf(*recordLog, options, document, units, content); code != kDone)
            return code;
    } else {
        if (const ExitCode code = selection.choose(options, units); code != kDone)
            return code;
        content.records = recordsFor(selection, format == kJson ? Format::Json : Format::Csv,
                                     options.samples ? Owned::Keep : Owned::LeaveOut);
        content.title = text(log->title);
        content.count = totalsText(*log, selection.rows(), units.context());
    }
    const auto failed = [&](const Error& error) {
        complain(fileMessage(error, FileAction::Save, options.out).text);
        return kFailed;
    };
    std::size_t count = 0;
    for (const ExportRecords& part : content.records)
        count += part.rows.size();
    if (format == kXlsx && count > kMostXlsxRecords) {
        complain(text(TextId::CliTooManyForXlsx, kMostXlsxRecords, count));
        return kFailed;
    }
    Result<ReplacementFile> file = ReplacementFile::create(pathFromUtf8(options.out));
    if (!file)
        return failed(file.error());
    const Result<std::size_t> cut = write(content, format, units, *file);
    if (!cut)
        return failed(cut.error());
    ExitCode code = ofOneRecord ? document.completeness() : selection.completeness();
    if (*cut > 0) {
        complain(counted(TextId::CliTextsCut, *cut, *cut, options.out));
        code = kIncomplete;
    }
    if (const Result<void> committed = file->commit(); !committed) {
        failed(committed.error());
        if (committed.error().kind != ErrorKind::NotDurable)
            return kFailed;
        code = kIncomplete;
    }
    Output output;
    output.put(text(TextId::CliExported, options.out, content.count));
    return output.finish(code, text(TextId::CliHasBeenWritten, options.out));
}

} // namespace quobrix::cli
