#include "tables/ui/spreadsheet_commands.h"

#include "base/ui/qt_text.h"
#include "texts/source_text.h"

#include <QAction>
#include <QMenu>
#include <QWidget>

namespace quobrix {
namespace {

struct CommandRow {
    const char* name;
    int id;
    SourceText text;
    SourceText prompt;
};

constexpr CommandRow kRows[] = {
#define COMMAND(Name, Id, Text, Prompt) {#Name, Id, SourceText(Text), SourceText(Prompt)},
#include "tables/ui/spreadsheet_commands.def"
};

QString withoutKeys(SourceText command) { return toQt(text(command)).section(QLatin1Char('\t'), 0, 0); }

/// The same in every language.
QKeySequence keysOf(SourceText command) {
    return {toQt(command.english()).section(QLatin1Char('\t'), 1), QKeySequence::PortableText};
}

} // namespace

SpreadsheetCommands::SpreadsheetCommands(QWidget& owner) : QObject(&owner) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const CommandRow& row = kRows[i];
        auto* action = new QAction(withoutKeys(row.text), &owner);
        action->setObjectName(QStringLiteral("Spreadsheet") + QLatin1String(row.name));
        action->setData(row.id);
        action->setShortcut(keysOf(row.text));
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        action->setStatusTip(tr("%1 (not available yet)").arg(toQt(text(row.prompt))));
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
    const QString own = withoutKeys(kRows[static_cast<std::size_t>(command)].text);
    const QString object = what.left(1).toUpper() + what.mid(1).replace(QLatin1Char('&'), QLatin1String("&&"));
    action(command).setText(what.isEmpty() ? own : tr("%1 %2", "a command and what it is about").arg(own, object));
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
