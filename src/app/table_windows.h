#pragma once

#include "tables/table_edits.h"
#include "units/unit_system.h"

#include <QPointer>
#include <QTimer>

#include <functional>
#include <map>
#include <string_view>

namespace quobrix {

class RequirementsWindow;
class TErrorLog;
class TQuobrixFrame;

/// The windows about the tables of the document: the error log of the command "Check For Errors", which follows what is
/// edited while it is open, and the requirements of a column.
class TableWindows final : private TableEditsListener, private UnitsListener {
public:
    /// Brings a cell into view, to be edited.
    using ShowCell = std::function<void(std::string_view columnKey, RowIndex row)>;

    /// FRAME must outlive this.
    explicit TableWindows(TQuobrixFrame& frame);
    ~TableWindows();

    /// SHOW_CELL leads to the cells of the tables of class TABLE.
    void addSource(const PersistentType& table, ShowCell showCell);

    /// Checks the document and shows what is wrong.
    void showErrors();
    /// The same, with what is wrong with TABLE first in view.
    void showErrorsOf(const Table& table);
    /// Brings SOURCE into view.
    void showSource(const CellSource& source);
    void showRequirements(const Column& column);

private:
    void tableChanged(const TableChange&) override { recheck_.start(); }
    void historyChanged() override { recheck_.start(); }
    void unitsChanged(UnitsChange, std::optional<UnitTypeId>) override { recheck_.start(); }

    void check();
    void goTo(const Finding& finding);
    bool showCell(const PersistentType& table, std::string_view columnKey, RowIndex row);

    TQuobrixFrame& frame_;
    std::map<std::uint32_t, ShowCell> sources_; ///< by type id
    QPointer<TErrorLog> errors_;
    QPointer<RequirementsWindow> requirements_;
    QTimer recheck_; ///< once for all that changes in one go
};

} // namespace quobrix
