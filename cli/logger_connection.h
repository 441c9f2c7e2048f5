#pragma once

#include "device/logger_link.h"
#include "device/reporter.h"
#include "settings/settings.h"

#include <optional>
#include <string>

namespace quobrix::cli {

/// The logger library, and the port that a command works on.
class LoggerConnection {
public:
    /// PORT: none is the one that the window program uses.
    LoggerConnection(const Settings& settings, const std::optional<std::string>& port);

    /// Whether the library is there; complains if not.
    bool hasLibrary() const;
    /// Whether a logger answers on the port, which then stays open for COMMAND. If not, complains why.
    bool open(LoggerCommand command);
    void close() { LockedLogger(link_).closePort(); }
    LoggerLink& link() { return link_; }

private:
    LoggerLink link_;
    std::string port_;
};

} // namespace quobrix::cli
