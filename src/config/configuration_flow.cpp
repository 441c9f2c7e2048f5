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
    struct Written {
        LoggerOutcome outcome; // of finding the logger and of writing
        std::string found;     // the logger that is there
        LoggerOutcome readBack{};
        LoggerConfiguration now{};
    };
    const std::optional<Written> written =
        calls_.get(Reporter::title(LoggerCommand::SetConfiguration), [&](LockedLogger& logger) {
            const ResultCode probed = logger.probe();
            Written result{logger.outcome(probed), logger.status().serialText};
            if (probed != QUOBRIX_OK || result.found != serialText_)
                return result;
            result.outcome = logger.outcome(logger.setConfiguration(changed));
            if (!result.outcome.ok())
                return result;
            const Reply<LoggerConfiguration> now = logger.configuration();
            result.readBack = logger.outcome(now.code);
            result.now = now.value;
            return result;
        });
    if (!written)
        return false;
    if (written->outcome.ok() && written->found != serialText_) {
        prompter_.tell(makeMessage(MessageId::AnotherLogger, serialText_, written->found));
        return false;
    }
    if (!reporter_.report(LoggerCommand::SetConfiguration, written->outcome) ||
        !reporter_.report(LoggerCommand::GetConfiguration, written->readBack))
        return false;
    present_ = written->now;
    const std::vector<std::string> differences = configurationDifferences(written->now, changed);
    if (!differences.empty())
        prompter_.tell(makeMessage(MessageId::ConfigurationDiffers, fmt::format("{}", fmt::join(differences, "\n"))));
    return differences.empty();
}

bool ConfigurationFlow::writeDefaults() {
    const std::optional<LoggerConfiguration> present = read();
    return present && write(withDefaultLimits(*present));
}

} // namespace quobrix
