#pragma once

#include "texts/places.h"
#include "texts/source_text.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace quobrix {

/// Every message of the program, one row of messages.def each.
enum class MessageId {
#define MESSAGE(Id, StringId, Title, Buttons, Text) Id,
#include "messages/messages.def"
#undef MESSAGE
};

/// Which answers a message offers.
enum class MessageButtons {
    Ok,          ///< a statement
    YesNo,       ///< a question; "no" is the safe answer unless the asking flow says otherwise
    YesNoCancel, ///< a question that can also be left unanswered, which is the safe answer
    Actions,     ///< a question whose answers the asking flow names; it can be left unanswered too
    Either,      ///< a question whose answers the asking flow names; leaving it is the second of them
    Offer,       ///< the same, for what was not asked for: left unanswered, it is "not now"
};

/// A row of the string table. The key is the message's name in the help system and in scripts.
struct MessageSpec {
    MessageId id;
    int stringId; ///< 0 where the string table has no number of its own
    std::string_view key;
    SourceText title;
    MessageButtons buttons;
    SourceText text; ///< with places ({}) for arguments
};

inline constexpr MessageSpec kMessages[] = {
#define MESSAGE(Id, StringId, Title, Buttons, Text)                                                                    \
    {MessageId::Id, StringId, #Id, SourceText(Title), MessageButtons::Buttons, SourceText(Text)},
#include "messages/messages.def"
#undef MESSAGE
};

constexpr const MessageSpec& messageSpec(MessageId id) { return kMessages[static_cast<std::size_t>(id)]; }

/// The id of a message that has so many places, which the compiler has counted.
template <std::size_t Places>
class MessageOf {
public:
    consteval MessageOf(MessageId id) : id_(id) {
        if (placesOf(messageSpec(id).text.english()) != Places)
            throw "this message has another number of places";
    }
    constexpr operator MessageId() const { return id_; }

private:
    MessageId id_;
};

/// A message with its places filled in, ready to be shown.
struct Message {
    MessageId id;
    ShownText text;
    ShownText details{}; ///< of a statement, for who asks for them; lines
};

/// With arguments (texts and whole numbers) for the message's places, in the user's language.
template <class... Args>
Message makeMessage(MessageOf<sizeof...(Args)> id, const Args&... args) {
    return {id, fillPlaces(messageSpec(id).text, fmt::make_format_args(args...))};
}

} // namespace quobrix
