#include "export/json.h"

#include "export/json_text.h"
#include "model/log_columns.h"
#include "model/parameters.h"
#include "tables/table.h"

#include <cmath>
#include <numeric>
#include <string>

namespace quobrix {
namespace {

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

/// The values of a column that lies in an object of its own.
std::string jsonOf(const Column& column) {
    JsonObject samples;
    if (const auto* series = dynamic_cast<const ParameterSeriesColumn*>(&column)) {
        std::vector<double> values;
        for (std::size_t i = 0; i < series->sampleCount(); ++i)
            values.push_back(series->base(i));
        samples.add("parameter", jsonNumber(series->parameter()));
        samples.add("interval", jsonNumber(series->interval()));
        samples.add("twoValues", series->twoValues() ? "true" : "false");
        samples.add("values", jsonArray(values, [](double v) { return jsonValue(hasValue(v) ? Value(v) : Value()); }));
        return samples.text();
    }
    std::vector<RowIndex> rows(column.storedRows());
    std::iota(rows.begin(), rows.end(), RowIndex{0});
    const std::string values = jsonArray(rows, [&](RowIndex row) { return jsonValue(column.value(row)); });
    const auto* speeds = dynamic_cast<const SpeedSamplesColumn*>(&column);
    if (!speeds)
        return values;
    samples.add("interval", jsonNumber(speeds->interval()));
    samples.add("values", values);
    return samples.text();
}

/// What the cell owns; null if it owns nothing, or nothing that can be read.
std::string jsonOfOwned(const ObjectColumn& cells, RowIndex row) {
    const PersistentObject* owned = cells.has(row) && cells.store() ? cells.store()->find(cells.at(row)) : nullptr;
    if (!owned || owned->type().id() != cells.objectType().id())
        return "null";
    const auto* table = dynamic_cast<const Table*>(owned);
    if (!table)
        return jsonOf(static_cast<const Column&>(*owned));
    JsonObject columns;
    for (const ExportColumn& exported : ownColumns(*table))
        columns.add(exported.column->spec().key, jsonOf(*exported.column));
    return columns.text();
}

std::string jsonOfDescription(const ColumnDescription& column) {
    JsonObject description;
    description.add("key", jsonText(column.key));
    description.add("heading", jsonText(column.heading));
    description.add("kind", jsonText(column.kind));
    description.add("unit", column.unit.empty() ? "null" : jsonText(column.unit));
    if (!column.columns.empty())
        description.add("columns", jsonArray(column.columns, jsonOfDescription));
    return description.text();
}

} // namespace

void writeJson(std::span<const ExportRecords> records, const ExportSink& sink) {
    if (!sink("["))
        return;
    std::string_view between = "\n";
    for (const ExportRecords& part : records)
        for (const RowIndex row : part.rows) {
            JsonObject record;
            if (part.file)
                record.add("file", jsonText(*part.file));
            for (const ExportColumn& each : part.columns) {
                const auto* cells = dynamic_cast<const ObjectColumn*>(each.column);
                record.add(each.column->spec().key,
                           cells ? jsonOfOwned(*cells, row) : jsonValue(each.column->value(row)));
            }
            if (!sink(std::string(between) + record.text()))
                return;
            between = ",\n";
        }
    sink("\n]\n");
}

std::string columnsJson(std::span<const ColumnDescription> columns) {
    std::string text = "[";
    for (const ColumnDescription& column : columns)
        text += (text.size() > 1 ? ",\n" : "\n") + jsonOfDescription(column);
    return text + "\n]\n";
}

} // namespace quobrix
