#include "app/main_frame.h"

#include "app/about_box.h"
#include "app/disk_work.h"
#include "app/miscellaneous_dialog.h"
#include "app/navigation_pane.h"
#include "app/properties_dialog.h"
#include "app/table_windows.h"
#include "base/ui/qt_text.h"
#include "model/document_properties.h"
#include "model/quobrix_document.h"
#include "platform/event_log.h"
#include "plots/ui/plot_options_dialog.h"
#include "plots/ui/plot_pane.h"
#include "settings/settings.h"
#include "summary/ui/trip_counter.h"
#include "tables/ui/cell_mark.h"
#include "ui/passing_menu.h"
#include "ui/splitter.h"
#include "ui/windows.h"
#include "units/time_zone.h"
#include "views/home_page.h"
#include "views/list_dialog.h"
#include "views/log_view.h"
#include "views/readiness_window.h"
#include "views/summary_log_dialog.h"
#include "views/trip_type_dialog.h"
#include "views/trip_type_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr std::string_view kWindowSection = "Main Frame";
constexpr int kQuietlyShown = 15'000;     // ms
constexpr int kRecentFileCharacters = 80; // of a recent file in the menu, about

/// The one file of a drag that can be opened; empty otherwise.
QString draggedFile(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    return urls.size() == 1 ? urls.constFirst().toLocalFile() : QString();
}

/// Whether what is dragged is a document, and may stay where it is: whoever moves it would delete it.
bool takeAsCopy(QDropEvent& event) {
    const bool taken = draggedFile(*event.mimeData()).endsWith(QLatin1String(".car"), Qt::CaseInsensitive) &&
                       event.possibleActions().testFlag(Qt::CopyAction);
    event.setDropAction(taken ? Qt::CopyAction : Qt::IgnoreAction);
    event.setAccepted(taken);
    return taken;
}

} // namespace

