#include "device/ui/logger_session.h"

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>

namespace quobrix {

LoggerSession::LoggerSession(LoggerLink& link, Settings& settings, Prompter& prompter, TQuobrixDocument& document,
                             QWidget& window)
    : link_(link), settings_(settings), prompter_(prompter), document_(document), window_(window), progress_(window),
      worker_(
          link,
          [this](std::shared_ptr<const LoggerStatus> status) {
              QMetaObject::invokeMethod(
                  this,
                  [this, news = std::move(status)] {
                      if (*news == *status_)
                          return;
                      status_ = news;
                      emit statusChanged();
                  },
                  Qt::QueuedConnection);
          },
          TPollingThread::Times{}),
      calls_(worker_) {}

LoggerSession::~LoggerSession() { worker_.stop(); }

LoggerNames LoggerSession::names() const {
    return [this](const std::string& serialText) { return document_.loggers().nameOf(serialText); };
}

std::string LoggerSession::statusText() const {
    return link_.hasLibrary() ? portStatusText(*status_, names()) : "No logger library";
}

void LoggerSession::scanPorts() {
    PortFlows flows(calls_, prompter_, settings_, names());
    if (!link_.hasLibrary()) {
        flows.scanOrChoose(); // says what is missing
        return;
    }
    QDialog wait(&window_);
    wait.setObjectName(QStringLiteral("openingPort"));
    wait.setAccessibleName(QStringLiteral("Opening Port"));
    wait.setWindowTitle(QStringLiteral("Quobrix"));
    auto* layout = new QVBoxLayout(&wait);
    auto* label = new QLabel(QStringLiteral("Opening Port"));
    label->setMinimumWidth(220);
    layout->addWidget(label);
    auto* bar = new QProgressBar;
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setAccessibleName(QStringLiteral("Opening Port"));
    layout->addWidget(bar);
    bool found = false;
    QTimer::singleShot(100, &wait, [&] {
        found = flows.scan();
        wait.done(found ? QDialog::Accepted : QDialog::Rejected);
    });
    wait.exec();
    if (!found && prompter_.ask(makeMessage(MessageId::NoPortDetected)) == Answer::Yes)
        flows.choosePort();
    if (!polling_) {
        polling_ = true;
        worker_.resume();
    }
}

void LoggerSession::choosePort() { PortFlows(calls_, prompter_, settings_, names()).choosePort(); }

std::optional<MergeResult> LoggerSession::download(Download::Hooks hooks) {
    return Download(calls_, prompter_, settings_, progress_, names(), std::move(hooks)).run(document_);
}

} // namespace quobrix
