#include "cli/record_writer.h"

#include "base/utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace quobrix::cli {
namespace {

using Columns = std::vector<const Column*>;

/// The columns of TABLE that KEEP says yes to, without those whose cells are objects.
template <class Keep>
Columns columnsOf(const Table& table, Keep keep) {
    Columns columns;
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        if (const Column& column = table.column(i); column.kind() != ColumnKind::Table && keep(column.spec()))
            columns.push_back(&column);
    return columns;
}

/// Shows a sibling once more, for the headings of the window's summary and report.
bool repeatsSibling(const ColumnSpec& spec) {
    return spec.key.ends_with("SummaryColumn") || spec.key.ends_with("ReportColumn");
}

// JSON (RFC 8259)

std::string jsonText(std::string_view text) {
    const std::string valid = validUtf8(text);
    std::string result = "\"";
    for (std::size_t at = 0; at < valid.size(); ++at) {
        const auto byte = static_cast<unsigned char>(valid[at]);
        if (byte == '"' || byte == '\\')
            result += '\\';
        // Beside those that RFC 8259 names, the control characters U+007F to U+009F: a terminal obeys them too.
        if (byte == 0xC2 && static_cast<unsigned char>(valid[at + 1]) < 0xA0)
            result += fmt::format("\\u{:04x}", static_cast<unsigned char>(valid[++at]));
        else if (byte < 0x20 || byte == 0x7F)
            result += fmt::format("\\u{:04x}", byte);
        else
            result += valid[at];
    }
    return result + '"';
}

template <class T>
std::string jsonNumber(T value) {
    char buffer[32]; // the shortest text of a double that reads back as it has at most 24 characters
    return {buffer, std::to_chars(std::begin(buffer), std::end(buffer), value).ptr};
}

std::string jsonValue(const Value& value) {
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean ? "true" : "false";
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return jsonNumber(*integer);
    if (const auto* real = std::get_if<double>(&value); real && std::isfinite(*real))
        return jsonNumber(*real);
    if (const auto* text = std::get_if<std::string>(&value))
        return jsonText(*text);
    return "null";
}

void writeJson(Output& output, const Table& table) {
    const Columns columns = columnsOf(table, [](const ColumnSpec&) { return true; });
    output.putData("[");
    for (RowIndex row = 0; row < table.rowCount(); ++row) {
        std::string record = row == 0 ? "\n" : ",\n";
        char before = '{';
        for (const Column* column : columns) {
            record += before + jsonText(column->spec().key) + ":" + jsonValue(column->value(row));
            before = ',';
        }
        if (!output.putData(record + "}"))
            return;
    }
    output.putData("\n]\n");
}

// CSV (RFC 4180)

/// TEXT so that no spreadsheet program takes it for a formula: what begins like one and is no number gets the
/// apostrophe that marks texts there.
std::string notAFormula(std::string text) {
    constexpr std::string_view kFormulaSigns = "=+-@\t\n";
    if (text.empty() || kFormulaSigns.find(text.front()) == std::string_view::npos)
        return text;
    const bool number =
        (text.front() == '-' || text.front() == '+') && text.find_first_not_of("0123456789.,", 1) == std::string::npos;
    return number ? text : "'" + text;
}

std::string csvField(std::string_view text) {
    std::string field(text);
    if (field.find_first_of("\",\r\n") == std::string::npos)
        return field;
    for (std::size_t at = 0; (at = field.find('"', at)) != std::string::npos; at += 2)
        field.insert(at, 1, '"');
    return '"' + field + '"';
}

std::string csvRow(const std::vector<std::string>& fields) {
    std::string row;
    for (const std::string& field : fields)
        row += (&field == &fields.front() ? "" : ",") + csvField(field);
    return row + "\r\n";
}

std::string csvHeading(const Column& column, const TextContext& context) {
    const ColumnSpec& spec = column.spec();
    const std::string_view unit = context.units.unitName(spec.unit);
    return column.kind() == ColumnKind::Real && !unit.empty() ? fmt::format("{} ({})", plainHeading(spec), unit)
                                                              : plainHeading(spec);
}

std::string csvText(const Column& column, RowIndex row, const TextContext& context) {
    if (column.kind() != ColumnKind::Real)
        return notAFormula(harmlessLines(column.text(row, context))); // numbers may show as names that people gave
    const Value value = column.value(row);                            // the unit is in the heading
    const auto* real = std::get_if<double>(&value);
    return real ? context.units.formatValue(column.spec().unit, *real) : std::string();
}

void writeCsv(Output& output, const Table& table, const TextContext& context) {
    const Columns columns = columnsOf(table, [](const ColumnSpec& spec) { return !repeatsSibling(spec); });
    std::vector<std::string> fields;
    for (const Column* column : columns)
        fields.push_back(csvHeading(*column, context));
    output.putData(csvRow(fields));
    for (RowIndex row = 0; row < table.rowCount(); ++row) {
        std::ranges::transform(columns, fields.begin(), [&](auto* c) { return csvText(*c, row, context); });
        if (!output.putData(csvRow(fields)))
            return;
    }
}

// The table for people

void writeTable(Output& output, const Table& table, std::span<const PersistentType* const> shown,
                const TextContext& context) {
    constexpr std::string_view kGap = "  ";
    Columns columns;
    for (const PersistentType* type : shown)
        for (const Column* column :
             columnsOf(table, [&](const ColumnSpec& spec) { return spec.type.id() == type->id(); }))
            columns.push_back(column);

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
        if (!output.put(text + "\n"))
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
    switch (format) {
    case Format::Table:
        return writeTable(output, table, shown, context);
    case Format::Csv:
        return writeCsv(output, table, context);
    case Format::Json:
        return writeJson(output, table);
    }
}

} // namespace quobrix::cli