TQuobrixFrame::TQuobrixFrame(const ViewContext& context)
    : context_(context), reminders_(context.settings, currentTime),
      prompter_(*this, reminders_, context.text(), [this](const QString& text) { say(text, kQuietlyShown); }),
      chooser_(*this), recent_(context.settings),
      files_(context.document, context.settings, recent_, prompter_, chooser_,
             [this](const DiskWork& work) { return runDisk(work); },
             {.replacing =
                  [this] {
                      if (whenReplaced_)
                          whenReplaced_();
                      if (context_.counter)
                          context_.counter->documentReplacing();
                      qDeleteAll(listDialogs());
                      delete typeReport_;
                      delete readiness_;
                      pages_->discard();
                  },
              .replaced =
                  [this] {
                      documentChanged();
                      pages_->restore();
                      if (context_.counter)
                          context_.counter->documentOpened();
                  },
              .saved =
                  [this](bool durable) {
                      if (durable && whenSaved_ && context_.document.hasFile() && !context_.document.modified())
                          whenSaved_();
                      documentChanged();
                  },
              .event =
                  [this](const ShownText& event) {
                      if (context_.events)
                          context_.events->note(event);
                  }}),
      export_(
          context.document, context.text(), prompter_, chooser_, [this](const DiskWork& work) { return runDisk(work); },
          *this, [this](const QString& text) { say(text, kQuietlyShown); }),
      commands_(new Commands([this] { return finishEdits(); },
                             [this](const QAction& action, const std::string& reason) {
                                 prompter_.tell(makeMessage(MessageId::UnexpectedFailure,
                                                            action.iconText().toStdString(), reason));
                             },
                             this)),
      pages_(new PageArea), navigation_(new NavigationPane([this] {
          if (QWidget* page = pages_->page(pages_->current()))
              page->setFocus();
      })),
      splitter_(new Splitter(navigation_, pages_, context.settings)), toolBar_(new QToolBar),
      toolBarMenu_(new QMenu(this)), readOnlyStatus_(new QLabel), warningMark_(new QLabel), warning_(new QLabel),
      portStatus_(new QLabel) {
    setObjectName(QStringLiteral("TQuobrixFrame"));
    setCentralWidget(splitter_);
    setAcceptDrops(true);

    windows_.requirements = [this](const Column& column) { tableWindows_->showRequirements(column); };
    windows_.errors = [this](const Table& table) { tableWindows_->showErrorsOf(table); };
    windows_.source = [this](const CellSource& source) { tableWindows_->showSource(source); };
    windows_.unitSystems = [this] { commands_->trigger(CommandId::Units); };
    context_.prompter = &prompter_;
    context_.windows = &windows_;
    context_.saveReport = &saveReport_;
    printing_ = {commands_->action(CommandId::Print), commands_->action(CommandId::PrintPreview)};
    context_.printing = printing_;
    context_.document.edits().addListener(*this);
    context_.units.addListener(*this);

    toolBar_->setObjectName(QStringLiteral("toolBar"));
    toolBar_->setWindowTitle(tr("Toolbar"));
    toolBar_->setMovable(false);
    addToolBar(toolBar_);
    commands_->fill(*menuBar(), *toolBar_, *toolBarMenu_);
    addActions(toolBarMenu_->actions());
    addActions(toolBar_->actions()); // whose keys are not those of a toolbar that is hidden
    addRecentFileActions();

    readOnlyStatus_->setObjectName(QStringLiteral("readOnlyStatus"));
    readOnlyStatus_->setContentsMargins(0, 0, fontMetrics().averageCharWidth() * 2, 0); // as that of a warning
    statusBar()->addPermanentWidget(readOnlyStatus_);
    warning_->setObjectName(QStringLiteral("loggerWarning"));
    warningMark_->setPixmap(markPixmap(Severity::Recommended, fontMetrics().height(), devicePixelRatioF()));
    warning_->setContentsMargins(0, 0, fontMetrics().averageCharWidth() * 2, 0); // before the text of the port
    for (QLabel* part : {warningMark_, warning_}) {
        statusBar()->addPermanentWidget(part);
        part->hide();
    }
    portStatus_->setObjectName(QStringLiteral("portStatus"));
    statusBar()->addPermanentWidget(portStatus_);

    addPage(kHomePage, [this] {
        return new HomePage(context_, {.download = commands_->action(CommandId::Download),
                                       .open = commands_->action(CommandId::Open),
                                       .create = commands_->action(CommandId::New),
                                       .tripLog = commands_->action(CommandId::TripSummary),
                                       .recent = recentActions_,
                                       .showTrips = [this](const DrivingChoice& choice) {
                                           pages_->show(kTripLogPage, [&choice](Page& page) {
                                               static_cast<LogView&>(page).showOnly(choice);
                                           });
                                       }});
    });
    addHandlers();
    addWayHandlers();
    addExport();
    tableWindows_ = std::make_unique<TableWindows>(*this);
    for (const LogSpec& log : logs())
        addLogPage(log);
    showDiagnosticsMenu(context_.settings.getInteger("Diagnostics", "Menu", 0) != 0);
    context_.document.whenOutdated([this] { // found out in the midst of painting
        QMetaObject::invokeMethod(this, &TQuobrixFrame::documentOutdated, Qt::QueuedConnection);
    });
    context_.document.whenDamaged([this] { // likewise, and perhaps of many objects in a row
        if (!std::exchange(tellsDamage_, true))
            QMetaObject::invokeMethod(this, &TQuobrixFrame::damageMet, Qt::QueuedConnection);
    });
    documentChanged();
    restoreWindow();
    qApp->installEventFilter(this);
}

TQuobrixFrame::~TQuobrixFrame() {
    context_.document.edits().removeListener(*this);
    context_.units.removeListener(*this);
    pages_->whenMoved({});
    context_.document.whenOutdated({});
    context_.document.whenDamaged({});
    qDeleteAll(listDialogs());
    delete summaryLog_;
    delete typeReport_;
    delete readiness_;
    tableWindows_.reset();
    pages_->discard(); // while the actions and the document are still there
}

void TQuobrixFrame::addHandlers() {
    commands_->handle(CommandId::New, [this] { files_.newFile(); });
    commands_->handle(CommandId::Open, [this] { files_.chooseAndOpen(); });
    commands_->handle(CommandId::Save, [this] { files_.save(); });
    commands_->handle(CommandId::SaveAs, [this] { files_.saveAs(); });
    commands_->handle(CommandId::Properties, [this] { showProperties(); });
    commands_->handle(CommandId::Exit, [this] { close(); });
    commands_->handle(CommandId::Miscellaneous,
                      [this] { MiscellaneousDialog(context_.settings, reminders_, this).exec(); });
    commands_->handle(CommandId::PlotOptions, [this] {
        TPlotOptionsDialog(
            context_.text(), context_.settings, [this] { PlotPane::followAll(context_.settings); }, this)
            .exec();
    });
    commands_->handle(CommandId::TripTypeEntry, [this] { editTypes(); });
    commands_->handle(CommandId::TripTypeReport, [this] { showTypeReport(); });
    commands_->handle(CommandId::EmissionsReadiness, [this] { showReadiness(); });
    commands_->handle(CommandId::About, [this] { showAboutBox(); });
    commands_->handle(CommandId::HideDiagnosticsMenu, [this] { showDiagnosticsMenu(false); });
}

