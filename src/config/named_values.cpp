#include "config/named_values.h"

#include "texts/text.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace quobrix {
namespace {

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

template <class T>
bool readAll(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

Result<void> readNamedValues(std::string_view text, std::string_view firstLine, std::span<const std::string> names,
                             const std::function<bool(std::size_t place, std::string_view value)>& set) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) // which some editors put there
        text.remove_prefix(kByteOrderMark.size());
    const bool whole = text.ends_with('\n');
    std::vector<bool> told(names.size());
    bool begun = false;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line = trimmed(line.substr(0, line.find('#')));
        if (number == 1) {
            if (line != firstLine)
                break;
            begun = true;
            continue;
        }
        if (line.empty())
            continue;
        const std::size_t sign = std::min(line.find('='), line.size());
        const auto name = std::ranges::find(names, trimmed(line.substr(0, sign)));
        if (name == names.end())
            return Error{ErrorKind::Corrupt, quobrix::text(TextId::ValueLineUnknown, number)};
        const auto place = static_cast<std::size_t>(name - names.begin());
        if (told[place])
            return Error{ErrorKind::Corrupt, quobrix::text(TextId::ValueLineAgain, number, *name)};
        told[place] = true;
        if (!set(place, trimmed(line.substr(std::min(sign + 1, line.size())))))
            return Error{ErrorKind::Corrupt, quobrix::text(TextId::ValueLineUnusable, number, *name)};
    }
    if (!begun)
        return Error{ErrorKind::NotADocument, quobrix::text(TextId::ValuesBeginWith, firstLine)};
    if (const auto missing = std::ranges::find(told, false); missing != told.end())
        return Error{ErrorKind::Corrupt,
                     quobrix::text(TextId::ValueMissing, names[static_cast<std::size_t>(missing - told.begin())])};
    if (!whole) // a value may be the beginning of another
        return Error{ErrorKind::Corrupt, quobrix::text(TextId::ValuesCutShort)};
    return {};
}

bool readNumber(std::string_view text, double& value) { return readAll(text, value); }
bool readNumber(std::string_view text, std::int32_t& value) { return readAll(text, value); }

} // namespace quobrix
