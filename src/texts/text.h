#pragma once

#include "texts/places.h"
#include "texts/source_text.h"

#include <cstddef>
#include <cstdint>
#include <string>

// The headers of Windows have a macro of this name, too, and may have been included before.
#pragma push_macro("TEXT")
#undef TEXT

namespace quobrix {

/// Every text that the core makes by itself, one row of texts.def each; those that stand in tables of their own
/// (messages, columns, commands) are SourceTexts there.
enum class TextId {
#define TEXT(Id, English) Id,
#define COUNTED(Id, One, Other) Id,
#include "texts/texts.def"
};

namespace text_details {

struct Row {
    SourceText one;
    SourceText other{}; ///< empty: the text counts nothing
    std::size_t places;
};

inline constexpr Row kRows[] = {
#define TEXT(Id, English) {SourceText(English), {}, placesOf(English)},
#define COUNTED(Id, One, Other) {SourceText(One), SourceText(Other), placesOf(Other)},
#include "texts/texts.def"
};

#pragma pop_macro("TEXT")

constexpr const Row& row(TextId id) { return kRows[static_cast<std::size_t>(id)]; }

ShownText fill(const Row& row, std::uint64_t count, fmt::format_args arguments);

} // namespace text_details

/// The id of a text that has so many places, which the compiler has counted.
template <std::size_t Places, bool Counts>
class CheckedTextId {
public:
    consteval CheckedTextId(TextId id) : id_(id) {
        if (text_details::row(id).places != Places)
            throw "this text has another number of places";
        if (text_details::row(id).other.empty() == Counts)
            throw "a text that counts is shown with counted(), any other with text()";
    }
    constexpr operator TextId() const { return id_; }

private:
    TextId id_;
};

template <std::size_t Places>
using TextOf = CheckedTextId<Places, false>;
template <std::size_t Places>
using CountedOf = CheckedTextId<Places, true>;

/// The text in the user's language with its places filled in, each argument a text or a whole number.
template <class... Args>
ShownText text(TextOf<sizeof...(Args)> id, const Args&... args) {
    return fillPlaces(text_details::row(id).one, fmt::make_format_args(args...));
}

/// The same for a text that counts something: in its form for COUNT, which has a place only if it is an argument too.
template <class... Args>
ShownText counted(CountedOf<sizeof...(Args)> id, std::uint64_t count, const Args&... args) {
    return text_details::fill(text_details::row(id), count, fmt::make_format_args(args...));
}

} // namespace quobrix
