#include "texts/text.h"

#include "texts/catalogue.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

namespace quobrix {
namespace {

/// A translation whose places are not those of the English text counts as none.
std::string filled(std::optional<std::string> translation, std::string_view english, fmt::format_args arguments) {
    if (translation) {
        try {
            return fmt::vformat(*translation, arguments);
        } catch (const fmt::format_error&) {
        }
    }
    return fmt::vformat(english, arguments);
}

} // namespace

std::string text(SourceText text) {
    if (const Catalogue* all = text.empty() ? nullptr : catalogue())
        if (auto translation = all->find({}, text.english(), {}))
            return *std::move(translation);
    return std::string(text.english());
}

std::string counted(SourceText one, SourceText several, std::uint64_t count) {
    const Catalogue* all = catalogue();
    const auto translation = all ? all->find({}, one.english(), count) : std::nullopt;
    return fmt::format("{} {}", count, translation ? *translation : (count == 1 ? one : several).english());
}

std::string fillPlaces(SourceText text, fmt::format_args arguments) {
    const Catalogue* all = catalogue();
    return filled(all ? all->find({}, text.english(), {}) : std::nullopt, text.english(), arguments);
}

namespace text_details {

std::string fill(const Row& row, std::uint64_t count, fmt::format_args arguments) {
    const Catalogue* all = catalogue();
    return filled(all ? all->find({}, row.one.english(), count) : std::nullopt,
                  (count == 1 ? row.one : row.other).english(), arguments);
}

} // namespace text_details
} // namespace quobrix
