#pragma once

#include "tables/column.h"
#include "tables/ui/row_order.h"

#include <QAbstractTableModel>

#include <functional>
#include <vector>

namespace quobrix {

/// A column of a table as it is shown.
struct ShownColumn {
    const Column* column;
    QString heading{};          ///< empty: the column's own
    bool unitInHeading = false; ///< "From (MPH)" over plain figures, instead of a unit in every cell

    bool operator==(const ShownColumn&) const = default;
};

/// Columns of a table as a Qt model, in an order of its own: texts are made only for the cells that are painted, and
/// sorting moves no stored row. Header data of Qt::UserRole is the column's key.
class SpreadsheetModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    /// The title of a stored row, for tables whose rows have one.
    using RowTitle = std::function<QString(RowIndex)>;

    explicit SpreadsheetModel(const TextContext& context, QObject* parent = nullptr);

    /// Shows COLUMNS; the first one says how many rows there are. Where another column has fewer rows, its cells are
    /// empty. The columns must be there when cells are painted or sorted; headings and keys do not need them.
    void setColumns(std::vector<ShownColumn> columns, RowTitle rowTitle = {});
    const std::vector<ShownColumn>& columns() const { return columns_; }
    const Column& column(int column) const { return *columns_[static_cast<std::size_t>(column)].column; }
    const ColumnSpec& spec(int column) const { return *specs_[static_cast<std::size_t>(column)]; }
    /// The position of a column by key; -1 if it is not shown.
    int indexOf(std::string_view key) const;

    /// The stored row that is shown at PLACE, and back.
    RowIndex storedRow(int place) const { return order_.rowAt(static_cast<std::size_t>(place)); }
    int placeOf(RowIndex row) const { return static_cast<int>(order_.placeOf(row)); }
    /// The cell as it reads; empty where there is no value.
    QString text(int place, int column) const;
    /// Its heading in one line, with the unit if that is not in the cells.
    QString plainHeading(int column) const;
    /// Figures stand on the right.
    bool isFigure(int column) const;

    /// Sorts anew by the column of the last sort(), because values have changed.
    void sortAgain();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& cell, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// By COLUMN, or in the stored order if it is -1.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

private:
    bool hasCell(int place, int column) const;
    QString unitOf(int column) const;
    void applyOrder();

    TextContext context_;
    std::vector<ShownColumn> columns_;
    std::vector<const ColumnSpec*> specs_;
    RowTitle rowTitle_;
    RowOrder order_;
    RowIndex rows_ = 0;
    int sortColumn_ = -1;
    bool sortDownward_ = false;
};

} // namespace quobrix
