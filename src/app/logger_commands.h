#pragma once

#include "app/about_box.h"
#include "device/logger_link.h"
#include "device/ui/logger_session.h"

namespace quobrix {

class NamesCommands;
class TQuobrixFrame;

/// The commands that need the logger, as the main frame offers them, and the state of the port in its status bar.
class LoggerCommands {
public:
    /// FRAME and NAMES must outlive all but the destructor, which has the worker close the port.
    LoggerCommands(TQuobrixFrame& frame, NamesCommands& names, Result<LoggerLibrary> library,
                   LoggerSession::Times times = {});

    /// Looks for the logger as the program starts. Without a library nothing is asked: the first logger command will
    /// say what is missing.
    void start();

private:
    void download();
    void showStatus();
    /// What the logger on the port says of itself, for the About box; nothing while there is none.
    AboutLines identityLines() const;

    TQuobrixFrame& frame_;
    NamesCommands& names_;
    LoggerLink link_;
    LoggerSession session_;
};

} // namespace quobrix
