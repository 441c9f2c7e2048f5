#include "cli/option_prompter.h"

#include "cli/output.h"
#include "texts/text.h"

#include <fmt/format.h>

namespace quobrix::cli {
namespace {

constexpr MessageId kQuestions[] = {
#define MESSAGE(...)
#define OPTION_QUESTION(Id, ...) MessageId::Id,
#include "messages/messages.def"
#undef MESSAGE
};

} // namespace

Answer OptionPrompter::ask(const Message& question) {
    const std::string key(messageSpec(question.id).key);
    if (yesTo_.contains(key))
        return Answer::Yes;
    complain(text(TextId::CliAnsweredNo, question.text, key));
    told_ = true;
    return Answer::No;
}

std::optional<std::size_t> OptionPrompter::chooseAction(const Message& question, const std::vector<SourceText>&) {
    complain(question.text);
    told_ = true;
    return {};
}

void OptionPrompter::tell(const Message& statement) {
    complain(statement.text);
    told_ = true;
}

std::optional<std::size_t> OptionPrompter::choose(SourceText what, const std::vector<std::string>&, std::size_t) {
    complain(text(TextId::CliNothingChosen, text(what)));
    told_ = true;
    return {};
}

bool OptionPrompter::fillIn(UnidentifiedVehicleForm& form) {
    form.vehicle = vehicle_;
    return !vehicle_.empty();
}

std::vector<std::string> questionKeys() {
    std::vector<std::string> keys;
    for (const MessageId question : kQuestions)
        keys.emplace_back(messageSpec(question).key);
    return keys;
}

} // namespace quobrix::cli
