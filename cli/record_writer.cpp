#include "cli/record_writer.h"

#include "base/utf8.h"
#include "export/csv.h"
#include "export/json.h"

#include <algorithm>
#include <vector>

namespace quobrix::cli {
namespace {

void writeTable(Output& output, const Table& table, std::span<const PersistentType* const> shown,
                const TextContext& context) {
    constexpr std::string_view kGap = "  ";
    std::vector<const Column*> columns;
    for (const PersistentType* type : shown)
        columns.push_back(&table.columnOf(*type));

    std::vector<std::vector<std::string>> lines(1 + table.rowCount());
    std::vector<std::size_t> widths(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i)
        for (std::size_t line = 0; line < lines.size(); ++line) {
            const std::string text =
                line == 0 ? plainHeading(columns[i]->spec()) : oneLine(columns[i]->text(line - 1, context));
            widths[i] = std::max(widths[i], characterCount(text));
            lines[line].push_back(text);
        }
    for (const std::vector<std::string>& line : lines) {
        std::string text;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const std::string padding(widths[i] - characterCount(line[i]), ' ');
            const ColumnKind kind = columns[i]->kind();
            const bool right = kind == ColumnKind::Integer || kind == ColumnKind::Real;
            text += right ? padding + line[i] : line[i] + padding;
            text += kGap;
        }
        text.erase(text.find_last_not_of(' ') + 1);
        if (!output.put(ShownText::asItIs(text + "\n")))
            return;
    }
}

} // namespace

TextLocale localeOf(Format format) {
    TextLocale locale; // English; the exported ones without grouping
    if (format != Format::Table)
        locale.numbers.grouping = DigitGrouping::parse("0");
    return locale;
}

void writeRecords(Output& output, const Table& table, Format format, std::span<const PersistentType* const> shown,
                  const TextContext& context) {
    const auto sink = [&](std::string_view bytes) { return output.putData(bytes); };
    switch (format) {
    case Format::Table:
        return writeTable(output, table, shown, context);
    case Format::Csv:
        return writeCsv(allRecords(table, Repeats::LeaveOut), context, sink);
    case Format::Json:
        return writeJson(allRecords(table, Repeats::Keep), sink);
    }
}

} // namespace quobrix::cli
