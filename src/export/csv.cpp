#include "export/csv.h"

#include "base/utf8.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

namespace quobrix {
namespace {

/// A TEXT that begins like a formula and is no number gets the apostrophe. Blanks before it are passed over, as such
/// programs do.
std::string notAFormula(std::string text) {
    constexpr std::string_view kFormulaSigns = "=+-@\n";
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos || kFormulaSigns.find(text[first]) == std::string_view::npos)
        return text;
    const bool number = (text[first] == '-' || text[first] == '+') &&
                        text.find_first_not_of("0123456789.,", first + 1) == std::string::npos;
    return number ? text : "'" + text;
}

std::string csvField(std::string_view text) {
    std::string field(text);
    if (field.find_first_of("\",;\t\r\n") == std::string::npos) // some programs part cells at others than commas
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

} // namespace

void writeCsv(const ExportRecords& records, const TextContext& context, const ExportSink& sink) {
    std::vector<std::string> fields;
    for (const Column* column : records.columns)
        fields.push_back(csvHeading(*column, context));
    if (!sink(csvRow(fields)))
        return;
    for (const RowIndex row : records.rows) {
        std::ranges::transform(records.columns, fields.begin(), [&](auto* c) { return csvText(*c, row, context); });
        if (!sink(csvRow(fields)))
            return;
    }
}

} // namespace quobrix
