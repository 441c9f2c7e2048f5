#include "export/csv.h"

#include "base/utf8.h"
#include "units/unit_system.h"

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

std::string csvText(const Column& column, RowIndex row, const TextContext& context) {
    if (column.kind() != ColumnKind::Real)
        return csvWords(column.text(row, context)); // numbers may show as names that people gave
    const Value value = column.value(row);          // the unit is in the heading
    const auto* real = std::get_if<double>(&value);
    return real ? context.units.formatValue(column.unitOf(row), *real) : std::string();
}

} // namespace

TextLocale csvLocale() {
    TextLocale plain;
    plain.numbers.grouping = DigitGrouping::parse("0");
    return plain;
}

std::string csvWords(std::string_view text) { return notAFormula(harmlessLines(text)); }

std::string csvRow(const std::vector<std::string>& fields) {
    std::string row;
    for (const std::string& field : fields)
        row += (&field == &fields.front() ? "" : ",") + csvField(field);
    return row + "\r\n";
}

void writeCsv(std::span<const ExportRecords> records, const TextContext& read, const ExportSink& sink) {
    TUnitSystem units(csvLocale());
    units.replace(read.units.choices());
    const TextContext context{units, read.zone};
    std::vector<std::string> fields;
    const auto put = [&] { return sink(csvRow(fields)); };
    if (records.front().file)
        fields.push_back(fileHeading());
    for (const ExportColumn& column : records.front().columns)
        fields.push_back(exportHeading(column, context));
    if (!put())
        return;
    for (const ExportRecords& part : records)
        for (const RowIndex row : part.rows) {
            fields.clear();
            if (part.file)
                fields.push_back(csvWords(*part.file));
            for (const ExportColumn& each : part.columns)
                fields.push_back(csvText(*each.column, row, context));
            if (!put())
                return;
        }
}

} // namespace quobrix
