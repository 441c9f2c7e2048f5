#include "views/list_buttons.h"

#include "base/ui/qt_text.h"
#include "tables/table_edits.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/fields.h"

#include <QAction>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quobrix {
namespace {

struct ListButton {
    SpreadsheetCommand command;
    const char* name;
    SourceText text;
};
constexpr ListButton kListButtons[] = {
    {SpreadsheetCommand::Add, "addName", SourceText("&Add")},
    {SpreadsheetCommand::Delete, "deleteNames", SourceText("&Delete")},
    {SpreadsheetCommand::Undo, "undoNames", SourceText("&Undo")},
    {SpreadsheetCommand::Redo, "redoNames", SourceText("&Redo")},
    {SpreadsheetCommand::Find, kLastListButton, SourceText("&Find...")},
};

void selectWholeRows(SpreadsheetView& view) {
    QItemSelectionModel& selection = *view.selectionModel();
    selection.select(selection.hasSelection() ? selection.selection()
                                              : QItemSelection(selection.currentIndex(), selection.currentIndex()),
                     QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

} // namespace

QWidget* listButtons(TTableSpreadsheet& list, const TableEdits& edits) {
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    for (const ListButton& row : kListButtons) {
        QAction& action = list.commands().action(row.command);
        auto* button = new QPushButton(toQt(text(row.text)));
        button->setObjectName(QLatin1String(row.name));
        button->setAutoDefault(false);        // Enter ends an entry, not the dialog
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard to the list
        followAction(*button, action, promptWithKeys);
        layout->addWidget(button);
        if (row.command != SpreadsheetCommand::Delete)
            continue;
        const auto follow = [&list, &edits, button] {
            button->setEnabled(list.view().currentIndex().isValid() && edits.lockedBecause().empty());
        };
        follow();
        QObject::connect(&action, &QAction::changed, button, follow);
        QObject::connect(&list.view(), &SpreadsheetView::selectionAltered, button, follow);
        QObject::connect(button, &QPushButton::pressed, &list, [&list] { selectWholeRows(list.view()); });
    }
    layout->addStretch();
    return column;
}

} // namespace quobrix
