#pragma once

#include "app/about_box.h"
#include "device/logger_link.h"
#include "device/ui/logger_session.h"

#include <filesystem>

namespace quobrix {

class NamesCommands;
class TQuobrixFrame;

/// The commands that need the logger, as the main frame offers them, and the state of the port in its status bar.
class LoggerCommands {
public:
    /// FRAME and NAMES must outlive all but the destructor, which has the worker close the port. DELIVERED is the
    /// folder of what is delivered with the program.
    LoggerCommands(TQuobrixFrame& frame, NamesCommands& names, Result<LoggerLibrary> library,
                   std::filesystem::path delivered, LoggerSession::Times times = {});

    /// Looks for the logger as the program starts. Without a library nothing is asked: the first logger command will
    /// say what is missing.
    void start();

private:
    void addCommands();
    void download();
    void setAnomalousVehicle();
    void showMemory();
    const LoggerStatus& status() const { return session_.status(); }
    void showStatus();
    QString loggerName() const;
    /// What the logger on the port says of itself, for the About box; nothing while there is none.
    AboutLines identityLines() const;

    TQuobrixFrame& frame_;
    NamesCommands& names_;
    const std::filesystem::path delivered_;
    LoggerLink link_;
    LoggerSession session_;
};

} // namespace quobrix
