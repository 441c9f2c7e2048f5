#pragma once

#include <cstddef>
#include <string_view>

namespace quobrix {

/// How many arguments a text has places for: {} in order, or {0}, {1}…; doubled braces are braces. At compile time, a
/// place of another form does not compile: figures and dates are made texts by `units` before they are put in.
constexpr std::size_t placesOf(std::string_view text) {
    std::size_t places = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '{' && text[i] != '}')
            continue;
        if (i + 1 < text.size() && text[i + 1] == text[i]) {
            ++i;
            continue;
        }
        std::size_t number = places;
        if (i + 2 < text.size() && text[i + 1] >= '0' && text[i + 1] <= '9')
            number = static_cast<std::size_t>(text[++i] - '0');
        if (text[i] == '}' || i + 1 >= text.size() || text[i + 1] != '}')
            throw "a brace in a text is neither a place nor doubled";
        ++i;
        places = number + 1 > places ? number + 1 : places;
    }
    return places;
}

} // namespace quobrix
