#pragma once

#include <QObject>

#include <array>
#include <cstddef>
#include <functional>

class QAction;
class QMenu;
class QWidget;

namespace quobrix {

enum class SpreadsheetCommand : std::size_t {
#define COMMAND(Name, Id, Text, Prompt) Name,
#include "tables/ui/spreadsheet_commands.def"
    Count,
};

/// The commands of one spreadsheet as actions: each has "Spreadsheet" and the command's name as object name, its id as
/// data, its prompt as status tip, and its shortcut within the spreadsheet. A command without a handler is disabled,
/// and its tip says that it is not available yet.
class SpreadsheetCommands : public QObject {
public:
    using Run = std::function<void()>;
    using Available = std::function<bool()>;

    /// The actions are those of OWNER, in which their shortcuts work.
    explicit SpreadsheetCommands(QWidget& owner);

    /// Makes RUN the work of COMMAND, which is enabled while AVAILABLE (if given) says so.
    void handle(SpreadsheetCommand command, Run run, Available available = {});
    /// COMMAND never applies here, for REASON.
    void ruleOut(SpreadsheetCommand command, const QString& reason);
    /// Says what COMMAND would do now, behind its own text: "Undo Download". WHAT may be empty.
    void describe(SpreadsheetCommand command, const QString& what);
    QAction& action(SpreadsheetCommand command) const { return *entries_[static_cast<std::size_t>(command)].action; }
    /// Asks every command whether it is available.
    void refresh();
    /// The menu of all commands.
    QMenu* makeMenu(QWidget& parent) const;

private:
    struct Entry {
        QAction* action = nullptr;
        Run run;
        Available available;
    };

    std::array<Entry, static_cast<std::size_t>(SpreadsheetCommand::Count)> entries_;
};

} // namespace quobrix
