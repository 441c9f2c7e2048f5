#include "cli/reading.h"

#include "cli/printing.h"
#include "cli/units.h"
#include "cli/writing.h"
#include "export/json.h"
#include "report/render.h"
#include "texts/text.h"

#include <algorithm>
#include <charconv>
#include <memory>

namespace quobrix::cli {
namespace {

std::optional<std::int64_t> numberIn(const std::string& text) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && parsed == end ? std::optional(number) : std::nullopt;
}

} // namespace

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

bool isNumber(const std::string& number) {
    if (numberIn(number))
        return true;
    complain(text(TextId::CliNoNumberOfARecord, number));
    return false;
}

std::optional<RowIndex> rowOf(const LogSpec& log, const std::string& number, OpenedDocument& document) {
    const std::int64_t wanted = *numberIn(number);
    const auto count = static_cast<std::int64_t>(document.table(log).rowCount());
    if (wanted >= 1 && wanted <= count)
        return static_cast<RowIndex>(wanted - 1);
    if (document.completeness() == kDone)
        complain(count == 0 ? text(TextId::CliNoRecords, document.file(), text(log.records))
                            : text(TextId::CliNoSuchRecord, document.file(), text(log.record), wanted,
                                   text(log.records), count));
    return {};
}

ExitCode list(const ListOptions& options) {
    if (options.samples && options.format != Format::Json) {
        complain(text(TextId::CliSamplesNeedJson));
        return kUsage;
    }
    UserUnits units;
    if (options.format != Format::Json || options.units || options.any()) // json is in base units
        if (const ExitCode code = units.load(options.units); code != kDone)
            return code;
    Selection selection;
    if (const ExitCode code = selection.choose(options, units); code != kDone)
        return code;
    Output output;
    if (options.format == Format::Table)
        output.put(ShownText::asItIs(renderText(recordGrid(selection, units))));
    else
        writeRecords(recordsFor(selection, options.format, options.samples ? Owned::Keep : Owned::LeaveOut),
                     options.format, units, [&](std::string_view bytes) { return output.putData(bytes); });
    return output.finish(selection.completeness());
}

ExitCode report(const ReportOptions& options) {
    const LogSpec& log = *std::ranges::find(logs(), std::string_view(options.record), &LogSpec::recordName);
    if (!options.out.empty() && !mayReplace(options.out, {&options.file, 1}))
        return kUsage;
    const std::optional<FileFormat> format = chosenFormat(options.format, options.out, kReportFormats);
    if (!format || !isNumber(options.number))
        return kUsage;
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;
    OpenedDocument document;
    if (!document.open(options.file))
        return kFailed;
    const std::optional<RowIndex> row = rowOf(log, options.number, document);
    if (!row)
        return kFailed;
    Report shown = recordReport(log, document.table(log), *row, units.context());
    const ShownText title = ShownText::asItIs(shown.title);
    return putReport(std::move(shown), *format, options.out, document.completeness(), title);
}

ExitCode columns(const ColumnsOptions& options) {
    const LogSpec& log = *std::ranges::find(logs(), std::string_view(options.log), &LogSpec::name);
    const std::unique_ptr<PersistentObject> table = log.table.create();
    const std::vector<ColumnDescription> all = describeColumns(static_cast<const Table&>(*table));
    Output output;
    if (options.json) {
        output.putData(columnsJson(all));
        return output.finish(kDone);
    }
    Grid grid;
    for (const TextOf<0> heading : {TextOf<0>(TextId::CliColumnsHeading), TextOf<0>(TextId::CliColumnsKind),
                                    TextOf<0>(TextId::CliColumnsUnit), TextOf<0>(TextId::CliColumnsKey)})
        grid.columns.push_back({text(heading), false});
    for (const ColumnDescription& column : all)
        grid.rows.push_back({column.heading, std::string(column.kind), column.unit, std::string(column.key)});
    output.put(ShownText::asItIs(renderText(grid)));
    return output.finish(kDone);
}

} // namespace quobrix::cli
