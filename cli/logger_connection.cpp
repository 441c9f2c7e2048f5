#include "cli/logger_connection.h"

#include "cli/output.h"
#include "device/ports.h"
#include "platform/paths.h"
#include "texts/text.h"

namespace quobrix::cli {

LoggerConnection::LoggerConnection(const Settings& settings, const std::optional<std::string>& port)
    : link_(loadLoggerLibrary(loggerLibraryPath(programFolder(executablePath())))),
      port_(port ? *port : defaultPort(settings)) {}

bool LoggerConnection::hasLibrary() const {
    if (!link_.hasLibrary())
        complain(text(TextId::CliNoLibrary, link_.libraryProblem()));
    return link_.hasLibrary();
}

bool LoggerConnection::open(LoggerCommand command) {
    if (!hasLibrary())
        return false;
    LockedLogger logger(link_);
    const LoggerOutcome opened = logger.outcome(logger.openPort(port_));
    if (!opened.ok()) {
        complain(text(TextId::WithDetail, port_, openFailureMessage(opened).text));
        return false;
    }
    const LoggerOutcome probed = logger.outcome(logger.probe());
    if (!probed.ok())
        complain(failureMessage(command, probed).text);
    return probed.ok();
}

} // namespace quobrix::cli
