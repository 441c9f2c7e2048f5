#include "views/table_model.h"

#include "base/ui/qt_text.h"

namespace quobrix {
namespace {

bool isText(const Column& column) {
    return column.kind() == ColumnKind::Text || column.kind() == ColumnKind::Selection;
}

bool isFigure(const Column& column) {
    return column.kind() == ColumnKind::Integer || column.kind() == ColumnKind::Real;
}

/// The heading in its one or two lines, without its mnemonic mark.
QString headingLines(const ColumnSpec& spec) { return toQt(spec.heading).remove(QLatin1Char('&')).trimmed(); }

} // namespace

TableModel::TableModel(const TextContext& context, QObject* parent) : QAbstractTableModel(parent), context_(context) {}

void TableModel::setColumns(std::vector<ShownColumn> columns, RowTitle rowTitle) {
    beginResetModel();
    columns_ = std::move(columns);
    specs_.clear();
    for (const ShownColumn& shown : columns_)
        specs_.push_back(&shown.column->spec());
    rowTitle_ = std::move(rowTitle);
    rows_ = columns_.empty() ? 0 : static_cast<int>(columns_.front().column->rowCount());
    endResetModel();
}

int TableModel::indexOf(std::string_view key) const {
    for (std::size_t i = 0; i < specs_.size(); ++i)
        if (specs_[i]->key == key)
            return static_cast<int>(i);
    return -1;
}

Value TableModel::value(RowIndex row, int column) const {
    const Column& source = *columns_[static_cast<std::size_t>(column)].column;
    return row < source.rowCount() ? source.value(row) : Value();
}

QString TableModel::text(RowIndex row, int column) const {
    const Column& source = *columns_[static_cast<std::size_t>(column)].column;
    return row < source.rowCount() ? toQt(source.text(row, context_)) : QString();
}

int TableModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int TableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant TableModel::data(const QModelIndex& cell, int role) const {
    if (!cell.isValid())
        return {};
    const Column& column = *columns_[static_cast<std::size_t>(cell.column())].column;
    switch (role) {
    case Qt::DisplayRole:
        return text(static_cast<RowIndex>(cell.row()), cell.column());
    case Qt::ToolTipRole:
        return toQt(spec(cell.column()).tooltip);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue((isFigure(column) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical) {
        if (role != Qt::DisplayRole)
            return {};
        return rowTitle_ ? rowTitle_(static_cast<RowIndex>(section)) : QString::number(section + 1);
    }
    const QString& heading = columns_[static_cast<std::size_t>(section)].heading;
    switch (role) {
    case Qt::DisplayRole:
        return heading.isEmpty() ? headingLines(spec(section)) : heading;
    case Qt::ToolTipRole:
        return toQt(spec(section).tooltip);
    case Qt::AccessibleTextRole:
        return heading.isEmpty() ? toQt(plainHeading(spec(section))) : heading;
    case Qt::UserRole:
        return toQt(spec(section).key);
    default:
        return {};
    }
}

SortedTableModel::SortedTableModel(TableModel& source, QObject* parent)
    : QSortFilterProxyModel(parent), source_(source) {
    setSourceModel(&source);
}

bool SortedTableModel::lessThan(const QModelIndex& left, const QModelIndex& right) const {
    const auto leftRow = static_cast<RowIndex>(left.row());
    const auto rightRow = static_cast<RowIndex>(right.row());
    if (isText(*source_.columns()[static_cast<std::size_t>(left.column())].column))
        return source_.text(leftRow, left.column()).localeAwareCompare(source_.text(rightRow, right.column())) < 0;
    return source_.value(leftRow, left.column()) < source_.value(rightRow, right.column());
}

} // namespace quobrix
