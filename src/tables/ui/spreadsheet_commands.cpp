#include "tables/ui/spreadsheet_commands.h"

#include "base/ui/qt_text.h"
#include "ui/command_rows.h"
#include "ui/passing_menu.h"

#include <QAction>
#include <QWidget>

namespace quobrix {
namespace {

constexpr CommandRow kRows[] = {
#define COMMAND(Name, Id, Text, Prompt) {#Name, Id, SourceText(Text), SourceText(Prompt)},
#include "tables/ui/spreadsheet_commands.def"
};

} // namespace

SpreadsheetCommands::SpreadsheetCommands(QWidget& owner) : QObject(&owner) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        entries_[i].action = addCommand(owner, "Spreadsheet", kRows[i]);
        connect(entries_[i].action, &QAction::triggered, this, [this, i] { entries_[i].run(); });
    }
    action(SpreadsheetCommand::Redo)
        .setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)});
}

void SpreadsheetCommands::handle(SpreadsheetCommand command, Run run, Available available) {
    const auto i = static_cast<std::size_t>(command);
    entries_[i].run = std::move(run);
    entries_[i].available = std::move(available);
    entries_[i].action->setStatusTip(toQt(text(kRows[i].prompt)));
    refresh();
}

void SpreadsheetCommands::ruleOut(SpreadsheetCommand command, const QString& reason) {
    Entry& entry = entries_[static_cast<std::size_t>(command)];
    entry.run = {};
    entry.action->setStatusTip(reason);
    refresh();
}

void SpreadsheetCommands::describe(SpreadsheetCommand command, const QString& what) {
    const QString own = textWithoutKeys(kRows[static_cast<std::size_t>(command)]);
    const QString object = what.left(1).toUpper() + what.mid(1).replace(QLatin1Char('&'), QLatin1String("&&"));
    action(command).setText(what.isEmpty() ? own : tr("%1 %2", "a command and what it is about").arg(own, object));
}

void SpreadsheetCommands::refresh() {
    for (const Entry& entry : entries_)
        entry.action->setEnabled(entry.run && (!entry.available || entry.available()));
}

QMenu* SpreadsheetCommands::makeMenu(QWidget& parent) const {
    using enum SpreadsheetCommand;
    QMenu* menu = new PassingMenu("SpreadsheetMenu", parent);
    const auto add = [this](QMenu* to, std::initializer_list<SpreadsheetCommand> commands) {
        for (const SpreadsheetCommand command : commands)
            to->addAction(&action(command));
    };
    add(menu, {Undo, Redo});
    menu->addSeparator();
    add(menu, {Cut, Copy});
    add(menu->addMenu(tr("&Copy As")), {CopyMetafile, CopyBitmap});
    add(menu, {Paste, SelectAll});
    menu->addSeparator();
    add(menu, {Export});
    menu->addSeparator();
    add(menu, {Add, Insert, InsertAfter, Delete});
    menu->addSeparator();
    add(menu, {Find, FindNext, FindPrevious});
    menu->addSeparator();
    add(menu->addMenu(tr("Sort B&y This Column")), {SortUp, SortDown, StoredOrder});
    add(menu, {FitWidth, Columns});
    menu->addSeparator();
    add(menu, {GoToSource, Requirements, Errors, UnitSystems});
    menu->addSeparator();
    add(menu, {Help});
    return menu;
}

} // namespace quobrix
