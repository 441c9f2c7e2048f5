#include "texts/text.h"

#include "texts/catalogue.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

namespace quobrix {
namespace {

/// A translation whose places are not those of the English text counts as none.
ShownText filled(std::optional<std::string> translation, std::string_view english, fmt::format_args arguments) {
    if (translation) {
        try {
            return ShownText::asItIs(fmt::vformat(*translation, arguments));
        } catch (const fmt::format_error&) {
        }
    }
    return ShownText::asItIs(fmt::vformat(english, arguments));
}

} // namespace

ShownText text(SourceText source) {
    if (const Catalogue* all = source.empty() ? nullptr : catalogue())
        if (auto translation = all->find({}, source.english(), {}))
            return ShownText::asItIs(*std::move(translation));
    return ShownText::asItIs(std::string(source.english()));
}

std::string_view textIn(std::string& buffer, SourceText source) {
    if (!catalogue())
        return source.english();
    buffer = text(source);
    return buffer;
}

ShownText counted(SourceText one, SourceText several, std::uint64_t count, std::string_view number) {
    const Catalogue* all = catalogue();
    const auto translation = all ? all->find({}, one.english(), count) : std::nullopt;
    return ShownText::asItIs(fmt::format("{} {}", number.empty() ? std::to_string(count) : std::string(number),
                                         translation ? *translation : (count == 1 ? one : several).english()));
}

ShownText fillPlaces(SourceText text, fmt::format_args arguments) {
    const Catalogue* all = catalogue();
    return filled(all ? all->find({}, text.english(), {}) : std::nullopt, text.english(), arguments);
}

namespace text_details {

ShownText fill(const Row& row, std::uint64_t count, fmt::format_args arguments) {
    const Catalogue* all = catalogue();
    return filled(all ? all->find({}, row.one.english(), count) : std::nullopt,
                  (count == 1 ? row.one : row.other).english(), arguments);
}

} // namespace text_details
} // namespace quobrix
