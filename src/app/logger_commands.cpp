#include "app/logger_commands.h"

#include "app/logger_dialogs.h"
#include "app/main_frame.h"
#include "app/names_commands.h"
#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "device/anomalous_vehicles.h"
#include "device/clock_flow.h"
#include "device/download.h"
#include "device/switch_flow.h"

#include <QStatusBar>

#include <fmt/printf.h>

namespace quobrix {
namespace {

// A box that lists every refused record of a broken memory would not fit on the screen.
constexpr std::size_t kRefusedLinesShown = 12;

std::string resultText(const MergeResult& result) {
    std::string text = result.summary();
    const std::vector<ShownText> refused = result.refusedLines();
    for (std::size_t i = 0; i < refused.size() && i < kRefusedLinesShown; ++i)
        text += (i == 0 ? "\n\n" : "\n") + refused[i];
    if (refused.size() > kRefusedLinesShown)
        text += "\n…";
    return text;
}

} // namespace

LoggerCommands::LoggerCommands(TQuobrixFrame& frame, NamesCommands& names, Result<LoggerLibrary> library,
                               std::filesystem::path delivered, LoggerSession::Times times)
    : frame_(frame), names_(names), delivered_(std::move(delivered)), link_(std::move(library)),
      session_(link_, frame.context().settings, frame.prompter(), frame.context().document, frame, times) {
    addCommands();
    QObject::connect(&session_, &LoggerSession::statusChanged, &session_, [this] { showStatus(); });
    frame_.setAboutLines([this] { return identityLines(); });
    showStatus();
}

void LoggerCommands::addCommands() {
    // These two are the first that a person tries: they say what is wrong with the library.
    frame_.commands().handle(CommandId::Download, [this] { download(); });
    frame_.commands().handle(CommandId::CommunicationsPort, [this] { session_.flows().ports().choosePort(); });

    using Available = bool (*)(const LoggerStatus&);
    const auto add = [this](CommandId id, std::function<void()> run, Available available = {}) {
        frame_.commands().handle(id, std::move(run), [this, available] {
            return session_.hasLibrary() && (!available || (status().loggerPresent() && available(status())));
        });
    };
    const auto clearing = [this] { return ClearFlow(session_.flows()); };
    const auto clock = [this] { return ClockFlow(session_.flows(), frame_.context().text()); };
    const auto switches = [this] { return SwitchFlow(session_.flows()); };
    add(CommandId::DisplayMemory, [this] { showMemory(); });
    add(CommandId::ClearMemory, [=] { clearing().clearMemory(); });
    add(CommandId::EnableLed, [=] { switches().toggleLed(); });
    add(
        CommandId::ResetCheckEngineLight, [=] { switches().toggleArmed(); },
        [](const LoggerStatus& logger) { return logger.configFlag; });
    add(
        CommandId::EnableAlarm, [=] { switches().setAlarm(); },
        [](const LoggerStatus& logger) { return logger.newerModel; });
    add(
        CommandId::EnableVinMode, [=] { switches().toggleVinMode(); },
        [](const LoggerStatus& logger) { return hasVinMode(logger.identity.productNumber); });
    add(
        CommandId::SetAnomalousVehicle, [this] { setAnomalousVehicle(); },
        [](const LoggerStatus& logger) { return knowsAnomalousVehicles(logger.identity.productNumber); });
    add(CommandId::SetClock, [=] { clock().synchronize(); });
    add(CommandId::DisplayDateAndTime, [=] { clock().show(); });
    add(CommandId::SetDateAndTime, [=] { clock().enter(); });
    add(CommandId::ClearAccidentLogs, [=] { clearing().clearAccidents(); });
}

void LoggerCommands::setAnomalousVehicle() {
    const std::filesystem::path file = delivered_ / kAnomalousVehiclesFile;
    const Result<std::vector<AnomalousVehicle>> vehicles = loadAnomalousVehicles(file);
    if (!vehicles)
        return frame_.prompter().tell(makeMessage(MessageId::NoAnomalousVehicles, utf8(file), vehicles.error().detail));
    SwitchFlow(session_.flows()).setAnomalousVehicle(*vehicles);
}

void LoggerCommands::showMemory() {
    if (const std::optional<MemoryInformation> memory = SwitchFlow(session_.flows()).memory())
        TMemoryDialog(*memory, loggerName(), frame_.context().units, &frame_).exec();
}

QString LoggerCommands::loggerName() const { return toQt(loggerLabel(status(), session_.flows().names)); }

AboutLines LoggerCommands::identityLines() const {
    if (!status().loggerPresent())
        return {};
    const LoggerIdentity& identity = status().identity;
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
        Download(session_.flows(), {.startNewDocument = [this] { return frame_.files().newFile(); },
                                    .keysAdded =
                                        [this, &toName](const NewKeys& added) {
                                            frame_.documentChanged();
                                            toName = askForNames(added, frame_.prompter());
                                        }})
            .run();
    if (!result)
        return;
    if (result->added() > 0)
        frame_.pages().show(kTripLogPage);
    frame_.statusBar()->showMessage(toQt(result->summary()));
    frame_.prompter().tell(makeMessage(MessageId::DownloadDone, resultText(*result)));
    names_.name(toName);
}

void LoggerCommands::showStatus() {
    frame_.setPortStatus(toQt(session_.statusText()));
    const LoggerReadings& readings = status().readings;
    const std::pair<CommandId, std::optional<bool>> marks[] = {{CommandId::EnableLed, readings.led},
                                                               {CommandId::EnableVinMode, readings.vinMode},
                                                               {CommandId::ResetCheckEngineLight, readings.armed}};
    for (const auto& [id, on] : marks)
        frame_.commands().action(id)->setChecked(on.value_or(false));
    frame_.commands().refresh();
}

} // namespace quobrix
