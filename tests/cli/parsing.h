#pragma once

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quobrix::test {

using JsonValue = std::variant<std::monostate, bool, double, std::string>;
using JsonRecord = std::map<std::string, JsonValue>;

/// An array of objects without inner ones, by RFC 8259 and no less strictly; throws std::runtime_error.
std::vector<JsonRecord> parseJson(std::string_view text);

/// The values of any JSON text by the keys, and the places in arrays from 0, that lead to them: "trips.0.vin". Empty
/// objects and arrays leave nothing. Throws std::runtime_error.
std::map<std::string, JsonValue> jsonLeaves(std::string_view text);

/// Records by RFC 4180, their line ends CRLF; throws std::runtime_error.
std::vector<std::vector<std::string>> parseCsv(std::string_view text);

} // namespace quobrix::test
