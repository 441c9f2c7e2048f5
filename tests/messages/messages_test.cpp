#include "messages/file_messages.h"

#include <gtest/gtest.h>

#include <set>

namespace quobrix {
namespace {

TEST(Messages, EveryRowIsWhole) {
    std::set<int> stringIds;
    for (const MessageSpec& spec : kMessages) {
        EXPECT_EQ(messageSpec(spec.id).key, spec.key);
        EXPECT_FALSE(spec.text.empty()) << spec.key; // titles may be
        EXPECT_TRUE(spec.stringId == 0 || stringIds.insert(spec.stringId).second) << spec.key;
    }
}

TEST(Messages, EveryFileErrorNamesTheFileAndTheDeed) {
    std::set<std::string> texts;
    for (int kind = 0; kind <= static_cast<int>(ErrorKind::Unsupported); ++kind) {
        const Message message =
            fileMessage({static_cast<ErrorKind>(kind), ShownText::asItIs("detail")}, FileAction::Save, "Żółw 100%.car");
        EXPECT_TRUE(message.text.starts_with("Żółw 100%.car cannot be saved because ")) << message.text;
        EXPECT_TRUE(texts.insert(message.text).second) << message.text;
    }
    EXPECT_TRUE(fileMessage({ErrorKind::NotDurable, ShownText::asItIs("flush")}, FileAction::Save, "a.car")
                    .text.starts_with("a.car has been saved, but the disk has not confirmed it"));
    EXPECT_TRUE(fileMessage({ErrorKind::NotADocument, {}}, FileAction::Save, "/dev/full").text.ends_with("no file."));
    EXPECT_TRUE(fileMessage({ErrorKind::NotFound, {}}, FileAction::Open, "").text.starts_with("No file can be opened"));
}

} // namespace
} // namespace quobrix