/// What leads from page to page.
void TQuobrixFrame::addWayHandlers() {
    commands_->handle(
        CommandId::Back, [this] { pages_->step(-1); }, [this] { return pages_->canStep(-1); });
    commands_->handle(
        CommandId::Forward, [this] { pages_->step(1); }, [this] { return pages_->canStep(1); });
    pages_->whenMoved([this] {
        navigation_->follow(pages_->current());
        commands_->refresh(CommandId::Back);
        commands_->refresh(CommandId::Forward);
        commands_->refresh(CommandId::Export);
    });
    pages_->whenMenuWanted(
        [this](const QPoint& place) { menuBar()->findChild<QMenu*>(QStringLiteral("ViewMenu"))->popup(place); });
    for (QToolButton* button : toolBar_->findChildren<QToolButton*>()) {
        const QAction* action = button->defaultAction();
        if (!action) // what does not fit
            continue;
        button->setObjectName(action->objectName() + QStringLiteral("Button"));
        button->setFocusPolicy(Qt::TabFocus);
        if (action->shortcut().isEmpty())
            button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    }
    addPart(CommandId::NavigationPane, *navigation_);
    addPart(CommandId::ToolBar, *toolBar_);
}

/// What is in view for other programs: on the toolbar of a page, in the menu of any table.
void TQuobrixFrame::addExport() {
    const auto page = [this] { return pages_->page(pages_->current()); };
    commands_->handle(
        CommandId::Export,
        [this, page] {
            if (const std::optional<ExportContent> content = page()->exported())
                export_.run(*content);
        },
        [page] { return page() && page()->canExport(); });
    windows_.exported = [this](TSpreadsheet& table) {
        commands_->guard(*commands_->action(CommandId::Export), [&] { export_.run(exportedFrom(table)); });
    };
}

/// TOGGLE shows and hides a PART of the window, which is remembered.
void TQuobrixFrame::addPart(CommandId toggle, QWidget& part) {
    QAction& action = *commands_->action(toggle);
    const std::string name = action.objectName().toStdString();
    const auto show = [this, &action, &part](bool shown) {
        if (!shown && part.isAncestorOf(QApplication::focusWidget()) && pages_->page(pages_->current()))
            pages_->page(pages_->current())->setFocus();
        part.setVisible(shown);
        action.setChecked(shown);
    };
    show(context_.settings.getInteger(kWindowSection, name, 1) != 0);
    commands_->handle(toggle, [this, name, show, &part] {
        show(part.isHidden());
        context_.settings.setInteger(kWindowSection, name, part.isHidden() ? 0 : 1);
    });
}

QMenu* TQuobrixFrame::createPopupMenu() {
    auto* menu = new PassingMenu("toolBarMenu", *this);
    menu->addActions(toolBarMenu_->actions());
    return menu;
}

void TQuobrixFrame::addPage(int pageId, PageArea::Create create, std::function<QString()> count) {
    pages_->add(pageId, std::move(create));
    int place = 0; // in the navigation pane
    for (const MenuRow& row : menuRows()) {
        if (row.kind != MenuRow::Kind::Page)
            continue;
        if (static_cast<int>(row.id) == pageId) {
            if (!commands_->handled(row.id))
                navigation_->add(place, *commands_->action(row.id), std::move(count));
            commands_->handle(row.id, [this, pageId] {
                if (const Page* shown = pages_->page(pageId); shown && pages_->current() == pageId)
                    pages_->show(pageId, shown->start()); // from a report to the list
                else
                    pages_->show(pageId);
                files_.tellDamage();
            });
        }
        place += commands_->handled(row.id) ? 1 : 0;
    }
}

