#pragma once

#include "base/shown_text.h"

#include <fmt/core.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quobrix {

/// A text as the program's tables have it, in English: what translations are found by. It turns into what a person
/// reads only through text(), so that no row of a table can be shown past a translation. The constructor is explicit
/// because scripts/texts collects the texts to be translated by its name.
class SourceText {
public:
    constexpr SourceText() = default;
    template <std::size_t N>
    constexpr explicit SourceText(const char (&english)[N]) : english_(english, N - 1) {}

    constexpr bool operator==(const SourceText&) const = default;
    constexpr bool empty() const { return english_.empty(); }
    /// For catalogues, names of things, and the tests of tables; people do not read it.
    constexpr std::string_view english() const { return english_; }

private:
    std::string_view english_;
};

/// The text in the user's language.
ShownText text(SourceText text);
/// COUNT with the word for one thing or for several ("1 trip"): for tables that know the words of what they hold.
/// NUMBER is the count as it reads, if it is to be grouped ("1,204 trips").
ShownText counted(SourceText one, SourceText several, std::uint64_t count, std::string_view number = {});
/// The same, without taking memory while it is English: BUFFER holds it otherwise.
std::string_view textIn(std::string& buffer, SourceText text);
/// The same with its places filled in. For the functions that count places at compile time: text() and makeMessage().
ShownText fillPlaces(SourceText text, fmt::format_args arguments);

} // namespace quobrix
