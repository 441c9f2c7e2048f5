#include "cli/parsing.h"

#include <cstdlib>
#include <regex>
#include <stdexcept>

namespace quobrix::test {
namespace {

class JsonReader {
public:
    explicit JsonReader(std::string_view text) : rest_(text) {}

    std::vector<JsonRecord> array() {
        std::vector<JsonRecord> records;
        expect('[');
        if (!accept(']')) {
            do
                records.push_back(object());
            while (accept(','));
            expect(']');
        }
        blanks();
        if (!rest_.empty())
            fail("the end");
        return records;
    }

private:
    JsonRecord object() {
        JsonRecord record;
        expect('{');
        do {
            std::string key = text();
            expect(':');
            if (!record.emplace(std::move(key), value()).second)
                fail("another key");
        } while (accept(','));
        expect('}');
        return record;
    }

    JsonValue value() {
        blanks();
        if (word("null"))
            return {};
        if (word("true"))
            return true;
        if (word("false"))
            return false;
        if (rest_.starts_with('"'))
            return text();
        static const std::regex number(R"(-?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?)");
        std::cmatch match;
        if (!std::regex_search(rest_.data(), rest_.data() + rest_.size(), match, number,
                               std::regex_constants::match_continuous))
            fail("a value");
        rest_.remove_prefix(static_cast<std::size_t>(match.length()));
        return std::strtod(match.str().c_str(), nullptr);
    }

    std::string text() {
        std::string result;
        expect('"');
        while (!accept('"', false)) {
            const char c = next();
            if (static_cast<unsigned char>(c) < 0x20)
                fail("no control character");
            if (c != '\\') {
                result += c;
                continue;
            }
            const char escape = next();
            if (escape == 'u') {
                std::string digits;
                for (int i = 0; i < 4; ++i)
                    digits += next();
                const int code = std::stoi(digits, nullptr, 16); // only controls need it, in UTF-8 "C2" and themselves
                result += code < 0x80 ? "" : "\xC2";
                result += static_cast<char>(code);
            } else if (escape == '"' || escape == '\\') {
                result += escape;
            } else {
                fail("an escape");
            }
        }
        return result;
    }

    char next() {
        if (rest_.empty())
            fail("more");
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }
    bool accept(char c, bool skipBlanks = true) {
        if (skipBlanks)
            blanks();
        const bool there = rest_.starts_with(c);
        rest_.remove_prefix(there ? 1 : 0);
        return there;
    }
    bool word(std::string_view w) {
        const bool there = rest_.starts_with(w);
        rest_.remove_prefix(there ? w.size() : 0);
        return there;
    }
    void expect(char c) {
        if (!accept(c))
            fail(std::string(1, c));
    }
    void blanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }
    [[noreturn]] void fail(const std::string& what) const {
        throw std::runtime_error("expected " + what + " at: " + std::string(rest_.substr(0, 40)));
    }

    std::string_view rest_;
};

} // namespace

std::vector<JsonRecord> parseJson(std::string_view text) { return JsonReader(text).array(); }

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
