#include "messages/reminders.h"

#include <gtest/gtest.h>

#include <set>

namespace quobrix {
namespace {

constexpr std::int64_t kDay = 86400;
constexpr MessageId kAllMessages[] = {
#define MESSAGE(Id, StringId, Title, Buttons, Text) MessageId::Id,
#include "messages/messages.def"
#undef MESSAGE
};

class RemindersTest : public testing::Test {
protected:
    Reminders session() {
        return {settings_, [this] { return now_; }};
    }

    std::int64_t now_ = 1'700'000'000;
    Settings settings_{std::make_unique<MemorySettings>()};
};

TEST_F(RemindersTest, RemindEveryTimeUntilToldOtherwise) {
    Reminders reminders = session();
    reminders.reminded("Key");
    EXPECT_TRUE(reminders.shouldRemind("Key"));
    reminders.setChoice("Key", ReminderChoice::Never);
    EXPECT_FALSE(reminders.shouldRemind("Key"));
    EXPECT_TRUE(reminders.shouldRemind("Other"));
    EXPECT_FALSE(session().shouldRemind("Key"));
    reminders.setChoice("Key", ReminderChoice::EveryTime);
    EXPECT_TRUE(reminders.shouldRemind("Key"));
}

TEST_F(RemindersTest, RemindOnceInEverySession) {
    Reminders reminders = session();
    reminders.setChoice("Key", ReminderChoice::OncePerSession);
    EXPECT_TRUE(reminders.shouldRemind("Key"));
    reminders.reminded("Key");
    EXPECT_FALSE(reminders.shouldRemind("Key"));
    EXPECT_TRUE(session().shouldRemind("Key"));
}

TEST_F(RemindersTest, RemindAfterMoreThanTwoWeeks) {
    Reminders reminders = session();
    reminders.setChoice("Key", ReminderChoice::AfterAWhile);
    EXPECT_TRUE(reminders.shouldRemind("Key")) << "never shown yet";
    reminders.reminded("Key");
    now_ += 14 * kDay;
    EXPECT_FALSE(session().shouldRemind("Key"));
    now_ += 1;
    EXPECT_TRUE(session().shouldRemind("Key"));
    reminders.reminded("Key");
    now_ -= 30 * kDay;
    EXPECT_TRUE(session().shouldRemind("Key")) << "shown at a time to come: the clock has been put right";
}

TEST_F(RemindersTest, AnUnknownChoiceCountsAsNone) {
    for (const int stored : {-1, 4, 1000}) {
        settings_.setInteger("TIOSpreadsheetReminderColumn", "Value Key", stored);
        EXPECT_EQ(session().choice("Key"), ReminderChoice::EveryTime) << stored;
    }
}

TEST(ReminderTable, KeysAreUniqueAndAnswersSafe) {
    std::set<std::string_view> keys;
    std::set<char> mnemonics;
    for (const ReminderSpec& reminder : allReminders()) {
        EXPECT_TRUE(keys.insert(reminder.key).second) << reminder.key;
        const std::string_view label = reminder.label.english();
        const std::size_t mark = label.find('&');
        ASSERT_LT(mark + 1, label.size()) << label;
        EXPECT_TRUE(mnemonics.insert(static_cast<char>(label[mark + 1] | 32)).second) << label;
    }
    int found = 0;
    for (const MessageId message : kAllMessages) {
        if (const auto key = reminderKey(message)) {
            ++found;
            EXPECT_TRUE(keys.contains(*key));
            const MessageButtons buttons = messageSpec(message).buttons;
            EXPECT_TRUE(buttons == MessageButtons::Ok || buttons == MessageButtons::YesNo) << messageSpec(message).key;
        }
    }
    EXPECT_GE(found, static_cast<int>(keys.size()));
}

} // namespace
} // namespace quobrix
