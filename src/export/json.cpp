#include "export/json.h"

#include "base/utf8.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <string>

namespace quobrix {
namespace {

std::string jsonText(std::string_view text) {
    const std::string valid = validUtf8(text);
    std::string result = "\"";
    for (std::size_t at = 0; at < valid.size(); ++at) {
        const auto byte = static_cast<unsigned char>(valid[at]);
        if (byte == '"' || byte == '\\')
            result += '\\';
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

} // namespace

void writeJson(const ExportRecords& records, const ExportSink& sink) {
    if (!sink("["))
        return;
    std::string_view between = "\n";
    for (const RowIndex row : records.rows) {
        std::string record(between);
        char before = '{';
        for (const Column* column : records.columns) {
            record += before + jsonText(column->spec().key) + ":" + jsonValue(column->value(row));
            before = ',';
        }
        if (!sink(record + "}"))
            return;
        between = ",\n";
    }
    sink("\n]\n");
}

} // namespace quobrix
