#pragma once

#include <fmt/printf.h>

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
    Offer,       ///< the same, for what nobody has asked for: left unanswered, it is "not now"
};

/// A row of the string table. The key is the message's name in the help system and in scripts.
struct MessageSpec {
    MessageId id;
    int stringId; ///< 0 where the string table has no number of its own
    std::string_view key;
    std::string_view title;
    MessageButtons buttons;
    std::string_view text; ///< with printf-style places (%s, %i)
};

const MessageSpec& messageSpec(MessageId id);

/// A message with its places filled in, ready to be shown.
struct Message {
    MessageId id;
    std::string text;
};

/// With arguments for the message's places, in order.
template <class... Args>
Message makeMessage(MessageId id, const Args&... args) {
    return {id, fmt::sprintf(messageSpec(id).text, args...)};
}

} // namespace quobrix
