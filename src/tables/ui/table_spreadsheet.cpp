#include "tables/ui/table_spreadsheet.h"

#include "tables/ui/cell_block.h"

#include <algorithm>

namespace quobrix {

void TFixedTableSpreadsheet::showTable(Table& table, std::span<const PersistentType* const> columns) {
    std::vector<ShownColumn> shown;
    for (const PersistentType* type : columns)
        shown.push_back({&table.columnOf(*type)});
    for (std::size_t i = 0; columns.empty() && i < table.columnCount(); ++i)
        if (table.column(i).kind() != ColumnKind::Table)
            shown.push_back({&table.column(i)});
    setColumns(std::move(shown));
}

TTableSpreadsheet::TTableSpreadsheet(const SpreadsheetContext& context, const SpreadsheetSpec& spec, QWidget* parent)
    : TFixedTableSpreadsheet(context, spec, parent) {
    using enum SpreadsheetCommand;
    if (!context.edits)
        return;
    showRowNumbers();
    const auto cell = [this] { return view().currentIndex().isValid(); };
    commands().handle(Add, [this] { addRow(); });
    commands().handle(
        Insert, [this] { insertBeside(false); }, cell);
    commands().handle(
        InsertAfter, [this] { insertBeside(true); }, cell);
}

void TTableSpreadsheet::addRow() {
    if (const Table* shown = table(); shown && finishEdit())
        insertRow(shown->rowCount());
}

void TTableSpreadsheet::insertBeside(bool after) {
    const CellBlock block = selectedBlock(view());
    if (block.empty() || !finishEdit())
        return;
    const RowIndex row = model().storedRow(after ? block.places.back() : block.places.front());
    insertRow(after ? row + 1 : row);
}

void TTableSpreadsheet::insertRow(RowIndex at) {
    TableEdits& edits = *context().edits;
    const EditOutcome outcome = edits.group(tr("adding a row").toStdString(), [&] {
        return editRows({}, [&](const Table& of) {
            EditOutcome inserted = edits.insertRows(of.id(), at);
            if (inserted.ok() && newRow_)
                edits.set(of.id(), newRow_(at), context().text,
                          {}); // what does not fit is left for the person to fill in
            return inserted;
        });
    });
    report(outcome, MessageId::CannotInsert);
    if (!outcome.ok())
        return;
    const std::vector<int> columns = shownColumns(view());
    const auto first =
        std::find_if(columns.begin(), columns.end(), [&](int column) { return model().isEditable(column); });
    setCurrentCell(at, first == columns.end() ? columns.front() : *first);
    view().setFocus();
}

} // namespace quobrix
