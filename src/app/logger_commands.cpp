#include "app/logger_commands.h"

#include "app/logger_dialogs.h"
#include "app/main_frame.h"
#include "app/names_commands.h"
#include "app/text_file_window.h"
#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "device/anomalous_vehicles.h"
#include "device/clock_flow.h"
#include "device/log_file_import.h"
#include "device/switch_flow.h"
#include "messages/file_messages.h"
#include "ui/windows.h"
#include "units/date_time.h"
#include "units/time_zone.h"

#include <QApplication>
#include <QtMath>

#include <fmt/format.h>
#include <fmt/printf.h>

namespace quobrix {
namespace {

constexpr int kSummaryShown = 20'000; // ms

/// "12 trips, 1 trouble code"
ShownText countsOf(const LogRecords& records) {
    const std::size_t counts[] = {records.trips.size(), records.troubles.size(), records.activities.size(),
                                  records.stops.size()}; // by LogId
    std::vector<std::string> parts;
    for (const LogSpec& log : logs())
        if (const std::uint64_t count = counts[static_cast<std::size_t>(log.id)]; count > 0)
            parts.push_back(counted(log.record, log.records, count));
    return ShownText::asItIs(fmt::format("{}", fmt::join(parts, ", ")));
}

} // namespace

LoggerCommands::LoggerCommands(TQuobrixFrame& frame, NamesCommands& names, Result<LoggerLibrary> library,
                               const Folders& folders, LoggerSession::Times times)
    : frame_(frame), names_(names), delivered_(folders.delivered), log_(folders.log), recoveries_(folders.recoveries),
      link_(std::move(library), times.clock, frame.context().events),
      session_(link_, frame.context().settings, frame.prompter(), frame.context().document, frame, times),
      configuration_(frame, session_), newData_(frame.context().settings) {
    addCommands();
    frame_.whenSaved([this] {
        const RecoveryFolder::Document document = heldBy(frame_.context().document);
        recoveries_.documentSaved(&document);
    });
    frame_.whenReplaced([this] { recoveries_.documentReplaced(); });
    frame_.whenEdited([this] { // what was taken back is on the logger only, if there
        if (recoveries_.undoneSince())
            session_.noteLogsDoubtful();
    });
    QObject::connect(&session_, &LoggerSession::statusChanged, &session_, [this] { showStatus(); });
    frame_.setAboutLines([this] { return aboutLines(); });
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
    add(CommandId::ImportLogFile, [this] { importLogs(); });
    frame_.commands().handle(CommandId::DisplayLog, [this] { showLog(); });
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

AboutLines LoggerCommands::aboutLines() const {
    AboutLines lines{{SourceText("DLL Version"), session_.libraryVersion()}};
    if (!status().loggerPresent())
        return lines;
    const LoggerIdentity& identity = status().identity;
    const auto version = [](const Version& v) { return fmt::sprintf("%d.%02d.%d", v.major, v.minor, v.build); };
    lines.insert(lines.end(), {{SourceText("Firmware Version"), version(identity.firmware)},
                               {SourceText("Bootware Version"), version(identity.boot)},
                               {SourceText("Hardware Version"), std::to_string(identity.hardwareVersion)},
                               {SourceText("Product Number"), identity.productNumber},
                               {SourceText("Serial Number"), identity.serialNumber}});
    return lines;
}

void LoggerCommands::start() {
    frame_.commands().guard(*frame_.commands().action(CommandId::Download), [this] { offerRecovery(); });
    if (link_.hasLibrary())
        frame_.commands().guard(*frame_.commands().action(CommandId::CommunicationsPort),
                                [this] { session_.scanPorts(); });
}

MergeFlow::Hooks LoggerCommands::hooks(NewKeys& toName) {
    return {.startNewDocument = [this] { return frame_.files().newFile(); },
            .keysAdded =
                [this, &toName](const NewKeys& added) {
                    frame_.documentChanged();
                    toName = askForNames(added, frame_.prompter());
                },
            .tellResult = [this](const MergeResult& result) { tell(result); }};
}

Download LoggerCommands::flow(NewKeys& toName) {
    return {session_.flows(),
            frame_.context().text(),
            hooks(toName),
            recoveries_,
            {.chooseAnomalousVehicle = [this] { setAnomalousVehicle(); },
             .log = [this](const std::string& line) { static_cast<void>(log_.append(line)); },
             .runDisk = [this](const DiskWork& work) { return frame_.runDisk(work); }}};
}

void LoggerCommands::download() {
    NewKeys toName;
    flow(toName).run();
    names_.name(toName);
}

void LoggerCommands::importLogs() {
    const std::optional<std::filesystem::path> file = frame_.chooser().chooseLogs();
    if (!file)
        return;
    NewKeys toName;
    LogFileImport(session_.flows(), frame_.context().text(), hooks(toName)).run(*file);
    names_.name(toName);
}

void LoggerCommands::showLog() {
    const auto make = [](QWidget* parent) { return new TextFileWindow(parent); };
    if (!inFront(logWindow_, frame_, make).show(log_.path())) {
        delete logWindow_;
        frame_.prompter().tell(makeMessage(MessageId::NoDownloadLog, utf8(log_.path())));
    }
}

void LoggerCommands::tell(const MergeResult& result) {
    if (result.added() > 0)
        frame_.pages().show(kTripLogPage);
    frame_.say(toQt(result.summary()), kSummaryShown);
    Message message = makeMessage(MessageId::DownloadDone, result.summary());
    message.details = ShownText::asItIs(fmt::format("{}", fmt::join(result.refusedLines(), "\n")));
    frame_.prompter().tell(message);
}

/// Downloads that earlier runs have not saved.
void LoggerCommands::offerRecovery() {
    for (const std::filesystem::path& file : recoveries_.left()) {
        const Result<KeptDownload> download = recoveries_.take(file);
        if (download)
            offerRecovery(*download);
        else if (const ErrorKind why = download.error().kind;
                 why == ErrorKind::NotADocument || why == ErrorKind::Corrupt)
            frame_.prompter().tell(makeMessage(MessageId::DownloadNotRecovered, utf8(recoveries_.setAside(file))));
        else if (why != ErrorKind::InUse)
            frame_.prompter().tell(fileMessage(download.error(), FileAction::Open, utf8(file)));
    }
}

void LoggerCommands::offerRecovery(const KeptDownload& download) {
    const TextContext text = frame_.context().text();
    const std::string time = dateTimeText(text.units, text.zone.toLocal(static_cast<std::int32_t>(download.time)));
    std::string logger = session_.flows().names(download.serialText);
    if (logger.empty())
        logger = download.serialText;
    const auto answer = frame_.prompter().chooseAction(
        makeMessage(MessageId::RecoverDownload, logger, time, countsOf(parseRecords(download.blocks))),
        {SourceText("&Recover"), SourceText("&Later"), SourceText("&Discard")});
    NewKeys toName;
    if (answer == 2u && frame_.prompter().ask(makeMessage(MessageId::DiscardDownload, logger, time)) == Answer::Yes)
        recoveries_.discardTaken();
    else if (answer != 0u || !frame_.files().newFile())
        recoveries_.leaveTaken();
    else
        flow(toName).recover(download);
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
    showMemoryWarning();
    seeNewData();
}

void LoggerCommands::showMemoryWarning() {
    const std::optional<MemoryInformation>& memory = status().readings.memory;
    const bool warns = status().loggerPresent() && memory && memory->nearlyFull();
    frame_.setWarning(
        warns ? QObject::tr("Memory %1 % full").arg(qFloor(100 * memory->share())) : QString(),
        QObject::tr("Download the Quobrix's data and clear its memory before there is no room for more."));
}

void LoggerCommands::seeNewData() {
    const OnNewData choice = onNewData(frame_.context().settings);
    const QWidget* focus = QApplication::focusWidget();
    const bool idle = choice != OnNewData::Nothing && !frame_.commands().running() &&
                      !QApplication::activeModalWidget() && !QApplication::activePopupWidget() &&
                      !(focus && focus->objectName() == QLatin1String("cellEditor"));
    if (newData_.see(status(), idle))
        frame_.commands().guard(*frame_.commands().action(CommandId::Download), [this, choice] {
            if (choice == OnNewData::Download ||
                frame_.prompter().ask(makeMessage(MessageId::NewDataFound, loggerName().toStdString())) == Answer::Yes)
                download();
        });
}

} // namespace quobrix
