#include "cli/parsing.h"

#include <algorithm>
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

std::map<std::string, JsonValue> jsonLeaves(std::string_view text) {
    std::map<std::string, JsonValue> leaves;
    std::size_t at = 0;
    const auto next = [&] {
        at = std::min(text.find_first_not_of(" \n\r\t", at), text.size());
        return at < text.size() ? text[at] : '\0';
    };
    const auto token = [&] { // a text, a number or a word
        const std::size_t begin = at;
        if (next() == '"')
            for (++at; at < text.size() && text[at] != '"'; ++at)
                at += text[at] == '\\';
        at = text[begin] == '"' ? at + 1 : std::min(text.find_first_of(",:]} \n", at), text.size());
        if (at > text.size() || at == begin)
            throw std::runtime_error("no JSON: " + std::string(text.substr(begin, 40)));
        return text.substr(begin, at - begin);
    };
    const auto read = [&](const auto& self, const std::string& path) -> void {
        const char open = next();
        if (open != '{' && open != '[') {
            leaves.emplace(path, valueOf(token()));
            return;
        }
        ++at;
        const char close = open == '{' ? '}' : ']';
        for (std::size_t place = 0; next() != close; ++place) {
            if (place > 0 && text[at++] != ',')
                throw std::runtime_error("no comma behind " + path);
            next();
            std::string key = open == '[' ? std::to_string(place) : unquoted(token());
            if (open == '{' && (next() != ':' || ++at > text.size()))
                throw std::runtime_error("no colon behind " + key);
            self(self, path.empty() ? key : path + "." + key);
        }
        ++at;
    };
    read(read, {});
    if (next() != '\0')
        throw std::runtime_error("more than one value");
    return leaves;
}

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
