#include "device/ui/logger_session.h"

#include "texts/text.h"

namespace quobrix {

LoggerSession::LoggerSession(LoggerLink& link, Settings& settings, Prompter& prompter, TQuobrixDocument& document,
                             QWidget& window, Times times)
    : link_(link), settings_(settings), prompter_(prompter), document_(document),
      progress_(window, times.progressHaste), worker_(
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
                                                  times.polling),
      calls_(worker_, window, times.calls) {}

LoggerSession::~LoggerSession() { worker_.stop(); }

LoggerNames LoggerSession::names() const {
    return [this](const std::string& serialText) { return document_.loggers().nameOf(serialText); };
}

std::string LoggerSession::statusText() const {
    return link_.hasLibrary() ? portStatusText(*status_, names()) : text(TextId::NoLoggerLibrary);
}

std::string LoggerSession::libraryVersion() const {
    return link_.hasLibrary() ? link_.libraryVersion() : text(TextId::LibraryNone);
}

void LoggerSession::scanPorts() {
    flows().ports().scanOrChoose();
    if (!polling_) {
        polling_ = true;
        worker_.resume();
    }
}

} // namespace quobrix
