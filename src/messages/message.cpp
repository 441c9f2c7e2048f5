#include "messages/message.h"

#include <array>

namespace quobrix {
namespace {

constexpr MessageSpec kMessages[] = {
#define MESSAGE(Id, StringId, Title, Buttons, Text)                                                                    \
    {MessageId::Id, StringId, #Id, Title, MessageButtons::Buttons, Text},
#include "messages/messages.def"
#undef MESSAGE
};

} // namespace

const MessageSpec& messageSpec(MessageId id) { return kMessages[static_cast<std::size_t>(id)]; }

} // namespace quobrix
