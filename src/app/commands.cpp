#include "app/commands.h"

#include "base/ui/qt_text.h"
#include "texts/text.h"
#include "ui/command_rows.h"

#include <QAction>
#include <QIcon>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include <exception>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

using Kind = MenuRow::Kind;

QString plainText(std::string_view shown) {
    QString plain = toQt(upTo(shown, '\t')).remove(QLatin1Char('&'));
    if (plain.endsWith(QLatin1String("...")))
        plain.chop(3);
    return plain;
}

/// What the button of ROW says beside its picture, and how to do without it.
QString buttonTip(const MenuRow& row, const QAction& action) {
    const QString keys = action.shortcut().toString(QKeySequence::NativeText);
    return keys.isEmpty() ? plainText(text(row.text)) : QStringLiteral("%1 (%2)").arg(plainText(text(row.text)), keys);
}

QString firstLine(SourceText prompt) { return toQt(upTo(text(prompt), '\n')); }

/// The prompt of a command without a handler.
QString unavailablePrompt(const MenuRow& row) {
    return notAvailableYet(row.prompt.empty() ? plainText(text(row.text)) : firstLine(row.prompt));
}

} // namespace

Commands::Commands(MayRun mayRun, Report report, QObject* parent)
    : QObject(parent), mayRun_(std::move(mayRun)), report_(std::move(report)) {
    int pages = 0;
    for (const MenuRow& row : menuRows())
        if (!row.name.empty()) {
            addEntry(row);
            if (row.kind == Kind::Page && ++pages < 10)
                action(row.id)->setShortcut(QKeySequence(QStringLiteral("Ctrl+%1").arg(pages)));
        }
}

void Commands::addEntry(const MenuRow& row) {
    auto* action = new QAction(toQt(upTo(text(row.text), '\t')), this);
    action->setObjectName(toQt(row.name));
    action->setData(static_cast<int>(row.id));
    action->setCheckable(row.kind == Kind::Toggle);
    action->setShortcut(QKeySequence(toQt(behind(row.text.english(), '\t')), QKeySequence::PortableText));
    // No platform may move an entry by what it takes its text to mean.
    action->setMenuRole(QAction::NoRole);
    if (!row.icon.empty())
        action->setIcon(QIcon(QStringLiteral(":/icons/%1.svg").arg(toQt(row.icon))));
    action->setIconVisibleInMenu(false);
    action->setEnabled(false);
    action->setStatusTip(unavailablePrompt(row));
    action->setToolTip(unavailablePrompt(row));
    const CommandId id = row.id;
    connect(action, &QAction::triggered, this, [this, id] {
        Entry& entry = entries_.at(id);
        if (entry.action->isCheckable()) // the mark follows what the command achieves, not the click
            entry.action->setChecked(!entry.action->isChecked());
        guard(*entry.action, entry.run);
    });
    entries_[id] = {action, {}, {}};
}

void Commands::handle(CommandId id, Run run, Available available) {
    Entry& entry = entries_.at(id);
    entry.run = std::move(run);
    entry.available = std::move(available);
    for (const MenuRow& row : menuRows())
        if (!row.name.empty() && row.id == id) {
            entry.action->setStatusTip(firstLine(row.prompt));
            entry.action->setToolTip(row.kind == Kind::Button ? buttonTip(row, *entry.action)
                                     : row.prompt.empty()     ? plainText(text(row.text))
                                                              : entry.action->statusTip());
        }
    refresh(entry);
}

void Commands::refresh(Entry& entry) { entry.action->setEnabled(entry.run && (!entry.available || entry.available())); }

void Commands::refresh() {
    for (auto& [id, entry] : entries_)
        refresh(entry);
}

void Commands::trigger(CommandId id) { action(id)->trigger(); }

void Commands::guard(const QAction& action, const Run& work) {
    if (!mayRun_())
        return;
    const QAction* outer = std::exchange(running_, &action);
    try {
        if (work)
            work();
    } catch (const std::bad_alloc&) {
        report_(action, text(TextId::NotEnoughMemory));
    } catch (const std::exception& error) {
        report_(action, error.what());
    }
    running_ = outer;
}

void Commands::fill(QMenuBar& menuBar, QToolBar& toolBar, QMenu& toolBarMenu) {
    std::vector<QWidget*> open; // menus or the toolbar
    const auto menu = [&] { return static_cast<QMenu*>(open.back()); };
    for (const MenuRow& row : menuRows()) {
        switch (row.kind) {
        case Kind::Menu:
        case Kind::Submenu:
            open.push_back(open.empty() ? menuBar.addMenu(toQt(text(row.text)))
                                        : menu()->addMenu(toQt(text(row.text))));
            menu()->setObjectName(plainText(row.text.english()) + QStringLiteral("Menu"));
            menu()->setToolTipsVisible(true);
            break;
        case Kind::ToolBar:
            open.push_back(&toolBar);
            break;
        case Kind::ToolBarMenu:
            open.push_back(&toolBarMenu);
            break;
        case Kind::End:
            open.pop_back();
            break;
        case Kind::Separator: {
            auto* separator = new QAction(this);
            separator->setSeparator(true);
            open.back()->addAction(separator);
            break;
        }
        case Kind::RecentFiles:
            recentFilesMenu_ = menu();
            [[fallthrough]];
        case Kind::Command:
        case Kind::Toggle:
        case Kind::Page:
        case Kind::Button:
            open.back()->addAction(action(row.id));
            break;
        }
    }
}

} // namespace quobrix
