#include "messages/file_messages.h"

#include <gtest/gtest.h>

#include <set>

namespace quobrix {
namespace {

constexpr MessageId kAll[] = {
#define MESSAGE(Id, StringId, Title, Buttons, Text) MessageId::Id,
#include "messages/messages.def"
#undef MESSAGE
};

TEST(Messages, EveryRowIsWholeAndItsPlacesAreTexts) {
    std::set<int> stringIds;
    for (const MessageId id : kAll) {
        const MessageSpec& spec = messageSpec(id);
        EXPECT_EQ(spec.id, id);
        EXPECT_FALSE(spec.title.empty() || spec.text.empty()) << spec.key;
        EXPECT_TRUE(spec.stringId == 0 || stringIds.insert(spec.stringId).second) << spec.key;
        // %s takes any argument, so that a wrong type cannot make a message fail.
        for (std::size_t at = spec.text.find('%'); at != std::string_view::npos; at = spec.text.find('%', at + 2))
            EXPECT_TRUE(spec.text.substr(at, 2) == "%s" || spec.text.substr(at, 2) == "%i") << spec.key;
    }
}

TEST(Messages, EveryFileErrorNamesTheFileAndTheDeed) {
    std::set<std::string> texts;
    for (int kind = 0; kind <= static_cast<int>(ErrorKind::Unsupported); ++kind) {
        const Message message =
            fileMessage({static_cast<ErrorKind>(kind), "detail"}, FileAction::Save, "Żółw 100%.car");
        EXPECT_TRUE(message.text.starts_with("Żółw 100%.car cannot be saved because ")) << message.text;
        EXPECT_TRUE(texts.insert(message.text).second) << message.text;
    }
    EXPECT_TRUE(fileMessage({ErrorKind::NotDurable, "flush"}, FileAction::Save, "a.car")
                    .text.starts_with("a.car has been saved, but the disk has not confirmed it"));
    EXPECT_TRUE(fileMessage({ErrorKind::NotFound, {}}, FileAction::Open, "").text.starts_with("No file can be opened"));
}

} // namespace
} // namespace quobrix
