#include "app/logger_commands.h"

#include "app/main_frame.h"
#include "app/names_commands.h"
#include "base/ui/qt_text.h"

#include <QStatusBar>

#include <fmt/printf.h>

namespace quobrix {
namespace {

// A box that lists every refused record of a broken memory would not fit on the screen.
constexpr std::size_t kRefusedLinesShown = 12;

std::string resultText(const MergeResult& result) {
    std::string text = result.summary();
    const std::vector<std::string> refused = result.refusedLines();
    for (std::size_t i = 0; i < refused.size() && i < kRefusedLinesShown; ++i)
        text += (i == 0 ? "\n\n" : "\n") + refused[i];
    if (refused.size() > kRefusedLinesShown)
        text += "\n…";
    return text;
}

} // namespace

LoggerCommands::LoggerCommands(TQuobrixFrame& frame, NamesCommands& names, Result<LoggerLibrary> library,
                               LoggerSession::Times times)
    : frame_(frame), names_(names), link_(std::move(library)),
      session_(link_, frame.context().settings, frame.prompter(), frame.context().document, frame, times) {
    frame_.commands().handle(CommandId::Download, [this] { download(); });
    frame_.commands().handle(CommandId::CommunicationsPort, [this] { session_.choosePort(); });
    QObject::connect(&session_, &LoggerSession::statusChanged, &session_, [this] { showStatus(); });
    frame_.setAboutLines([this] { return identityLines(); });
    showStatus();
}

AboutLines LoggerCommands::identityLines() const {
    const LoggerStatus& status = session_.status();
    if (!status.loggerPresent())
        return {};
    const LoggerIdentity& identity = status.identity;
    const auto version = [](const Version& v) { return fmt::sprintf("%d.%02d.%d", v.major, v.minor, v.build); };
    return {{SourceText("Firmware Version"), version(identity.firmware)},
            {SourceText("Bootware Version"), version(identity.boot)},
            {SourceText("Hardware Version"), std::to_string(identity.hardwareVersion)},
            {SourceText("Product Number"), identity.productNumber},
            {SourceText("Serial Number"), identity.serialNumber}};
}

void LoggerCommands::start() {
    if (link_.hasLibrary())
        frame_.commands().guard(*frame_.commands().action(CommandId::CommunicationsPort),
                                [this] { session_.scanPorts(); });
}

void LoggerCommands::download() {
    NewKeys toName;
    const std::optional<MergeResult> result =
        session_.download({.startNewDocument = [this] { return frame_.files().newFile(); },
                           .keysAdded =
                               [this, &toName](const NewKeys& added) {
                                   frame_.documentChanged();
                                   toName = askForNames(added, frame_.prompter());
                               }});
    if (!result)
        return;
    if (result->added() > 0)
        frame_.pages().show(kTripLogPage);
    frame_.statusBar()->showMessage(toQt(result->summary()));
    frame_.prompter().tell(makeMessage(MessageId::DownloadDone, resultText(*result)));
    names_.name(toName);
}

void LoggerCommands::showStatus() { frame_.setPortStatus(toQt(session_.statusText())); }

} // namespace quobrix
