#include "messages/reminders.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "TIOSpreadsheetReminderColumn";
constexpr std::int64_t kAWhile = 14 * 86400; // s

constexpr ReminderSpec kReminders[] = {
#define REMINDER(Key, Label, ...) {#Key, SourceText(Label)},
#include "messages/reminders.def"
#undef REMINDER
};

namespace reminder_messages {
using enum MessageId;
#define REMINDER(Key, Label, ...) constexpr MessageId k##Key[] = {__VA_ARGS__};
#include "messages/reminders.def"
#undef REMINDER
} // namespace reminder_messages

constexpr std::span<const MessageId> kReminderMessages[] = {
#define REMINDER(Key, Label, ...) reminder_messages::k##Key,
#include "messages/reminders.def"
#undef REMINDER
};

std::string choiceName(std::string_view key) { return "Value " + std::string(key); }
std::string shownName(std::string_view key) { return "Shown " + std::string(key); }

} // namespace

std::span<const ReminderSpec> allReminders() { return kReminders; }

std::optional<std::string_view> reminderKey(MessageId message) {
    for (std::size_t i = 0; i < std::size(kReminders); ++i)
        if (std::ranges::find(kReminderMessages[i], message) != kReminderMessages[i].end())
            return kReminders[i].key;
    return {};
}

Reminders::Reminders(Settings& settings, Clock clock) : settings_(settings), clock_(std::move(clock)) {}

ReminderChoice Reminders::choice(std::string_view key) const {
    const std::int32_t stored = settings_.getInteger(kSection, choiceName(key), 0);
    const bool known = stored >= 0 && stored < static_cast<std::int32_t>(kReminderChoiceTexts.size());
    return known ? static_cast<ReminderChoice>(stored) : ReminderChoice::EveryTime;
}

void Reminders::setChoice(std::string_view key, ReminderChoice choice) {
    const bool initial = choice == ReminderChoice::EveryTime;
    settings_.setInteger(kSection, choiceName(key), initial ? kMissingInteger : static_cast<std::int32_t>(choice));
}

bool Reminders::shouldRemind(std::string_view key) const {
    switch (choice(key)) {
    case ReminderChoice::OncePerSession:
        return !shown_.contains(key);
    case ReminderChoice::AfterAWhile: {
        const std::int64_t ago = clock_() - settings_.getInteger(kSection, shownName(key), 0);
        return ago > kAWhile || ago < 0; // a time to come is that of a clock that was wrong
    }
    case ReminderChoice::Never:
        return false;
    case ReminderChoice::EveryTime:
        break;
    }
    return true;
}

void Reminders::reminded(std::string_view key) {
    shown_.emplace(key);
    const std::int64_t now = std::clamp<std::int64_t>(clock_(), 0, std::numeric_limits<std::int32_t>::max());
    settings_.setInteger(kSection, shownName(key), static_cast<std::int32_t>(now));
}

} // namespace quobrix
