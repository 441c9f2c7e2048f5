#pragma once

#include "device/reporter.h"

#include <optional>
#include <string>

namespace quobrix {

/// Reads a logger's configuration and writes it back. Every failure has been told when a function returns.
class ConfigurationFlow {
public:
    ConfigurationFlow(LoggerCalls& calls, Prompter& prompter, ProgressReporter& progress)
        : prompter_(prompter), reporter_(calls, prompter, progress) {}

    /// What the logger has now; nothing if it cannot be read.
    std::optional<LoggerConfiguration> read();

    /// Writes CHANGED to the logger that was read(), and to no other, after looking at whether it may be written; then
    /// reads it back and tells in what the logger differs. True if the logger has it now.
    bool write(const LoggerConfiguration& changed);
    /// Reads the configuration and writes it with the delivered speed bands and thresholds.
    bool writeDefaults();
    /// The logger that was read(): 8 characters.
    const std::string& serialText() const { return serialText_; }

private:
    Prompter& prompter_;
    Reporter reporter_;
    std::string serialText_;
    LoggerConfiguration present_;
};

} // namespace quobrix
