#pragma once

#include "app/about_box.h"
#include "app/commands.h"
#include "app/dialog_prompter.h"
#include "app/missing_files.h"
#include "app/page_area.h"
#include "app/recent_files.h"
#include "app/record_export.h"
#include "units/unit_system.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>
#include <vector>

class QLabel;
class QToolBar;

namespace quobrix {

class ListDialog;
class NavigationPane;
class ReadinessWindow;
class Splitter;
class SummaryLogDialog;
class TableWindows;
class TripTypeWindow;
class TripCounter;

/// The page ids that commands bring into view are those of the commands.
inline constexpr int kHomePage = static_cast<int>(CommandId::Home);
inline constexpr int kTripLogPage = static_cast<int>(CommandId::TripLog);

/// The main window: menu bar, toolbar, pages with the list of them, and a status bar with the prompts and the state of
/// the port.
class TQuobrixFrame : public QMainWindow, private TableEditsListener, private UnitsListener {
public:
    /// All of CONTEXT must outlive the frame.
    explicit TQuobrixFrame(const ViewContext& context);
    ~TQuobrixFrame() override;

    const ViewContext& context() const { return context_; }
    Commands& commands() { return *commands_; }
    PageArea& pages() { return *pages_; }
    Prompter& prompter() { return prompter_; }
    DocumentFiles& files() { return files_; }
    RecentFiles& recentFiles() { return recent_; }
    TableWindows& tableWindows() { return *tableWindows_; }

    /// The dialogs of lists that are open: names, fuel entries.
    QList<ListDialog*> listDialogs() const;

    /// Adds a page; a command of the same id then shows it, and the navigation pane leads there. COUNT (none: nothing
    /// is counted) says how much there is on it.
    void addPage(int pageId, PageArea::Create create, std::function<QString()> count = {});
    /// Rows of the document or names have changed: everything that shows them does so anew.
    void documentChanged();
    /// Says TEXT in the status bar, as far as it has room beside what always stands there; until something else is
    /// said, or so long.
    void say(const QString& text, int milliseconds = 0);
    void setPortStatus(const QString& text);
    /// What is wrong with the logger, beside the state of its port; nothing if TEXT is empty. TIP: what to do about it.
    void setWarning(const QString& text, const QString& tip);
    /// Opens PATH as the document, from the shell, a drop or the recent files, as one guarded command.
    void openFile(const std::filesystem::path& path);
    /// Marks those recent files as MISSING that are among them, no others.
    void markMissingFiles(const std::vector<std::filesystem::path>& missing);
    /// Asks MAY_CLOSE before the window closes, after the document has been settled; false keeps it open.
    void beforeClosing(std::function<bool()> mayClose) { beforeClosing_.push_back(std::move(mayClose)); }
    /// Called when the document is on disk as it is.
    void whenSaved(std::function<void()> saved) { whenSaved_ = std::move(saved); }
    /// Called after every edit, undo and redo.
    void whenEdited(std::function<void()> edited) { whenEdited_ = std::move(edited); }
    /// Called when the document is about to be another one.
    void whenReplaced(std::function<void()> replaced) { whenReplaced_ = std::move(replaced); }
    /// Has the trips of the document counted by COUNTER from now on; before the first page is shown.
    void countBy(TripCounter& counter);
    FileChooser& chooser() { return chooser_; }
    /// Called with a report that a person wants to keep as a file.
    void whenReportWanted(std::function<void(Report)> save) { saveReport_ = std::move(save); }
    /// Runs WORK on another thread, and paints meanwhile.
    Result<void> runDisk(const DiskWork& work);
    /// Lines that the About box shows below the program's own (the logger's versions).
    void setAboutLines(std::function<AboutLines()> lines);

protected:
    /// Of the right mouse button on the menu bar and the toolbar.
    QMenu* createPopupMenu() override;
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    /// The buttons of the mouse that lead back and forward, wherever in the window it is.
    bool eventFilter(QObject* object, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void tableChanged(const TableChange& change) override {
        objectsMoved_ = objectsMoved_ || change.kind == TableChange::Kind::Objects;
    }
    void historyChanged() override;
    void unitsChanged(UnitsChange, std::optional<UnitTypeId>) override;
    void addHandlers();
    void addWayHandlers();
    void addExport();
    void addPart(CommandId toggle, QWidget& part);
    void addLogPage(const LogSpec& log);
    void addView(CommandId button, const LogSpec& log, const LogViewSpec& view);
    void addRecentFileActions();
    void updateRecentFiles();
    void updateTitle();
    void documentOutdated();
    void damageMet();
    bool finishEdits();
    void showDiagnosticsMenu(bool shown);
    void showProperties();
    void showAboutBox();
    void showSummaryLog();
    void editTypes();
    void showTypeReport();
    void showReadiness();
    void restoreWindow();
    void rememberWindow();

    ViewContext context_;
    Reminders reminders_;
    DialogPrompter prompter_;
    SpreadsheetWindows windows_;
    DialogFileChooser chooser_;
    RecentFiles recent_;
    DocumentFiles files_;
    RecordExport export_;
    Commands* commands_;
    PageArea* pages_;
    NavigationPane* navigation_;
    Splitter* splitter_;
    QToolBar* toolBar_;
    QMenu* toolBarMenu_; ///< what its menus have
    std::unique_ptr<TableWindows> tableWindows_;
    QPointer<SummaryLogDialog> summaryLog_;
    QPointer<TripTypeWindow> typeReport_;
    QPointer<ReadinessWindow> readiness_;
    QLabel* readOnlyStatus_;
    QLabel* warningMark_;
    QLabel* warning_;
    QLabel* portStatus_;
    std::vector<QAction*> recentActions_;
    std::vector<std::filesystem::path> missingFiles_; ///< of the recent ones, when they were last looked for
    MissingFiles lookForFiles_{[this](const auto& missing) { markMissingFiles(missing); }};
    std::function<void()> whenSaved_, whenEdited_, whenReplaced_;
    std::function<void(Report)> saveReport_;
    std::vector<QAction*> printing_;
    std::function<AboutLines()> aboutLines_;
    std::vector<std::function<bool()>> beforeClosing_;
    bool busy_ = false;
    bool tellsDamage_ = false;  ///< soon
    bool objectsMoved_ = false; ///< by the edit that is being told
};

} // namespace quobrix