void TQuobrixFrame::addLogPage(const LogSpec& log) {
    const auto table = [this, &log] { return context_.document.log(log); };
    addPage(
        log.page, [this, &log] { return new LogView(context_, log); },
        [this, table] {
            const auto rows = table() ? static_cast<std::int64_t>(table()->rowCount()) : 0;
            return toQt(context_.units.formatInteger(rows));
        });
    for (const MenuRow& row : menuRows())
        for (const LogViewSpec& view : log.views())
            if (row.kind == MenuRow::Kind::Button && static_cast<int>(row.id) == view.page)
                addView(row.id, log, view);
    tableWindows_->addSource(log.table, [this, &log](std::string_view columnKey, RowIndex row) {
        pages_->show(log.page, [&](Page& page) { page.showCell(columnKey, row); });
        activateWindow();
    });
}

/// BUTTON shows VIEW of a log: one of records that of the latest.
void TQuobrixFrame::addView(CommandId button, const LogSpec& log, const LogViewSpec& view) {
    const bool list = view.kind == LogViewKind::Summary;
    const auto latest = [this, &log] {
        const Table* table = context_.document.log(log);
        const auto row = table ? log.latest(*table) : std::nullopt;
        return row ? std::optional(log.keyOf(*table, *row)) : std::nullopt;
    };
    commands_->handle(
        button,
        [this, &log, &view, list, latest] {
            pages_->show(log.page, PagePlace{view.page, list ? std::nullopt : latest(), list});
            files_.tellDamage();
        },
        [list, latest] { return list || latest(); });
}

void TQuobrixFrame::addRecentFileActions() {
    QAction* place = commands_->action(CommandId::RecentFile);
    for (int i = 0; i < kRecentFileCount; ++i) {
        auto* action = new QAction(this);
        action->setObjectName(QStringLiteral("RecentFile%1").arg(i + 1));
        action->setData(place->data().toInt() + i);
        action->setStatusTip(tr("Opens this file."));
        connect(action, &QAction::triggered, this, [this, i] {
            const auto files = recent_.list();
            if (static_cast<std::size_t>(i) < files.size())
                openFile(files[static_cast<std::size_t>(i)]);
        });
        recentActions_.push_back(action);
        commands_->recentFilesMenu()->insertAction(place, action);
    }
    connect(commands_->recentFilesMenu(), &QMenu::aboutToShow, this, [this] { lookForFiles_.look(recent_.list()); });
}

void TQuobrixFrame::updateRecentFiles() {
    const auto files = recent_.list();
    for (std::size_t i = 0; i < recentActions_.size(); ++i) {
        QAction& action = *recentActions_[i];
        action.setVisible(i < files.size());
        if (i >= files.size())
            continue;
        const std::filesystem::path& file = files[i];
        const bool alike = std::ranges::count(files, file.filename(), &std::filesystem::path::filename) > 1;
        const bool missing = std::ranges::find(missingFiles_, file) != missingFiles_.end();
        QString name = toQtPath(file.filename());
        if (alike)
            name += QStringLiteral(" – ") + toQtPath(file.parent_path());
        const QFontMetrics metrics(commands_->recentFilesMenu()->fontMetrics()); // the tooltip has all of it
        name = metrics.elidedText(name, Qt::ElideMiddle, kRecentFileCharacters * metrics.averageCharWidth());
        if (missing)
            name = tr("%1 (missing)").arg(name);
        action.setText(QStringLiteral("&%1 %2").arg(i + 1).arg(name.replace(QLatin1Char('&'), QLatin1String("&&"))));
        action.setToolTip(toQtPath(file));
        action.setProperty(kMissingProperty, missing);
    }
    QAction* place = commands_->action(CommandId::RecentFile);
    place->setVisible(files.empty());
    place->setStatusTip(tr("Opens this file."));
    place->setToolTip(tr("No file has been opened yet."));
}

void TQuobrixFrame::markMissingFiles(const std::vector<std::filesystem::path>& missing) {
    if (missing == missingFiles_)
        return;
    missingFiles_ = missing;
    updateRecentFiles();
    if (auto* home = dynamic_cast<HomePage*>(pages_->page(kHomePage)))
        home->showRecentFiles();
}

void TQuobrixFrame::countBy(TripCounter& counter) {
    context_.counter = &counter;
    counter.setBusy([this] { return busy_ || commands_->running(); });
    commands_->handle(CommandId::SummaryLog, [this] { showSummaryLog(); });
}

void TQuobrixFrame::updateTitle() {
    const TQuobrixDocument& document = context_.document;
    // The example is never written, whoever may do what with its file.
    const std::optional<Error> reason = document.isExample() ? std::nullopt : document.readOnlyReason();
    setWindowTitle(toQt(document.title()) +
                   (reason ? tr("[*] (Read-Only) - Quobrix") : QStringLiteral("[*] - Quobrix")));
    readOnlyStatus_->setVisible(reason.has_value());
    readOnlyStatus_->setText(reason ? tr("Read-only: %1").arg(toQt(readOnlyText(*reason))) : QString());
    setWindowModified(document.dataChanged() && document.modified() && !document.isExample());
    setWindowFilePath({});
}

