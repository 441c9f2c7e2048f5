#pragma once

#include "messages/forms.h"
#include "messages/message.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

enum class Answer { Yes, No };

/// How a flow of the core reaches the person in front of it. The main frame implements it with dialogs, the command
/// line with its options, tests with a script. Called on the thread that runs the flow, never with the device lock
/// held.
class Prompter {
public:
    virtual ~Prompter() = default;

    /// A yes-or-no question.
    virtual Answer ask(const Message& question) = 0;
    /// A yes-or-no question with a check box BOX, which is MARKED, and afterwards as the person has left it.
    virtual Answer askMarked(const Message& question, SourceText /*box*/, bool& /*marked*/) { return ask(question); }
    /// A question that can be left unanswered (MessageButtons::YesNoCancel): nothing when the person cancels.
    virtual std::optional<Answer> askOrCancel(const Message& question) { return ask(question); }
    /// A question answered by one of ACTIONS (MessageButtons::Actions or Offer; '&' marks their mnemonics), of which
    /// the first loses nothing; nothing when the person cancels. Of MessageButtons::Either the second loses nothing,
    /// and is the answer of who leaves it.
    virtual std::optional<std::size_t> chooseAction(const Message& question,
                                                    const std::vector<SourceText>& actions) = 0;
    /// A statement; returns when it has been taken note of.
    virtual void tell(const Message& statement) = 0;
    /// One of CHOICES, with PRESET marked; nothing when the person cancels. WHAT says what is chosen ("vehicle").
    virtual std::optional<std::size_t> choose(SourceText what, const std::vector<std::string>& choices,
                                              std::size_t preset) = 0;
    /// A form, preset as it comes. False when the person cancels, or nobody is there to fill it in: what is then in it
    /// does not count.
    virtual bool fillIn(SerialPortForm&) { return false; }
    virtual bool fillIn(AlarmForm&) { return false; }
    virtual bool fillIn(DateAndTimeForm&) { return false; }
    virtual bool fillIn(TimeDifferenceForm&) { return false; }
    virtual bool fillIn(UnidentifiedVehicleForm&) { return false; }
};

} // namespace quobrix
