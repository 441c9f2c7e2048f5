#pragma once

#include "app/about_box.h"
#include "app/configuration_commands.h"
#include "device/download.h"
#include "device/logger_link.h"
#include "device/new_data.h"
#include "device/recovery_folder.h"
#include "device/ui/logger_session.h"
#include "platform/log_file.h"

#include <QPointer>

#include <filesystem>

namespace quobrix {

class NamesCommands;
class TextFileWindow;
class TQuobrixFrame;

/// The commands that need the logger, as the main frame offers them, and the state of the port in its status bar.
class LoggerCommands {
public:
    struct Folders {
        std::filesystem::path delivered;  ///< what is delivered with the program
        std::filesystem::path recoveries; ///< downloads that are not saved yet
        LogFile log{{}};                  ///< with a line on each download
    };

    /// FRAME and NAMES must outlive all but the destructor, which has the worker close the port.
    LoggerCommands(TQuobrixFrame& frame, NamesCommands& names, Result<LoggerLibrary> library, const Folders& folders,
                   LoggerSession::Times times = {});

    /// Looks for the logger as the program starts. Without a library nothing is asked: the first logger command will
    /// say what is missing.
    void start();

private:
    void addCommands();
    MergeFlow::Hooks hooks(NewKeys& toName);
    Download flow(NewKeys& toName);
    void download();
    void importLogs();
    void showLog();
    void tell(const MergeResult& result);
    void offerRecovery();
    void offerRecovery(const KeptDownload& download);
    void setAnomalousVehicle();
    void showMemory();
    const LoggerStatus& status() const { return session_.status(); }
    void showStatus();
    void showMemoryWarning();
    void seeNewData();
    QString loggerName() const;
    /// The library, and what the logger on the port (if there is one) says of itself, for the About box.
    AboutLines aboutLines() const;

    TQuobrixFrame& frame_;
    NamesCommands& names_;
    const std::filesystem::path delivered_;
    const LogFile log_;
    QPointer<TextFileWindow> logWindow_;
    RecoveryFolder recoveries_;
    LoggerLink link_;
    LoggerSession session_;
    ConfigurationCommands configuration_;
    NewDataWatch newData_;
};

} // namespace quobrix
