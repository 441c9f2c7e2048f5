#include "tables/ui/spreadsheet_commands.h"

#include "base/ui/qt_text.h"

#include <QAction>
#include <QMenu>
#include <QWidget>

namespace quobrix {
namespace {

struct CommandRow {
    const char* name;
    int id;
    const char* text;
    const char* prompt;
};

constexpr CommandRow kRows[] = {
#define COMMAND(Name, Id, Text, Prompt) {#Name, Id, Text, Prompt},
#include "tables/ui/spreadsheet_commands.def"
};

} // namespace

SpreadsheetCommands::SpreadsheetCommands(QWidget& owner) : QObject(&owner) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const CommandRow& row = kRows[i];
        const QStringList parts = toQt(row.text).split(QLatin1Char('\t'));
        auto* action = new QAction(parts.front(), &owner);
        action->setObjectName(QStringLiteral("Spreadsheet") + QLatin1String(row.name));
        action->setData(row.id);
        action->setShortcut(QKeySequence(parts.value(1), QKeySequence::PortableText));
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        action->setStatusTip(toQt(row.prompt) + QStringLiteral(" (not available yet)"));
        action->setEnabled(false);
        owner.addAction(action);
        connect(action, &QAction::triggered, this, [this, i] { entries_[i].run(); });
        entries_[i].action = action;
    }
    action(SpreadsheetCommand::Redo)
        .setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)});
}

void SpreadsheetCommands::handle(SpreadsheetCommand command, Run run, Available available) {
    const auto i = static_cast<std::size_t>(command);
    entries_[i].run = std::move(run);
    entries_[i].available = std::move(available);
    entries_[i].action->setStatusTip(toQt(kRows[i].prompt));
    refresh();
}

void SpreadsheetCommands::ruleOut(SpreadsheetCommand command, const QString& reason) {
    Entry& entry = entries_[static_cast<std::size_t>(command)];
    entry.run = {};
    entry.action->setStatusTip(reason);
    refresh();
}

void SpreadsheetCommands::describe(SpreadsheetCommand command, const QString& what) {
    QString text = toQt(kRows[static_cast<std::size_t>(command)].text).section(QLatin1Char('\t'), 0, 0);
    if (!what.isEmpty())
        text += QLatin1Char(' ') + what.left(1).toUpper() + what.mid(1).replace(QLatin1Char('&'), QLatin1String("&&"));
    action(command).setText(text);
}

void SpreadsheetCommands::refresh() {
    for (const Entry& entry : entries_)
        entry.action->setEnabled(entry.run && (!entry.available || entry.available()));
}

QMenu* SpreadsheetCommands::makeMenu(QWidget& parent) const {
    using enum SpreadsheetCommand;
    auto* menu = new QMenu(&parent);
    menu->setObjectName(QStringLiteral("SpreadsheetMenu"));
    const auto add = [this](QMenu* to, std::initializer_list<SpreadsheetCommand> commands) {
        for (const SpreadsheetCommand command : commands)
            to->addAction(&action(command));
    };
    add(menu, {Undo, Redo});
    menu->addSeparator();
    add(menu, {Cut, Copy});
    add(menu->addMenu(QStringLiteral("&Copy As")), {CopyMetafile, CopyBitmap});
    add(menu, {Paste, SelectAll});
    menu->addSeparator();
    add(menu, {Add, Insert, InsertAfter, Delete});
    menu->addSeparator();
    add(menu, {Find, FindNext, FindPrevious});
    menu->addSeparator();
    add(menu->addMenu(QStringLiteral("Sort B&y This Column")), {SortUp, SortDown, StoredOrder});
    add(menu, {FitWidth, Columns});
    menu->addSeparator();
    add(menu, {GoToSource, Requirements, Errors, UnitSystems});
    menu->addSeparator();
    add(menu, {Help});
    return menu;
}

} // namespace quobrix
