#pragma once

#include "messages/prompter.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix::testing {

/// Answers from a script and keeps what it was shown. What is not in the script fails the test, and so does what is
/// left of it at the end.
class ScriptedPrompter : public Prompter {
public:
    struct Line {
        MessageId id;
        std::optional<Answer> answer = Answer::Yes; ///< nothing: cancelled
    };

    ScriptedPrompter() = default;
    ScriptedPrompter(std::initializer_list<Line> lines, std::initializer_list<std::string> choices = {})
        : lines_(lines), choices_(choices) {}
    ScriptedPrompter(std::vector<Line> lines, std::vector<std::string> choices)
        : lines_(lines.begin(), lines.end()), choices_(choices.begin(), choices.end()) {}
    ~ScriptedPrompter() override {
        EXPECT_TRUE(lines_.empty()) << "never shown: " << messageSpec(lines_.front().id).key;
        EXPECT_TRUE(choices_.empty()) << "never offered: " << choices_.front();
    }

    Answer ask(const Message& question) override {
        EXPECT_EQ(messageSpec(question.id).buttons, MessageButtons::YesNo);
        return show(question).value_or(Answer::No);
    }
    Answer askMarked(const Message& question, SourceText, bool& marked) override {
        shownMarks.push_back(marked);
        marked = leaves.value_or(marked);
        return ask(question);
    }
    std::optional<Answer> askOrCancel(const Message& question) override {
        EXPECT_EQ(messageSpec(question.id).buttons, MessageButtons::YesNoCancel);
        return show(question);
    }
    /// Takes the script's next choice, as choose() does.
    std::optional<std::size_t> chooseAction(const Message& question, const std::vector<SourceText>& actions) override {
        const MessageButtons buttons = messageSpec(question.id).buttons;
        EXPECT_TRUE(buttons == MessageButtons::Actions || buttons == MessageButtons::Offer ||
                    buttons == MessageButtons::Either);
        std::vector<std::string> texts;
        for (const SourceText& action : actions)
            texts.push_back(text(action));
        return show(question) ? choose({}, texts, 0) : std::nullopt;
    }
    void tell(const Message& statement) override {
        EXPECT_EQ(messageSpec(statement.id).buttons, MessageButtons::Ok);
        show(statement);
    }
    /// Chooses the script's next choice by its text; cancels when the script has none left.
    std::optional<std::size_t> choose(SourceText, const std::vector<std::string>& choices,
                                      std::size_t preset) override {
        presets.push_back(choices.at(preset));
        if (choices_.empty() && !chooses)
            return std::nullopt;
        if (choices_.empty())
            choices_.push_back(*chooses);
        const auto place = std::find(choices.begin(), choices.end(), choices_.front());
        choices_.pop_front();
        EXPECT_NE(place, choices.end());
        return static_cast<std::size_t>(place - choices.begin());
    }

    /// Chooses the script's ports, one after the other until one is accepted, or scans where that says "Scan".
    bool fillIn(SerialPortForm& form) override {
        for (;;) {
            presets.push_back(form.port);
            if (choices_.empty())
                return false;
            const std::string choice = choices_.front();
            choices_.pop_front();
            if (choice == "Scan") {
                shown.push_back(form.scan());
                continue;
            }
            form.port = choice;
            if (form.choose(choice))
                return true;
        }
    }
    bool fillIn(AlarmForm& form) override { return fills(form, alarm); }
    bool fillIn(DateAndTimeForm& form) override { return fills(form, dateAndTime); }
    bool fillIn(TimeDifferenceForm& form) override { return fills(form, timeDifference); }
    bool fillIn(UnidentifiedVehicleForm& form) override { return fills(form, unidentifiedVehicle); }

    // What a person makes of a form; without one it must not come up.
    std::function<bool(AlarmForm&)> alarm;
    std::function<bool(DateAndTimeForm&)> dateAndTime;
    std::function<bool(TimeDifferenceForm&)> timeDifference;
    std::function<bool(UnidentifiedVehicleForm&)> unidentifiedVehicle;
    std::optional<bool> leaves;         ///< a check box marked so; nothing: as it was
    std::optional<std::string> chooses; ///< where the script has no choice
    std::function<void()> whileShown;   ///< what happens before each answer
    std::vector<bool> shownMarks;       ///< of check boxes, as they came up
    std::vector<std::string> shown;     ///< texts of the messages, in order
    std::vector<std::string> presets;

private:
    template <class Form>
    static bool fills(Form& form, const std::function<bool(Form&)>& person) {
        EXPECT_TRUE(person) << "an unscripted form";
        return person && person(form);
    }
    std::optional<Answer> show(const Message& message) {
        shown.push_back(message.text);
        if (whileShown)
            whileShown();
        if (lines_.empty() || lines_.front().id != message.id) {
            ADD_FAILURE() << "unscripted: " << message.text;
            return std::nullopt;
        }
        const std::optional<Answer> answer = lines_.front().answer;
        lines_.pop_front();
        return answer;
    }

    std::deque<Line> lines_;
    std::deque<std::string> choices_;
};

} // namespace quobrix::testing
