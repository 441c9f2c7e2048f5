#include "tables/ui/spreadsheet_model.h"

#include "base/ui/qt_text.h"
#include "units/unit_system.h"

namespace quobrix {
namespace {

/// The heading in its one or two lines, without its mnemonic mark.
QString headingLines(const ColumnSpec& spec) { return toQt(spec.heading).remove(QLatin1Char('&')).trimmed(); }

} // namespace

SpreadsheetModel::SpreadsheetModel(const TextContext& context, QObject* parent)
    : QAbstractTableModel(parent), context_(context) {}

void SpreadsheetModel::setColumns(std::vector<ShownColumn> columns, RowTitle rowTitle) {
    beginResetModel();
    columns_ = std::move(columns);
    specs_.clear();
    for (const ShownColumn& shown : columns_)
        specs_.push_back(&shown.column->spec());
    rowTitle_ = std::move(rowTitle);
    rows_ = columns_.empty() ? 0 : columns_.front().column->rowCount();
    applyOrder();
    endResetModel();
}

int SpreadsheetModel::indexOf(std::string_view key) const {
    for (std::size_t i = 0; i < specs_.size(); ++i)
        if (specs_[i]->key == key)
            return static_cast<int>(i);
    return -1;
}

bool SpreadsheetModel::hasCell(int place, int column) const {
    return storedRow(place) < columns_[static_cast<std::size_t>(column)].column->rowCount();
}

QString SpreadsheetModel::text(int place, int column) const {
    if (!hasCell(place, column))
        return {};
    const ShownColumn& shown = columns_[static_cast<std::size_t>(column)];
    const RowIndex row = storedRow(place);
    if (shown.unitInHeading) {
        const Value value = shown.column->value(row);
        if (const auto* figure = std::get_if<double>(&value)) {
            ValueText buffer;
            return toQt(context_.units.formatValue(spec(column).unit, *figure, buffer));
        }
    }
    return toQt(shown.column->text(row, context_));
}

QString SpreadsheetModel::unitOf(int column) const {
    return columns_[static_cast<std::size_t>(column)].unitInHeading ? toQt(context_.units.unitName(spec(column).unit))
                                                                    : QString();
}

QString SpreadsheetModel::plainHeading(int column) const {
    const QString& own = columns_[static_cast<std::size_t>(column)].heading;
    const QString heading = own.isEmpty() ? toQt(quobrix::plainHeading(spec(column))) : own;
    const QString unit = unitOf(column);
    return unit.isEmpty() ? heading : QStringLiteral("%1 (%2)").arg(heading, unit);
}

bool SpreadsheetModel::isFigure(int column) const {
    const ColumnKind kind = this->column(column).kind();
    return kind == ColumnKind::Integer || kind == ColumnKind::Real;
}

int SpreadsheetModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_);
}

int SpreadsheetModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant SpreadsheetModel::data(const QModelIndex& cell, int role) const {
    if (!cell.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return text(cell.row(), cell.column());
    case Qt::ToolTipRole:
    case Qt::StatusTipRole:
        return toQt(spec(cell.column()).tooltip);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue((isFigure(cell.column()) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant SpreadsheetModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical) {
        if (role != Qt::DisplayRole)
            return {};
        const RowIndex row = storedRow(section);
        return rowTitle_ ? rowTitle_(row) : toQt(context_.units.formatInteger(static_cast<std::int64_t>(row) + 1));
    }
    const QString& heading = columns_[static_cast<std::size_t>(section)].heading;
    switch (role) {
    case Qt::DisplayRole: {
        const QString lines = heading.isEmpty() ? headingLines(spec(section)) : heading;
        const QString unit = unitOf(section);
        if (unit.isEmpty())
            return lines;
        return lines + (lines.contains(QLatin1Char('\n')) ? QLatin1Char(' ') : QLatin1Char('\n')) +
               QStringLiteral("(%1)").arg(unit);
    }
    case Qt::ToolTipRole:
    case Qt::StatusTipRole:
        return toQt(spec(section).tooltip);
    case Qt::AccessibleTextRole:
        return plainHeading(section);
    case Qt::UserRole:
        return toQt(spec(section).key);
    default:
        return {};
    }
}

void SpreadsheetModel::sort(int column, Qt::SortOrder order) {
    sortColumn_ = column;
    sortDownward_ = order == Qt::DescendingOrder;
    sortAgain();
}

void SpreadsheetModel::sortAgain() {
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<RowIndex> rows;
    rows.reserve(static_cast<std::size_t>(before.size()));
    for (const QModelIndex& cell : before)
        rows.push_back(storedRow(cell.row()));
    applyOrder();
    QModelIndexList after;
    after.reserve(before.size());
    for (qsizetype i = 0; i < before.size(); ++i)
        after.push_back(index(placeOf(rows[static_cast<std::size_t>(i)]), before[i].column()));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, VerticalSortHint);
}

void SpreadsheetModel::applyOrder() {
    if (sortColumn_ >= 0 && sortColumn_ < columnCount())
        order_.sort(column(sortColumn_), rows_, context_, sortDownward_);
    else
        order_.reset(rows_);
}

} // namespace quobrix
