#include "app/quobrix_app.h"

#include "app/theme.h"
#include "app/user_locale.h"
#include "base/ui/qt_text.h"
#include "platform/paths.h"
#include "settings/file_settings.h"
#include "texts/text.h"
#include "texts/ui/catalogue_translator.h"
#include "ui/windows.h"
#include "units/date_time.h"

#include <QIcon>
#include <QTimer>
#include <QWindow>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

// A window that is minimized as it starts is never seen.
constexpr int kShownInterval = 10; // ms
constexpr int kShownAttempts = 200;

/// Empty if the user has no home.
fs::path eventLogFile() {
    const fs::path data = userDataFolder();
    return data.empty() ? data : data / "eventLog.txt";
}

/// The file that ARGUMENTS (the program's own first) name, made absolute while the folder of the start is current.
fs::path fileNamed(const QStringList& arguments) {
    for (const QString& argument : arguments.mid(1))
        if (!argument.isEmpty() && !argument.startsWith(QLatin1Char('-'))) {
            std::error_code ignored;
            return fs::absolute(toPath(argument), ignored).lexically_normal();
        }
    return {};
}

} // namespace

TQuobrixApp::TQuobrixApp(int& argc, char** argv)
    : QApplication(argc, argv),
      events_(LogFile(eventLogFile()), [zone = TimeZone::local()] { return logTimeText(zone.toLocal(currentTime())); }),
      commandLineGiven_(arguments().size() > 1), commandLineFile_(fileNamed(arguments())),
      libraryPath_(loggerLibraryPath(programFolder(executablePath()))), dataFolder_(deliveredFolder()),
      settings_(userSettings()), instance_(userConfigFolder()),
      unitStore_(units_, {dataFolder_, userDataFolder()}, &settings_), zone_(TimeZone::local()) {
    setOrganizationName(QStringLiteral("Halvern"));
    setApplicationName(QStringLiteral("Quobrix"));
    setApplicationVersion(QStringLiteral(QUOBRIX_VERSION));
    setDesktopFileName(QStringLiteral("quobrix"));
    installTranslator(new CatalogueTranslator(this));
}

TQuobrixApp::~TQuobrixApp() {
    if (frame_)
        events_.note(text(TextId::EventEnded));
}

bool TQuobrixApp::start() {
    enterWorkingFolder();
    if (!instance_.first() && (commandLineFile_.empty() || instance_.handOver(commandLineFile_)))
        return false;
    events_.note(text(TextId::EventStarted, QUOBRIX_VERSION));
    applyTheme(*this, settings_);
    setWindowIcon(QIcon(QStringLiteral(":/icons/quobrix.svg")));
    units_.setLocale(userLocale());
    const std::optional<Message> unitsProblem = unitStore_.loadAtStartUp();
    document_ = std::make_unique<TQuobrixDocument>();
    createFrame();
    instance_.receive(
        [this](const fs::path& file, const SingleInstance::Opened& opened) { openWhenIdle(file, opened); });
    // Everything that may ask or tell waits until the window is there.
    const auto begin = [this, unitsProblem] {
        if (unitsProblem)
            frame_->prompter().tell(*unitsProblem);
        openStartFile();
        logger_->start();
    };
    whenShown(begin, kShownAttempts);
    return true;
}

void TQuobrixApp::whenShown(const std::function<void()>& next, int attempts) {
    QTimer::singleShot(kShownInterval, frame_.get(), [this, next, attempts] {
        if (attempts > 0 && !frame_->windowHandle()->isExposed())
            whenShown(next, attempts - 1);
        else
            next();
    });
}

void TQuobrixApp::enterWorkingFolder() {
    const fs::path program = programFolder(executablePath());
    std::error_code error;
    fs::current_path(pathFromUtf8(settings_.getText("Default Directory", "Path", utf8(program))), error);
    if (error)
        fs::current_path(program, error);
    connect(this, &QCoreApplication::aboutToQuit, this, [this] {
        std::error_code failed;
        if (const fs::path folder = fs::current_path(failed); !failed)
            settings_.setText("Default Directory", "Path", utf8(folder));
    });
}

void TQuobrixApp::createFrame() {
    summaries_ = std::make_unique<SummaryKeeper>(summaryDatabasePath());
    counter_ = std::make_unique<TripCounter>(*document_, settings_, *summaries_);
    frame_ = std::make_unique<TQuobrixFrame>(ViewContext{*document_, settings_, units_, zone_, &events_});
    frame_->countBy(*counter_);
    unitsCommand_ = std::make_unique<UnitsCommand>(*frame_, units_, unitStore_);
    namesCommands_ = std::make_unique<NamesCommands>(*frame_);
    printCommands_ = std::make_unique<PrintCommands>(*frame_, printerSearch_);
    logger_ = std::make_unique<LoggerCommands>(*frame_, *namesCommands_, loadLoggerLibrary(libraryPath_),
                                               LoggerCommands::Folders{dataFolder_, recoveryFolder(), downloadLog()});
    frame_->pages().show(kHomePage);
    frame_->show();
}

void TQuobrixApp::openStartFile() {
    if (commandLineGiven_) {
        if (!commandLineFile_.empty())
            openWhenIdle(commandLineFile_);
        return;
    }
    if (settings_.getInteger("Example File", "Opened", 0) == 0) {
        firstRun();
        return;
    }
    const std::string last = settings_.getText("Program Config", "Last File Opened");
    std::error_code ignored;
    if (last.empty())
        return;
    if (fs::exists(pathFromUtf8(last), ignored))
        frame_->openFile(pathFromUtf8(last));
    else
        settings_.setText("Program Config", "Last File Opened", "");
}

void TQuobrixApp::firstRun() {
    const fs::path example = dataFolder_ / "Example.car";
    std::error_code ignored;
    if (!dataFolder_.empty() && fs::exists(example, ignored))
        frame_->commands().guard(*frame_->commands().action(CommandId::Open), [&] {
            if (!frame_->files().openExample(example))
                return;
            frame_->prompter().tell(makeMessage(MessageId::ExampleFile));
            frame_->pages().show(kTripLogPage);
        });
    settings_.setInteger("Example File", "Opened", 1);
}

void TQuobrixApp::openWhenIdle(const fs::path& file, const SingleInstance::Opened& opened) {
    if (!frame_->isVisible()) // closed: the program is ending
        return;
    if (activeModalWidget() || frame_->commands().running()) { // the document must not change under an open question
        QTimer::singleShot(200, frame_.get(), [this, file, opened] { openWhenIdle(file, opened); });
        return;
    }
    frame_->setWindowState(frame_->windowState() & ~Qt::WindowMinimized);
    bringToFront(*frame_);
    frame_->openFile(file);
    if (opened)
        opened();
}

} // namespace quobrix
