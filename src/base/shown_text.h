#pragma once

#include <string>
#include <utility>

namespace quobrix {

/// A text that may be put before a person: text() and counted() make it, in the user's language. What takes one (the
/// detail of an error, a complaint of the command line, a message) takes neither a literal nor a text that was put
/// together on the spot, so that nothing gets past a translation.
class ShownText : public std::string {
public:
    ShownText() = default;
    /// For what is in no language (a name, a path, figures) or comes from elsewhere in the user's (the system's words),
    /// and for texts put together of such and of ShownTexts.
    static ShownText asItIs(std::string text) { return ShownText(std::move(text)); }

private:
    explicit ShownText(std::string text) : std::string(std::move(text)) {}
};

} // namespace quobrix