void TQuobrixFrame::documentChanged() {
    updateTitle();
    updateRecentFiles();
    lookForFiles_.look(recent_.list());
    commands_->refresh();
    navigation_->refresh();
    pages_->refresh();
    for (ListDialog* dialog : listDialogs())
        dialog->refresh();
}

void TQuobrixFrame::documentOutdated() {
    updateTitle();
    if (!busy_ && !commands_->running())
        commands_->guard(*commands_->action(CommandId::Open), [this] { files_.offerReload(); });
}

/// While something was shown, such as the samples of a trip.
void TQuobrixFrame::damageMet() {
    tellsDamage_ = false;
    updateTitle();
    if (!busy_ && !commands_->running())
        commands_->guard(*commands_->action(CommandId::Open), [this] { files_.tellDamage(); });
}

bool TQuobrixFrame::finishEdits() {
    return pages_->finishEdits() && (!typeReport_ || typeReport_->finishEdit()) &&
           std::ranges::all_of(listDialogs(), [](ListDialog* dialog) { return dialog->finishEdit(); });
}

QList<ListDialog*> TQuobrixFrame::listDialogs() const {
    QList<ListDialog*> dialogs;
    for (QObject* child : children())
        if (auto* dialog = dynamic_cast<ListDialog*>(child))
            dialogs.push_back(dialog);
    return dialogs;
}

void TQuobrixFrame::historyChanged() {
    if (whenEdited_)
        whenEdited_();
    context_.document.forgetUnchanged();
    if (std::exchange(objectsMoved_, false)) // what a page shows may be another object by now, or none
        return documentChanged();
    updateTitle();
    commands_->refresh();
    navigation_->refresh();
    pages_->edited();
}

void TQuobrixFrame::unitsChanged(UnitsChange, std::optional<UnitTypeId>) {
    navigation_->refresh();
    pages_->unitsChanged();
    for (const QWidget* window : QApplication::topLevelWidgets())
        if (window != this)
            retextTables(*window);
}

void TQuobrixFrame::say(const QString& text, int milliseconds) {
    int room = statusBar()->width();
    for (const QWidget* part : {static_cast<QWidget*>(warningMark_), static_cast<QWidget*>(warning_),
                                static_cast<QWidget*>(readOnlyStatus_), static_cast<QWidget*>(portStatus_)})
        if (part->isVisible())
            room = std::min(room, part->x());
    room -= fontMetrics().averageCharWidth() * 3; // between, and before the text
    statusBar()->showMessage(statusBar()->fontMetrics().elidedText(text, Qt::ElideRight, room), milliseconds);
}

