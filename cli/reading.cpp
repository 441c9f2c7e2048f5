#include "cli/reading.h"

#include "base/path_text.h"
#include "cli/units.h"
#include "messages/file_messages.h"
#include "report/render.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <memory>

namespace quobrix::cli {
namespace {

/// Whether everything that was asked of the document is known to have been read.
ExitCode completeness(TQuobrixDocument& document, const std::string& file) {
    if (document.outdated()) {
        complain(text(TextId::CliChangedWhileRead, file));
        return kIncomplete;
    }
    const std::vector<std::string> affected = document.affectedLogs();
    const std::optional<ShownText> doubt = document.doubt();
    if (affected.empty() && !doubt)
        return kDone;
    const std::string parts = fmt::format("{}", fmt::join(affected, ", "));
    const std::string missing = affected.empty() ? text(TextId::CliMayBeMore, file, *doubt)
                                : doubt          ? text(TextId::CliPartsMissingAtLeast, file, parts)
                                                 : text(TextId::CliPartsMissing, file, parts);
    complain(text(TextId::CliCheckTells, missing, file));
    return kIncomplete;
}

/// The table of LOG, which is looked for wherever it may be; NONE where a document has no such log yet.
const Table& tableOf(TQuobrixDocument& document, const LogSpec& log, const PersistentObject& none) {
    const Table* table = document.log(log);
    if (!table && document.store().findLostSingletons())
        table = document.log(log);
    return table ? *table : static_cast<const Table&>(none);
}

} // namespace

bool openForReading(TQuobrixDocument& document, const std::string& file) {
    const Result<void> opened = document.open(pathFromUtf8(file), TDocument::Access::Read);
    if (opened)
        return true;
    ShownText why = fileMessage(opened.error(), FileAction::Open, file).text;
    if (opened.error().kind == ErrorKind::Corrupt)
        why += " " + text(TextId::CliRepairSaves, file);
    complain(why);
    return false;
}

std::vector<std::string> logNames() {
    std::vector<std::string> names;
    for (const LogSpec& log : logs())
        names.emplace_back(log.name);
    return names;
}

std::vector<std::string> recordNames() {
    std::vector<std::string> names;
    for (const LogSpec& log : logs())
        names.emplace_back(log.recordName);
    return names;
}

ExitCode list(const ListOptions& options) {
    UserUnits units(localeOf(options.format));
    if (options.format != Format::Json || options.units) // json is in base units
        if (const ExitCode code = units.load(options.units); code != kDone)
            return code;
    TQuobrixDocument document;
    if (!openForReading(document, options.file))
        return kFailed;

    const LogSpec& log = *std::ranges::find(logs(), std::string_view(options.log), &LogSpec::name);
    const std::unique_ptr<PersistentObject> none = log.table.create();
    Output output;
    writeRecords(output, tableOf(document, log, *none), options.format, log.list(), units.context());
    return output.finish(completeness(document, options.file));
}

ExitCode report(const ReportOptions& options) {
    const LogSpec& log = *std::ranges::find(logs(), std::string_view(options.record), &LogSpec::recordName);
    std::int64_t number = 0;
    const char* const end = options.number.data() + options.number.size();
    if (const auto [parsed, error] = std::from_chars(options.number.data(), end, number);
        error != std::errc{} || parsed != end) {
        complain(text(TextId::CliNoNumberOfARecord, options.number));
        return kUsage;
    }
    UserUnits units(localeOf(Format::Table));
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;
    TQuobrixDocument document;
    if (!openForReading(document, options.file))
        return kFailed;

    const std::unique_ptr<PersistentObject> none = log.table.create();
    const Table& table = tableOf(document, log, *none);
    const auto count = static_cast<std::int64_t>(table.rowCount());
    if (number < 1 || number > count) {
        const ExitCode complete = completeness(document, options.file);
        if (complete == kDone)
            complain(count == 0 ? text(TextId::CliNoRecords, options.file, text(log.records))
                                : text(TextId::CliNoSuchRecord, options.file, text(log.record), number,
                                       text(log.records), count));
        return kFailed;
    }
    Output output;
    const Report shown = recordReport(log, table, static_cast<RowIndex>(number - 1), units.context());
    if (options.html)
        output.putData(renderHtml(shown));
    else
        output.put(ShownText::asItIs(renderText(shown)));
    return output.finish(completeness(document, options.file));
}

} // namespace quobrix::cli
