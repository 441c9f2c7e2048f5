#include "base/markup.h"

#include "base/utf8.h"

#include <array>
#include <utility>

namespace quobrix {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kReplacements{{
    {"&", "&amp;"},
    {"<", "&lt;"},
    {">", "&gt;"},
    {"\"", "&quot;"},
    {"\xEF\xBF\xBE", "\xEF\xBF\xBD"}, // the two that are valid UTF-8 and no characters of XML
    {"\xEF\xBF\xBF", "\xEF\xBF\xBD"},
}};

} // namespace

std::string escapeMarkup(std::string_view text) {
    const std::string plain = harmlessLines(text);
    std::string result;
    result.reserve(plain.size());
    for (std::string_view rest = plain; !rest.empty();) {
        std::string_view taken = rest.substr(0, 1), put = taken;
        for (const auto& [what, by] : kReplacements)
            if (rest.starts_with(what)) {
                taken = what;
                put = by;
            }
        result += put;
        rest.remove_prefix(taken.size());
    }
    return result;
}

} // namespace quobrix
