#pragma once

#include "tables/ui/spreadsheet.h"

#include <functional>
#include <span>
#include <vector>

namespace quobrix {

/// The spreadsheet of one table, whose rows are what they are: only cells are edited.
class TFixedTableSpreadsheet : public TSpreadsheet {
    Q_OBJECT
public:
    using TSpreadsheet::TSpreadsheet;

    /// Shows columns of TABLE by their classes; without any, all that have cells to be seen. TABLE must outlive what is
    /// shown.
    void showTable(Table& table, std::span<const PersistentType* const> columns = {});
};

/// The spreadsheet of one table whose rows can also be added, inserted and deleted, within the limits of the table.
class TTableSpreadsheet : public TFixedTableSpreadsheet {
    Q_OBJECT
public:
    TTableSpreadsheet(const SpreadsheetContext& context, const SpreadsheetSpec& spec, QWidget* parent = nullptr);

    using TSpreadsheet::MayDelete;
    void setMayDelete(MayDelete mayDelete) { mayDelete_ = std::move(mayDelete); }
    /// What a new row holds at first.
    using NewRow = std::function<std::vector<CellEdit>(RowIndex row)>;
    void setNewRow(NewRow newRow) { newRow_ = std::move(newRow); }

    /// The table that is shown is empty and stands for one that is made with its first row, by this: nothing if it
    /// cannot be made. Part of the edit that adds the row; who gives it shows the table then.
    using MakeTable = std::function<Table*()>;
    void setMakeTable(MakeTable makeTable) { makeTable_ = std::move(makeTable); }

    /// Adds a row at the end and goes to its first cell for editing.
    void addRow();

protected:
    void deleteSelection() override { deleteRows(mayDelete_); }
    bool canDelete() const override { return canDeleteRows(); }
    Table* makeTable() const override { return makeTable_(); }
    bool makesTable() const override { return makeTable_ != nullptr; }

private:
    void insertRow(RowIndex at);
    void insertBeside(bool after);

    MayDelete mayDelete_;
    NewRow newRow_;
    MakeTable makeTable_;
};

} // namespace quobrix
