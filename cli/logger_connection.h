#pragma once

#include "device/logger_link.h"
#include "settings/settings.h"

#include <optional>
#include <string>
#include <string_view>

namespace quobrix::cli {

/// The logger library, and the port that a command works on.
class LoggerConnection {
public:
    /// PORT: none is the one that the window program uses.
    LoggerConnection(const Settings& settings, const std::optional<std::string>& port);

    /// Whether a logger answers on the port, which then stays open. If not, complains why; FAILURE is what that leads
    /// to
    /// ("Unable to download logs").
    bool open(std::string_view failure);
    void close() { LockedLogger(link_).closePort(); }
    LoggerLink& link() { return link_; }

private:
    LoggerLink link_;
    std::string port_;
};

} // namespace quobrix::cli
