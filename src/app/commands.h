#pragma once

#include "app/command_table.h"

#include <QObject>

#include <functional>
#include <map>
#include <string>

class QAction;
class QMenu;
class QMenuBar;
class QToolBar;

namespace quobrix {

/// The commands of menus and toolbar as actions, and the one place through which each of them runs.
///
/// Every action carries the command's name as object name, its id as data, and its prompt as status tip. A command
/// without a handler is disabled, and its tips say that it is not available yet.
class Commands : public QObject {
public:
    /// What a command does. It may throw: the failure is then reported.
    using Run = std::function<void()>;
    /// Whether a command can run now.
    using Available = std::function<bool()>;
    /// Asked before any work begins; false: not now, and the user has been told why.
    using MayRun = std::function<bool()>;
    /// Tells the user that the command ACTION failed, and why.
    using Report = std::function<void(const QAction& action, const std::string& reason)>;

    Commands(MayRun mayRun, Report report, QObject* parent);

    /// Makes RUN the work of the command ID, which is enabled when AVAILABLE (if given) says so.
    void handle(CommandId id, Run run, Available available = {});
    bool handled(CommandId id) const { return entries_.at(id).run != nullptr; }
    QAction* action(CommandId id) const { return entries_.at(id).action; }
    /// Runs the command as its menu entry does: not at all while it is disabled.
    void trigger(CommandId id);
    /// Asks every command whether it is available, after a change of the document or of the logger.
    void refresh();
    void refresh(CommandId id) { refresh(entries_.at(id)); }
    /// Runs WORK, which belongs to ACTION; an exception ends up as one message.
    void guard(const QAction& action, const Run& work);
    /// The action whose work is under way; nothing between commands. While there is one, the document is its alone.
    const QAction* running() const { return running_; }

    /// Fills MENU_BAR with the main menu, TOOL_BAR with the toolbar, and the (empty) menu that this has.
    void fill(QMenuBar& menuBar, QToolBar& toolBar, QMenu& toolBarMenu);
    QMenu* recentFilesMenu() const { return recentFilesMenu_; }

private:
    struct Entry {
        QAction* action = nullptr;
        Run run;
        Available available;
    };

    void addEntry(const MenuRow& row);
    void refresh(Entry& entry);

    MayRun mayRun_;
    Report report_;
    std::map<CommandId, Entry> entries_;
    QMenu* recentFilesMenu_ = nullptr;
    const QAction* running_ = nullptr;
};

} // namespace quobrix
