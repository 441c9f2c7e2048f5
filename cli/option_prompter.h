#pragma once

#include "messages/prompter.h"

#include <set>
#include <string>
#include <vector>

namespace quobrix::cli {

/// Never waits for a person: a question is answered with no, unless it is among those to be answered with yes, and a
/// choice is not made. What a command has to say goes to standard error.
class OptionPrompter final : public Prompter {
public:
    /// YES_TO: keys of messages. VEHICLE: that of trips which told no VIN; empty: none.
    explicit OptionPrompter(std::set<std::string> yesTo, std::string vehicle = {})
        : yesTo_(std::move(yesTo)), vehicle_(std::move(vehicle)) {}

    Answer ask(const Message& question) override;
    std::optional<std::size_t> chooseAction(const Message& question, const std::vector<SourceText>& actions) override;
    void tell(const Message& statement) override;
    std::optional<std::size_t> choose(SourceText what, const std::vector<std::string>& choices,
                                      std::size_t preset) override;
    using Prompter::fillIn;
    bool fillIn(UnidentifiedVehicleForm& form) override;

    /// The person at the other end knows why the command ended: something was told since the beginning.
    bool told() const { return told_; }

private:
    std::set<std::string> yesTo_;
    std::string vehicle_;
    bool told_ = false;
};

/// The keys of the questions that a download may ask and an option may answer.
std::vector<std::string> questionKeys();

} // namespace quobrix::cli