bool TQuobrixFrame::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip)
        return QMainWindow::event(event);
    say(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

void TQuobrixFrame::setPortStatus(const QString& text) { portStatus_->setText(text); }

void TQuobrixFrame::setWarning(const QString& text, const QString& tip) {
    warning_->setText(text);
    for (QLabel* part : {warningMark_, warning_}) {
        part->setToolTip(tip);
        part->setVisible(!text.isEmpty());
    }
}

void TQuobrixFrame::openFile(const std::filesystem::path& path) {
    if (commands_->running()) { // the document belongs to that command until it is over
        QTimer::singleShot(200, this, [this, path] { openFile(path); });
        return;
    }
    commands_->guard(*commands_->action(CommandId::Open), [this, path] { files_.open(path); });
    updateRecentFiles();
}

void TQuobrixFrame::setAboutLines(std::function<AboutLines()> lines) { aboutLines_ = std::move(lines); }

void TQuobrixFrame::showDiagnosticsMenu(bool shown) {
    menuBar()->findChild<QMenu*>(QStringLiteral("DiagnosticsMenu"))->menuAction()->setVisible(shown);
    if (shown != (context_.settings.getInteger("Diagnostics", "Menu", 0) != 0))
        context_.settings.setInteger("Diagnostics", "Menu", shown ? 1 : 0);
}

void TQuobrixFrame::showProperties() {
    const auto compact = [this] {
        commands_->guard(*commands_->action(CommandId::Properties), [this] { files_.compact(); });
    };
    PropertiesDialog(context_, compact, this).exec();
}

void TQuobrixFrame::showAboutBox() {
    AboutLines lines = programLines();
    if (aboutLines_) {
        const AboutLines more = aboutLines_();
        lines.insert(lines.end(), more.begin(), more.end());
    }
    AboutBox(
        lines, [this] { showDiagnosticsMenu(true); }, this)
        .exec();
}

void TQuobrixFrame::editTypes() {
    const EditedTripTypes edited = editTripTypes(context_, this);
    if (edited.types && typeReport_)
        typeReport_->setTypes(*edited.types);
    if (edited.reportWanted)
        showTypeReport();
}

void TQuobrixFrame::showTypeReport() {
    Result<TripTypes> types = loadTripTypes();
    if (!types)
        return prompter_.tell(textFileMessage(types.error(), kTripTypesFile));
    inFront(typeReport_, *this,
            [&](QWidget* parent) { return new TripTypeWindow(context_, *std::move(types), parent); });
}

void TQuobrixFrame::showReadiness() {
    Result<std::vector<Monitor>> monitors = loadMonitors();
    if (!monitors)
        return prompter_.tell(textFileMessage(monitors.error(), kMonitorsFile));
    inFront(readiness_, *this,
            [&](QWidget* parent) { return new ReadinessWindow(context_, *std::move(monitors), parent); });
}

void TQuobrixFrame::showSummaryLog() {
    const SummaryKeeper& keeper = context_.counter->keeper();
    if (!keeper.records() && !keeper.problem().empty())
        return prompter_.tell(makeMessage(MessageId::SummariesNotRead, keeper.problem()));
    if (keeper.records() && keeper.records()->empty())
        return prompter_.tell(makeMessage(MessageId::NoSummaries));
    inFront(summaryLog_, *this, [this](QWidget* parent) { return new SummaryLogDialog(context_, parent); });
}

Result<void> TQuobrixFrame::runDisk(const DiskWork& work) {
    const QScopedValueRollback busy(busy_, true);
    return runWhilePainting(work, this);
}

bool TQuobrixFrame::eventFilter(QObject* object, QEvent* event) {
    if (event->type() != QEvent::MouseButtonPress && event->type() != QEvent::MouseButtonDblClick)
        return false;
    const Qt::MouseButton button = static_cast<QMouseEvent*>(event)->button();
    const auto* widget = qobject_cast<QWidget*>(object);
    if ((button != Qt::BackButton && button != Qt::ForwardButton) || !widget || widget->window() != this)
        return false;
    commands_->trigger(button == Qt::BackButton ? CommandId::Back : CommandId::Forward);
    return true;
}

void TQuobrixFrame::closeEvent(QCloseEvent* event) {
    bool mayClose = false;
    const QAction* running = commands_->running();
    if (!busy_ && (!running || running == commands_->action(CommandId::Exit)))
        commands_->guard(*commands_->action(CommandId::Exit), [&] {
            mayClose = files_.close() && std::ranges::all_of(beforeClosing_, [](const auto& ask) { return ask(); });
        });
    if (mayClose)
        rememberWindow();
    event->setAccepted(mayClose);
}

/// Whoever had the file may have let go of it while the person was in another window.
void TQuobrixFrame::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || busy_ || commands_->running())
        return;
    if (const auto reason = context_.document.readOnlyReason(); reason && reason->kind == ErrorKind::InUse) {
        static_cast<void>(context_.document.tryWriting());
        updateTitle();
    }
}

void TQuobrixFrame::dragEnterEvent(QDragEnterEvent* event) { takeAsCopy(*event); }

void TQuobrixFrame::dropEvent(QDropEvent* event) {
    if (!takeAsCopy(*event))
        return;
    // The program that the file comes from waits for the end of the drop, so it must not wait for a question.
    const std::filesystem::path file = toPath(draggedFile(*event->mimeData()));
    QMetaObject::invokeMethod(
        this, [this, file] { openFile(file); }, Qt::QueuedConnection);
}

void TQuobrixFrame::restoreWindow() {
    if (quobrix::restoreGeometry(*this, context_.settings, kWindowSection))
        return;
    const QSize available = screen()->availableSize();
    resize(QSize(1080, 720).boundedTo(available * 9 / 10));
}

void TQuobrixFrame::rememberWindow() {
    rememberGeometry(*this, context_.settings, kWindowSection);
    splitter_->remember(context_.settings);
}

} // namespace quobrix
