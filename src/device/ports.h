#pragma once

#include "device/logger_calls.h"
#include "messages/prompter.h"
#include "settings/settings.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace quobrix {

/// The ports that can be chosen, in the order in which they are listed and tried.
inline constexpr std::array<const char*, 10> kPortNames = {"COM1", "COM2", "COM3", "COM4", "COM5",
                                                           "COM6", "COM7", "COM8", "COM9", "COM10"};

/// The port remembered in the settings; "COM1" when none is.
std::string defaultPort(const Settings& settings);

/// The name that the user gave a logger; empty when it has none.
using LoggerNames = std::function<std::string(const std::string& serialText)>;

/// A logger as the user knows it: by its name, or by its serial text.
std::string loggerLabel(const LoggerStatus& status, const LoggerNames& names);

/// The latest probe in words, for the status bar. Before the first port: that there is none.
std::string portStatusText(const LoggerStatus& status, const LoggerNames& names);

/// Why a port could not be opened and what to do, for an OUTCOME that is no success.
Message openFailureMessage(const LoggerOutcome& outcome);

/// What looking for a logger on all ports came to.
enum class ScanResult {
    Found,
    Refused, ///< there is one, on a port that the person does not want
    NotFound,
    Cancelled, ///< the worker will open the default port
};

/// Finds the logger and chooses its port. Each flow runs on the caller's thread, and asks only between two calls. What
/// is cancelled ends without a word.
class PortFlows {
public:
    PortFlows(LoggerCalls& calls, Prompter& prompter, Settings& settings, LoggerNames names);

    /// Tries the default port, then the others in their order, and asks before another port becomes the default.
    /// If none was found the default port stays open where it can be opened.
    ScanResult scan();
    /// Scans, and offers to choose a port when nothing was found; returns whether there is one with a logger, or one
    /// wanted anyway. A missing library is told instead of scanned with.
    bool scanOrChoose();
    /// Lets the user choose a port until one is accepted, which becomes the default, or the choice is cancelled.
    /// Returns whether a port was accepted: a logger answers on it or the user wants it anyway. If none was, the
    /// port that was the current one, or that a scan from within has left, is it again.
    bool choosePort();
    /// Whether a logger answers. If none does and PROMPT is set, all ports are scanned; if there is none either, says
    /// so and offers to choose a port. Every command that needs the logger begins with it.
    bool ensureLogger(bool prompt);

    /// The logger that answers, as its probe found it; otherwise it is looked for and asked for as ensureLogger(true)
    /// does.
    std::optional<LoggerStatus> findLogger();

private:
    /// How opening a port and looking for a logger there went.
    struct Attempt {
        LoggerOutcome open, probe; // the probe's is the open's where that failed
        LoggerStatus status;
    };

    std::optional<Attempt> open(const CallTitle& title, const std::string& port); // nothing if it was cancelled
    void expect(const std::string& port);
    bool accept(const Attempt& attempt);
    void makeDefault(const std::string& port);
    ShownText describe(ScanResult result);
    bool tellMissingLibrary();

    LoggerCalls& calls_;
    Prompter& prompter_;
    Settings& settings_;
    LoggerNames names_;
};

} // namespace quobrix
