#pragma once

#include "tables/column.h"

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>

#include <functional>
#include <optional>
#include <vector>

namespace quobrix {

/// A column of a list as it is shown.
struct ShownColumn {
    const Column* column;
    QString heading{}; ///< empty: the column's own
};

/// Columns of a document as a Qt model: rows as they are stored, texts made only for the cells that are painted.
/// Header data of Qt::UserRole is the column's key.
class TableModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    /// The row's title, for lists whose rows have one.
    using RowTitle = std::function<QString(RowIndex)>;

    explicit TableModel(const TextContext& context, QObject* parent = nullptr);

    /// Shows COLUMNS; the first one says how many rows there are. Where another column has fewer rows, its cells are
    /// empty. The columns must be there when cells are painted or sorted; headings and keys do not need them.
    void setColumns(std::vector<ShownColumn> columns, RowTitle rowTitle = {});
    const std::vector<ShownColumn>& columns() const { return columns_; }
    const ColumnSpec& spec(int column) const { return *specs_[static_cast<std::size_t>(column)]; }
    /// The position of a column by key; -1 if it is not shown.
    int indexOf(std::string_view key) const;
    /// Nothing where the cell has no value.
    Value value(RowIndex row, int column) const;
    QString text(RowIndex row, int column) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& cell, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    TextContext context_;
    std::vector<ShownColumn> columns_;
    std::vector<const ColumnSpec*> specs_;
    RowTitle rowTitle_;
    int rows_ = 0;
};

/// A table model in another order, which leaves the stored one alone: figures, dates and codes are sorted by base
/// value, texts and selections as they read. Equal rows, and all rows without a sort column, keep their stored order.
class SortedTableModel final : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit SortedTableModel(TableModel& source, QObject* parent = nullptr);

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    const TableModel& source_;
};

} // namespace quobrix
