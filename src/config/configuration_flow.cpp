#include "config/configuration_flow.h"

#include "config/configuration_codes.h"
#include "config/configuration_rules.h"
#include "config/configuration_text.h"

#include <fmt/format.h>

namespace quobrix {

std::optional<LoggerConfiguration> ConfigurationFlow::read() {
    Reply<LoggerConfiguration> reply;
    std::string serialText;
    const bool done = reporter_.run(LoggerCommand::GetConfiguration, [&](LockedLogger& logger) {
        if (const ResultCode probed = logger.probe(); probed != QUOBRIX_OK)
            return probed;
        serialText = logger.status().serialText;
        reply = logger.configuration();
        return reply.code;
    });
    if (!done)
        return {};
    serialText_ = serialText;
    present_ = reply.value;
    return present_;
}

bool ConfigurationFlow::write(const LoggerConfiguration& changed) {
    if (const auto problem = configurationProblem(changed, present_)) {
        prompter_.tell(*problem);
        return false;
    }
    LoggerOutcome readBack;
    LoggerConfiguration now;
    const bool written = reporter_.runOn(serialText_, LoggerCommand::SetConfiguration, [&](LockedLogger& logger) {
        const ResultCode set = logger.setConfiguration(changed);
        if (set == QUOBRIX_OK) {
            const Reply<LoggerConfiguration> reply = logger.configuration();
            readBack = logger.outcome(reply.code);
            now = reply.value;
        }
        return set;
    });
    if (!written || !reporter_.report(LoggerCommand::GetConfiguration, readBack))
        return false;
    present_ = now;
    const std::vector<std::string> differences = configurationDifferences(now, changed);
    if (!differences.empty())
        prompter_.tell(makeMessage(MessageId::ConfigurationDiffers, fmt::format("{}", fmt::join(differences, "\n"))));
    return differences.empty();
}

bool ConfigurationFlow::writeDefaults() {
    const std::optional<LoggerConfiguration> present = read();
    return present && write(withDefaultLimits(*present));
}

} // namespace quobrix
