#pragma once

#include "messages/message.h"
#include "settings/settings.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace quobrix {

/// How often a person wants to be told of something. The numbers are stored in the settings.
enum class ReminderChoice : std::int32_t {
    EveryTime = 0,
    OncePerSession = 1,
    AfterAWhile = 2, ///< when the last time is more than two weeks ago
    Never = 3,
};

/// What the choices are called, in the order of their numbers.
inline constexpr std::array<SourceText, 4> kReminderChoiceTexts = {
    SourceText("Remind me every time"), SourceText("Remind me once per session"),
    SourceText("Remind me if it's been awhile"), SourceText("Don't remind me again")};

/// A row of reminders.def.
struct ReminderSpec {
    std::string_view key;
    SourceText label; ///< with its mnemonic mark
};

std::span<const ReminderSpec> allReminders();
/// The key of the reminder that MESSAGE belongs to; nothing for a message that is always shown.
std::optional<std::string_view> reminderKey(MessageId message);

/// Which reminders a person still wants to see. The choices lie in the settings, which must outlive this object; a
/// session is its life. User-interface thread only.
class Reminders {
public:
    /// Seconds since 1970.
    using Clock = std::function<std::int64_t()>;

    Reminders(Settings& settings, Clock clock);

    /// EveryTime where nothing else was chosen.
    ReminderChoice choice(std::string_view key) const;
    void setChoice(std::string_view key, ReminderChoice choice);

    /// Whether the reminder is to be shown now.
    bool shouldRemind(std::string_view key) const;
    /// It has been shown.
    void reminded(std::string_view key);

private:
    Settings& settings_;
    Clock clock_;
    std::set<std::string, std::less<>> shown_; ///< in this session
};

} // namespace quobrix
