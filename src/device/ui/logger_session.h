#pragma once

#include "device/flow_context.h"
#include "device/polling_thread.h"
#include "device/ui/timed_progress_dialog.h"
#include "device/ui/worker_calls.h"

#include <QObject>

#include <memory>

class QWidget;

namespace quobrix {

/// The logger as the window sees it: the worker, its latest status, and the commands that need the logger. Each command
/// runs on the user-interface thread and returns when it is over.
class LoggerSession final : public QObject {
    Q_OBJECT

public:
    struct Times {
        TPollingThread::Times polling{};
        WorkerCalls::Times calls{};
        WallClock clock = wallClock;
        int progressHaste = 1; ///< how many times faster the progress of what is done is shown
    };

    /// WINDOW is the parent of its dialogs. LINK must outlive the session, the other arguments all but its destructor.
    LoggerSession(LoggerLink& link, Settings& settings, Prompter& prompter, TQuobrixDocument& document, QWidget& window,
                  Times times);
    /// Stops the worker and closes the port.
    ~LoggerSession() override;

    /// The latest news of the worker; what commands and status bar go by.
    const LoggerStatus& status() const { return *status_; }
    /// For the status bar.
    std::string statusText() const;

    /// Looks for the logger on the ports, and lets the worker poll from then on.
    void scanPorts();
    /// What the flows of the logger work with.
    FlowContext flows() const { return {calls_, prompter_, settings_, progress_, names(), document_}; }
    /// The logger may hold what is not in the document.
    void noteLogsDoubtful() {
        worker_.submit([](LockedLogger& logger) { logger.noteLogsDoubtful(); });
    }
    bool hasLibrary() const { return link_.hasLibrary(); }
    /// For the About box.
    std::string libraryVersion() const;

signals:
    void statusChanged();

private:
    LoggerNames names() const;

    LoggerLink& link_;
    Settings& settings_;
    Prompter& prompter_;
    TQuobrixDocument& document_;
    std::shared_ptr<const LoggerStatus> status_ = std::make_shared<const LoggerStatus>();
    mutable TimedProgressDialog progress_;
    bool polling_ = false;
    TPollingThread worker_; // after all that its news reach
    mutable WorkerCalls calls_;
};

} // namespace quobrix
