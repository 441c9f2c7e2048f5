#include "device/ports.h"

#include "texts/text.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

constexpr const char* kSection = "Serial Ports";
constexpr const char* kDefaultPort = "Default";

constexpr SourceText kOpening("Opening Port");
constexpr SourceText kLooking("Looking for the Quobrix");

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
    if (status.port.empty())
        return text(TextId::NoPortOpened);
    switch (status.probe) {
    case QUOBRIX_OK:
        return text(TextId::LoggerDetected, status.port, loggerLabel(status, names));
    case QUOBRIX_TIMEOUT:
        return text(TextId::NoLoggerDetected, status.port);
    case QUOBRIX_PORT_IN_USE:
        return text(TextId::PortIsInUse, status.port);
    case QUOBRIX_PORT_NOT_OPENED:
        return text(TextId::PortIsNotOpened, status.port);
    case QUOBRIX_PORT_DOES_NOT_EXIST:
        return text(TextId::PortIsNotThere, status.port);
    default:
        return status.probeDescription;
    }
}

PortFlows::PortFlows(LoggerCalls& calls, Prompter& prompter, Settings& settings, LoggerNames names)
    : calls_(calls), prompter_(prompter), settings_(settings), names_(std::move(names)) {}

ScanResult PortFlows::scan() {
    const std::string standard = defaultPort(settings_);
    std::vector<std::string> order{standard};
    std::copy_if(kPortNames.begin(), kPortNames.end(), std::back_inserter(order),
                 [&](const char* port) { return port != standard; });

    const int ports = static_cast<int>(order.size());
    const int steps = ports + 1; // and the default port again
    ScanResult result = ScanResult::NotFound;
    std::optional<PollingPause> pause(std::in_place, calls_);
    const auto cancelled = [&] {
        pause.reset();
        expect(standard);
        return ScanResult::Cancelled;
    };
    for (int step = 0; step < ports; ++step) {
        const std::string& port = order[static_cast<std::size_t>(step)];
        const std::optional<Attempt> attempt = open({text(kOpening), port, step, steps}, port);
        if (!attempt)
            return cancelled();
        if (!attempt->probe.ok())
            continue;
        if (port == standard)
            return ScanResult::Found;
        pause.reset();
        const std::string label = loggerLabel(attempt->status, names_);
        if (prompter_.ask(makeMessage(MessageId::PortDetected, label, port, port, standard)) == Answer::Yes) {
            makeDefault(port);
            return ScanResult::Found;
        }
        result = ScanResult::Refused;
        pause.emplace(calls_);
    }
    // A logger that is plugged into the default port later is found there by the monitoring probe.
    const std::optional<bool> found = calls_.get({text(kOpening), standard, ports, steps}, [&](LockedLogger& logger) {
        if (logger.openPort(standard) != QUOBRIX_OK || logger.cancelled() || logger.probe() != QUOBRIX_OK)
            return false;
        logger.convertLastSerialNumber();
        return true;
    });
    if (!found)
        return cancelled();
    return *found ? ScanResult::Found : result;
}

bool PortFlows::scanOrChoose() {
    if (tellMissingLibrary())
        return false;
    const ScanResult result = scan();
    if (result == ScanResult::Found || result == ScanResult::Cancelled)
        return result == ScanResult::Found;
    return prompter_.ask(makeMessage(MessageId::NoPortDetected)) == Answer::Yes && choosePort();
}

bool PortFlows::choosePort() {
    if (tellMissingLibrary())
        return false;
    const auto before = calls_.get({text(kLooking)}, [](const LockedLogger& logger) { return logger.status().port; });
    if (!before)
        return false;
    std::string settled = before->empty() ? defaultPort(settings_) : *before;
    bool tried = false; // since then
    SerialPortForm form{{kPortNames.begin(), kPortNames.end()}, settled, {}, {}};
    form.choose = [&](const std::string& port) {
        tried = true;
        const std::optional<Attempt> attempt = open({text(kOpening), port}, port);
        if (!attempt || !accept(*attempt))
            return false;
        makeDefault(port);
        return true;
    };
    form.scan = [&] {
        const ScanResult result = scan();
        settled = defaultPort(settings_);
        tried = false;
        if (result == ScanResult::Found)
            form.port = settled;
        return describe(result);
    };
    const bool accepted = prompter_.fillIn(form);
    if (!accepted && tried)
        expect(settled);
    return accepted;
}

ShownText PortFlows::describe(ScanResult result) {
    switch (result) {
    case ScanResult::Found:
        if (const auto status =
                calls_.get({text(kLooking)}, [](const LockedLogger& logger) { return logger.status(); }))
            return text(TextId::ScanFound, loggerLabel(*status, names_), status->port);
        return {};
    case ScanResult::Refused:
        return text(TextId::ScanFoundNoOther, defaultPort(settings_));
    case ScanResult::NotFound:
        return text(TextId::ScanFoundNone);
    case ScanResult::Cancelled:
        break;
    }
    return text(TextId::ScanCancelled);
}

bool PortFlows::ensureLogger(bool prompt) {
    const auto probe = [&] {
        return calls_.get({text(kLooking)}, [](LockedLogger& logger) { return logger.probe(); });
    };
    const std::optional<ResultCode> code = probe();
    if (!code || *code == QUOBRIX_OK)
        return code.has_value();
    if (!prompt || tellMissingLibrary())
        return false;
    const ScanResult result = scan();
    if (result != ScanResult::NotFound)
        return result == ScanResult::Found;
    if (prompter_.ask(makeMessage(MessageId::CannotConnect)) != Answer::Yes)
        return false;
    // The port may have been chosen although nothing answers there.
    return choosePort() && probe() == QUOBRIX_OK;
}

std::optional<LoggerStatus> PortFlows::findLogger() {
    if (!ensureLogger(true))
        return {};
    return calls_.get({text(kLooking)}, [](const LockedLogger& logger) { return logger.status(); });
}

std::optional<PortFlows::Attempt> PortFlows::open(const CallTitle& title, const std::string& port) {
    return calls_.get(title, [&](LockedLogger& logger) {
        Attempt attempt;
        attempt.open = attempt.probe = logger.outcome(logger.openPort(port));
        // The first answer tells that someone is there; the second one, on a line that has settled, is kept.
        for (int time = 0; time < 2 && attempt.probe.ok() && !logger.cancelled(); ++time)
            attempt.probe = logger.outcome(logger.probe());
        if (attempt.probe.ok())
            logger.convertLastSerialNumber();
        attempt.status = logger.status();
        return attempt;
    });
}

void PortFlows::makeDefault(const std::string& port) {
    const bool changes = port != defaultPort(settings_);
    settings_.setText(kSection, kDefaultPort, port);
    if (changes)
        calls_.post([port](LockedLogger& logger) { logger.note(text(TextId::EventPort, port)); });
}

void PortFlows::expect(const std::string& port) {
    static_cast<void>(calls_.run({.what = text(kOpening), .where = port, .cancellable = false},
                                 [&](LockedLogger& logger) { logger.expectPort(port); }));
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
    const auto problem =
        calls_.get({text(kLooking)}, [](const LockedLogger& logger) { return logger.libraryProblem(); });
    if (problem && !problem->empty())
        prompter_.tell(makeMessage(MessageId::LibraryMissing, *problem));
    return !problem || !problem->empty();
}

} // namespace quobrix
