#include "tables/ui/spreadsheet_model.h"

#include "base/ui/qt_text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cstdint>

namespace quobrix {
namespace {

// Rows that lie apart come and go one by one, so that the current cell and the selection stay with their rows. Many of
// them would keep the views busy for seconds.
constexpr std::size_t kMostSteps = 64;

/// The heading in its one or two lines, without its mnemonic mark.
QString headingLines(const ColumnSpec& spec) { return toQt(spec.heading).remove(QLatin1Char('&')).trimmed(); }

/// A number of the cell's own without any order. Qt finds the indexes that it keeps for others by a hash that only adds
/// row and column up, so that those of a whole table fill one run of places, every step of which is walked for each
/// index that is taken out. Assistive technology has Qt keep one for every cell that it has read: with 300,000 of them
/// a list took more than a minute to sort. Numbers like these part the places.
quintptr scattered(int row, int column) {
    const auto cell = (static_cast<std::uint64_t>(row) << 16) + static_cast<std::uint64_t>(column);
    return static_cast<quintptr>((cell * 0x9E3779B97F4A7C15u) >> 16); // 2^64 by the golden ratio: Fibonacci hashing
}

ObjectId tableId(const Column& column) { return column.table() ? column.table()->id() : kNoObject; }

} // namespace

SpreadsheetModel::SpreadsheetModel(const TextContext& context, TableEdits* edits, QObject* parent)
    : QAbstractTableModel(parent), context_(context), edits_(edits) {
    if (edits_)
        edits_->addListener(*this);
}

SpreadsheetModel::~SpreadsheetModel() {
    if (edits_)
        edits_->removeListener(*this);
}

void SpreadsheetModel::setColumns(std::vector<ShownColumn> columns, RowTitle rowTitle) {
    beginResetModel();
    columns_ = std::move(columns);
    specs_.clear();
    sources_.clear();
    checkers_.clear();
    for (const ShownColumn& shown : columns_) {
        const Column& column = *shown.column;
        specs_.push_back(&column.spec());
        Source source;
        source.table = tableId(column);
        if (const Table* table = column.table()) {
            source.column = table->indexOf(column.spec().key);
            if (edits_ && column.editable())
                source.checker = &checkers_.try_emplace(table, *table).first->second;
        }
        sources_.push_back(source);
    }
    rowTitle_ = std::move(rowTitle);
    order_.reset(columns_.empty() ? 0 : columns_.front().column->rowCount());
    applyOrder();
    endResetModel();
}

bool SpreadsheetModel::shows(const std::vector<ShownColumn>& columns) const {
    if (columns.empty() || columns != columns_ || columns.front().column->rowCount() != order_.size())
        return false;
    for (std::size_t i = 0; i < columns.size(); ++i) // where one object may have taken the place of another
        if (&columns[i].column->spec() != specs_[i] || tableId(*columns[i].column) != sources_[i].table)
            return false;
    return true;
}

void SpreadsheetModel::valuesChanged() {
    emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    if (sorted())
        sortAgain();
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
    TextBuffer buffer;
    if (shown.unitInHeading) {
        const Value value = shown.column->value(row);
        if (const auto* figure = std::get_if<double>(&value))
            return toQt(context_.units.formatValue(spec(column).unit, *figure, buffer.figure));
    }
    return toQt(shown.column->textView(row, context_, buffer));
}

QString SpreadsheetModel::exactText(int place, int column) const {
    if (!isEditable(column) || !hasCell(place, column))
        return text(place, column);
    const Column& source = this->column(column);
    const RowIndex row = storedRow(place);
    QString result = toQt(source.editText(row, context_));
    if (source.kind() == ColumnKind::Real && !result.isEmpty())
        result += toQt(context_.units.unitLabel(spec(column).unit));
    return result;
}

QString SpreadsheetModel::namedKey(int place, int column) const {
    return hasCell(place, column) ? toQt(this->column(column).namedKey(storedRow(place))) : QString();
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

bool SpreadsheetModel::isCheckBox(int column) const {
    return this->column(column).kind() == ColumnKind::Boolean && isEditable(column);
}

bool SpreadsheetModel::isChecked(int place, int column) const {
    return hasCell(place, column) && this->column(column).value(storedRow(place)) == Value(true);
}

QString SpreadsheetModel::lockedBecause(int place, int column) const {
    if (std::string reason = edits_->lockedBecause(); !reason.empty())
        return toQt(reason);
    return hasCell(place, column) ? toQt(this->column(column).lockedBecause(storedRow(place))) : QString();
}

QString SpreadsheetModel::editHint(int column) const {
    switch (this->column(column).kind()) {
    case ColumnKind::Real:
        return toQt(context_.units.unitName(spec(column).unit));
    case ColumnKind::DateTime:
        return toQt(context_.units.unitName(UnitTypeId::Date));
    default:
        return {};
    }
}

std::optional<Finding> SpreadsheetModel::mark(int place, int column) const {
    const Source& source = sources_[static_cast<std::size_t>(column)];
    if (!source.checker || !hasCell(place, column))
        return {};
    std::vector<Finding> findings = source.checker->cell(source.column, storedRow(place), context_);
    return findings.empty() ? std::nullopt : std::optional(std::move(findings.front()));
}

EditOutcome SpreadsheetModel::type(int place, int column, const QString& text) {
    const Source& source = sources_[static_cast<std::size_t>(column)];
    return edits_->type(source.table, source.column, storedRow(place), text.toStdString(), context_);
}

QModelIndex SpreadsheetModel::index(int row, int column, const QModelIndex& parent) const {
    return hasIndex(row, column, parent) ? createIndex(row, column, scattered(row, column)) : QModelIndex();
}

int SpreadsheetModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int SpreadsheetModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

Qt::ItemFlags SpreadsheetModel::flags(const QModelIndex& cell) const {
    Qt::ItemFlags flags = QAbstractTableModel::flags(cell) | Qt::ItemNeverHasChildren;
    if (!cell.isValid() || !isEditable(cell.column()))
        return flags;
    return flags | (isCheckBox(cell.column()) ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

QVariant SpreadsheetModel::data(const QModelIndex& cell, int role) const {
    if (!cell.isValid())
        return {};
    const int place = cell.row();
    const int column = cell.column();
    switch (role) {
    case Qt::DisplayRole:
        return text(place, column);
    case Qt::EditRole:
        return hasCell(place, column) ? toQt(this->column(column).editText(storedRow(place), context_)) : QString();
    case Qt::CheckStateRole:
        if (!isCheckBox(column) || !hasCell(place, column))
            return {};
        return isChecked(place, column) ? Qt::Checked : Qt::Unchecked;
    case Qt::ToolTipRole: {
        const auto finding = mark(place, column);
        return QStringLiteral("%1\n%2")
            .arg(namedKey(place, column), toQt(finding ? finding->text : spec(column).tooltip))
            .trimmed();
    }
    case Qt::StatusTipRole:
        if (const auto finding = mark(place, column))
            return toQt(finding->text).simplified() + QLatin1Char(' ') + toQt(cellMarkText(finding->severity));
        return toQt(spec(column).tooltip);
    case Qt::AccessibleTextRole: {
        const QString read = text(place, column);
        return read.isEmpty() && isEditable(column) ? QLatin1String(kEmptyCell) : read;
    }
    case Qt::AccessibleDescriptionRole: {
        const auto finding = mark(place, column);
        const QString wrong = finding ? toQt(finding->text) : QString();
        return QStringLiteral("%1 %2 %3").arg(plainHeading(column), namedKey(place, column), wrong).simplified();
    }
    case Qt::TextAlignmentRole:
        return QVariant::fromValue((isFigure(column) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
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
        order_.sort(column(sortColumn_), order_.size(), context_, sortDownward_);
    else
        order_.reset(order_.size());
}

void SpreadsheetModel::tableChanged(const TableChange& change) {
    if (columns_.empty())
        return;
    const bool own = change.table == sources_.front().table;
    if (own && change.kind == TableChange::Kind::RowsInserted)
        return insertPlaces(change.rows);
    if (own && change.kind == TableChange::Kind::RowsRemoved)
        return removePlaces(change.rows);
    // Computed columns change with others of their row, and names with the tables that they come from.
    const RowRun& rows = change.rows.front();
    const bool oneRow = own && rows.count == 1 && !marksOtherRows(change);
    const int first = oneRow ? placeOf(rows.first) : 0;
    const int last = oneRow ? first : rowCount() - 1;
    if (last < first)
        return;
    emit dataChanged(index(first, 0), index(last, columnCount() - 1));
    if (own)
        emit rowsEdited(rows.first, rows.count);
    else
        emit othersEdited();
}

bool SpreadsheetModel::marksOtherRows(const TableChange& change) const {
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        const Requirements& needs = specs_[i]->requirements;
        const bool unique = needs.mustBeUnique != Uniqueness::None || needs.shouldBeUnique != Uniqueness::None;
        if (unique && sources_[i].column >= change.firstColumn && sources_[i].column <= change.lastColumn)
            return true;
    }
    return false;
}

void SpreadsheetModel::insertPlaces(const RowRuns& rows) {
    const std::size_t count = countRows(rows);
    const std::size_t first = rows.front().first;
    const bool firstRows = order_.size() == 0;
    if (!order_.rows().empty()) {
        const std::size_t end = order_.size();
        RowOrder order = order_;
        order.insert(rows);
        replacePlaces(end, 0, count, std::move(order));
    } else if (rows.size() <= kMostSteps) {
        for (const RowRun& run : rows) {
            beginInsertRows({}, static_cast<int>(run.first), static_cast<int>(run.end()) - 1);
            order_.insert(std::span(&run, 1));
            endInsertRows();
        }
    } else {
        const std::size_t block = rows.back().end() - first;
        RowOrder order = order_;
        order.insert(rows);
        replacePlaces(first, block - count, block, std::move(order));
    }
    if (firstRows)
        emit firstRowsInserted();
    emit rowsEdited(first, rows.back().end() - first);
}

void SpreadsheetModel::removePlaces(const RowRuns& rows) {
    std::size_t first = order_.size();
    std::size_t last = 0;
    for (const RowRun& run : rows)
        for (RowIndex row = run.first; row < run.end(); ++row) {
            first = std::min(first, order_.placeOf(row));
            last = std::max(last, order_.placeOf(row));
        }
    const std::size_t block = last - first + 1;
    const std::size_t count = countRows(rows);
    if (block == count || count > kMostSteps) {
        RowOrder order = order_;
        order.remove(rows);
        return replacePlaces(first, block, block - count, std::move(order));
    }
    for (auto run = rows.rbegin(); run != rows.rend(); ++run)
        for (RowIndex row = run->end(); row-- > run->first;) {
            const int place = placeOf(row);
            const RowRun one{row, 1};
            beginRemoveRows({}, place, place);
            order_.remove(std::span(&one, 1));
            endRemoveRows();
        }
}

/// Takes BEFORE places from FIRST on out and puts in AFTER ones, which makes ORDER.
void SpreadsheetModel::replacePlaces(std::size_t first, std::size_t before, std::size_t after, RowOrder order) {
    const auto begin = static_cast<int>(first);
    if (before > 0) {
        beginRemoveRows({}, begin, begin + static_cast<int>(before) - 1);
        order_ = after > 0 ? order.without(first, after) : order;
        endRemoveRows();
    }
    if (after > 0) {
        beginInsertRows({}, begin, begin + static_cast<int>(after) - 1);
        order_ = std::move(order);
        endInsertRows();
    }
}

} // namespace quobrix
