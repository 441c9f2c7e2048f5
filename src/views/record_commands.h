#pragma once

#include "model/logs.h"
#include "views/page.h"

#include <QObject>

#include <array>
#include <functional>
#include <vector>

class QAction;
class QDialog;
class QMenu;

namespace quobrix {

class LogList;

/// The drivers by name, as they are offered.
std::vector<Selection> driverChoices(const TQuobrixDocument& document);

enum class RecordCommand : std::size_t {
#define COMMAND(Name, Id, Text, Prompt, Log) Name,
#define READING(Name, Id, Text, Prompt, Log) Name,
#include "views/record_commands.def"
    Count,
};

/// What a person can do to the records that are selected in the list of a log, or to the current one, beside what every
/// spreadsheet offers: each has "Record" and the command's name as object name.
class RecordCommands : public QObject {
public:
    /// For LIST, of SPEC; both outlive the commands.
    RecordCommands(LogList& list, const ViewContext& context, const LogSpec& spec);

    QAction& action(RecordCommand command) const { return *actions_[static_cast<std::size_t>(command)]; }
    /// Puts the commands into MENU, before the action BEFORE.
    void addTo(QMenu& menu, QAction* before);
    /// Whether a person wants ROWS to be deleted, who is asked.
    bool mayDelete(const std::vector<RowIndex>& rows) const;
    /// The records that are selected, by their rows in ascending order.
    std::vector<RowIndex> selectedRows() const;

private:
    void refresh();
    void run(RecordCommand command);
    /// Whether the current record has what COMMAND edits.
    bool applies(RecordCommand command) const;
    /// Nothing if what it edits cannot be read.
    QDialog* makeDialog(RecordCommand command, RowIndex row);
    /// What can be given to the records that are selected.
    struct Gift {
        QString text, name;                ///< in the menu, and in the name of the action
        std::function<bool(RowIndex)> has; ///< the record has it already
        std::function<EditOutcome(const std::vector<RowIndex>& rows)> give;
    };
    /// The first of GIFTS takes away what there is.
    QMenu* makeGivingMenu(QMenu& parent, const QString& title, const char* name, const std::vector<Gift>& gifts);
    QMenu* makeDriverMenu(QMenu& parent);
    QMenu* makeTypeMenu(QMenu& parent);

    LogList& list_;
    const ViewContext context_;
    const LogSpec& spec_;
    std::array<QAction*, static_cast<std::size_t>(RecordCommand::Count)> actions_{};
};

} // namespace quobrix
