#include "device/ports.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

constexpr const char* kSection = "Serial Ports";
constexpr const char* kDefaultPort = "Default";

} // namespace

Message openFailureMessage(const LoggerOutcome& outcome) {
    switch (outcome.code) {
    case QUOBRIX_PORT_IN_USE:
        return makeMessage(MessageId::PortInUse);
    case QUOBRIX_PORT_DOES_NOT_EXIST:
        return makeMessage(MessageId::PortDoesNotExist);
    case kNoLibrary:
        return makeMessage(MessageId::LibraryMissing, outcome.description);
    default:
        return makeMessage(MessageId::PortError, outcome.description);
    }
}

std::string defaultPort(const Settings& settings) {
    return settings.getText(kSection, kDefaultPort, kPortNames.front());
}

std::string loggerLabel(const LoggerStatus& status, const LoggerNames& names) {
    const std::string name = names(status.serialText);
    return name.empty() ? status.serialText : name;
}

std::string portStatusText(const LoggerStatus& status, const LoggerNames& names) {
    switch (status.probe) {
    case QUOBRIX_OK:
        return "Quobrix Detected on " + status.port + " : " + loggerLabel(status, names);
    case QUOBRIX_TIMEOUT:
        return "No Quobrix Detected on " + status.port;
    case QUOBRIX_PORT_IN_USE:
        return status.port + " Is In Use";
    case QUOBRIX_PORT_NOT_OPENED:
        return status.port + " Port Not Opened";
    case QUOBRIX_PORT_DOES_NOT_EXIST:
        return status.port + " Does Not Exist";
    default:
        return status.probeDescription;
    }
}

PortFlows::PortFlows(LoggerCalls& calls, Prompter& prompter, Settings& settings, LoggerNames names)
    : calls_(calls), prompter_(prompter), settings_(settings), names_(std::move(names)) {}

bool PortFlows::scan() {
    const PollingPause pause(calls_);
    const std::string standard = defaultPort(settings_);
    std::vector<std::string> order{standard};
    std::copy_if(kPortNames.begin(), kPortNames.end(), std::back_inserter(order),
                 [&](const char* port) { return port != standard; });

    for (const std::string& port : order) {
        const Attempt attempt = open(port);
        if (!attempt.probe.ok())
            continue;
        if (port == standard)
            return true;
        const std::string label = loggerLabel(attempt.status, names_);
        if (prompter_.ask(makeMessage(MessageId::PortDetected, label, port, port, standard)) == Answer::Yes) {
            settings_.setText(kSection, kDefaultPort, port);
            return true;
        }
    }
    // A logger that is plugged into the default port later is found there by the monitoring probe.
    return calls_.get([&](LockedLogger& logger) {
        logger.openPort(standard);
        const bool found = logger.probe() == QUOBRIX_OK;
        if (found)
            logger.convertLastSerialNumber();
        return found;
    });
}

bool PortFlows::scanOrChoose() {
    if (tellMissingLibrary())
        return false;
    if (scan())
        return true;
    return prompter_.ask(makeMessage(MessageId::NoPortDetected)) == Answer::Yes && choosePort();
}

bool PortFlows::choosePort() {
    const PollingPause pause(calls_);
    const std::vector<std::string> choices(kPortNames.begin(), kPortNames.end());
    std::string current = calls_.get([](const LockedLogger& logger) { return logger.status().port; });
    for (;;) {
        const auto found = std::find(choices.begin(), choices.end(), current);
        const auto preset = found == choices.end() ? 0 : static_cast<std::size_t>(found - choices.begin());
        const auto choice = prompter_.choose("serial port", choices, preset);
        if (!choice || *choice >= choices.size())
            return false;
        current = choices[*choice];
        if (accept(open(current))) {
            settings_.setText(kSection, kDefaultPort, current);
            return true;
        }
    }
}

bool PortFlows::ensureLogger(bool prompt) {
    const auto probe = [](LockedLogger& logger) { return logger.probe(); };
    if (calls_.get(probe) == QUOBRIX_OK)
        return true;
    if (!prompt || tellMissingLibrary() || prompter_.ask(makeMessage(MessageId::CannotConnect)) != Answer::Yes)
        return false;
    // The port may have been chosen although nothing answers there.
    return choosePort() && calls_.get(probe) == QUOBRIX_OK;
}

PortFlows::Attempt PortFlows::open(const std::string& port) {
    return calls_.get([&](LockedLogger& logger) {
        Attempt attempt;
        attempt.open = attempt.probe = logger.outcome(logger.openPort(port));
        // The first answer tells that someone is there; the second one, on a line that has settled, is kept.
        for (int time = 0; time < 2 && attempt.probe.ok(); ++time)
            attempt.probe = logger.outcome(logger.probe());
        if (attempt.probe.ok())
            logger.convertLastSerialNumber();
        attempt.status = logger.status();
        return attempt;
    });
}

bool PortFlows::accept(const Attempt& attempt) {
    if (attempt.probe.ok())
        return true;
    if (attempt.open.ok() && attempt.probe.code == QUOBRIX_TIMEOUT)
        return prompter_.ask(makeMessage(MessageId::UseSerialPortAnyway)) == Answer::Yes;
    prompter_.tell(openFailureMessage(attempt.probe));
    return false;
}

bool PortFlows::tellMissingLibrary() {
    const std::string problem = calls_.get([](const LockedLogger& logger) { return logger.libraryProblem(); });
    if (!problem.empty())
        prompter_.tell(makeMessage(MessageId::LibraryMissing, problem));
    return !problem.empty();
}

} // namespace quobrix
