#include "cli/parsing.h"

#include <cstdlib>
#include <regex>
#include <stdexcept>

namespace quobrix::test {
namespace {

/// The marks, texts and words of JSON, in their order.
std::vector<std::string_view> tokensOf(std::string_view text) {
    static const std::regex form(R"(\s*([\[\]{}:,]|"(?:[^"\\\x00-\x1f]|\\["\\]|\\u[0-9a-fA-F]{4})*"|true|false|null|)"
                                 R"(-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][+-]?[0-9]+)?)\s*)");
    std::vector<std::string_view> tokens;
    for (std::cmatch match; !text.empty(); text.remove_prefix(static_cast<std::size_t>(match.length()))) {
        if (!std::regex_search(text.data(), text.data() + text.size(), match, form,
                               std::regex_constants::match_continuous))
            throw std::runtime_error("no JSON: " + std::string(text.substr(0, 40)));
        tokens.emplace_back(match[1].first, static_cast<std::size_t>(match[1].length()));
    }
    return tokens;
}

std::string unquoted(std::string_view token) {
    std::string text;
    for (std::size_t at = 1; at + 1 < token.size(); ++at) {
        if (token[at] != '\\') {
            text += token[at];
        } else if (token[++at] != 'u') {
            text += token[at];
        } else { // only controls need it, in UTF-8 "C2" and themselves
            const int code = std::stoi(std::string(token.substr(at + 1, 4)), nullptr, 16);
            text += code < 0x80 ? "" : "\xC2";
            text += static_cast<char>(code);
            at += 4;
        }
    }
    return text;
}

JsonValue valueOf(std::string_view token) {
    if (token.front() == '"')
        return unquoted(token);
    if (token == "null")
        return {};
    if (token == "true" || token == "false")
        return token == "true";
    return std::strtod(std::string(token).c_str(), nullptr);
}

} // namespace

std::vector<JsonRecord> parseJson(std::string_view text) {
    const std::vector<std::string_view> tokens = tokensOf(text);
    auto next = tokens.begin();
    const auto accept = [&](std::string_view wanted) {
        return next != tokens.end() && *next == wanted && ++next != tokens.begin();
    };
    const auto take = [&](std::string_view wanted = {}) {
        if (next == tokens.end() || (!wanted.empty() && *next != wanted))
            throw std::runtime_error("expected " + std::string(wanted));
        return *next++;
    };
    std::vector<JsonRecord> records;
    take("[");
    while (!accept("]")) {
        if (!records.empty())
            take(",");
        take("{");
        JsonRecord& record = records.emplace_back();
        do {
            const std::string key = unquoted(take());
            take(":");
            if (!record.emplace(key, valueOf(take())).second)
                throw std::runtime_error("two of " + key);
        } while (accept(","));
        take("}");
    }
    if (next != tokens.end())
        throw std::runtime_error("more than an array");
    return records;
}

std::vector<std::vector<std::string>> parseCsv(std::string_view text) {
    std::vector<std::vector<std::string>> records;
    while (!text.empty()) {
        std::vector<std::string>& record = records.emplace_back();
        for (bool more = true; more;) {
            std::string& field = record.emplace_back();
            if (text.starts_with('"')) {
                for (;;) {
                    const std::size_t quote = text.find('"', 1);
                    if (quote == std::string_view::npos)
                        throw std::runtime_error("a quoted field without end");
                    field += text.substr(1, quote - 1);
                    text.remove_prefix(quote + 1);
                    if (!text.starts_with('"'))
                        break;
                    field += '"'; // a doubled quote; the field goes on after the second
                }
            } else {
                const std::size_t end = text.find_first_of(",\r\n\"");
                field = text.substr(0, end);
                text.remove_prefix(std::min(end, text.size()));
            }
            more = text.starts_with(',');
            if (!more && !text.starts_with("\r\n"))
                throw std::runtime_error("a record that does not end in CRLF");
            text.remove_prefix(more ? 1 : 2);
        }
    }
    return records;
}

} // namespace quobrix::test
