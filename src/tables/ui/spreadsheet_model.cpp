#include "tables/ui/spreadsheet_model.h"

#include "base/ui/qt_text.h"
#include "texts/source_text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

namespace quobrix {
namespace {

/// The heading in its one or two lines, without its mnemonic mark.
QString headingLines(const ColumnSpec& spec) {
    return toQt(quobrix::text(spec.heading)).remove(QLatin1Char('&')).trimmed();
}

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
        source.comparesRows = column.comparesRows();
        if (const Table* table = column.table()) {
            source.column = table->indexOf(column.spec().key);
            source.editable = edits_ && column.editable();
            if (edits_ && (source.editable || table->spec().rows.editable))
                source.checker = &checkers_.try_emplace(table, *table).first->second;
        }
        sources_.push_back(source);
    }
    rowTitle_ = std::move(rowTitle);
    shown_.reset(columns_.empty() ? 0 : columns_.front().column->rowCount(), filter_);
    sortRows(shown_);
    endResetModel();
}

bool SpreadsheetModel::shows(const std::vector<ShownColumn>& columns) const {
    if (columns.empty() || columns != columns_ || columns.front().column->rowCount() != shown_.stored())
        return false;
    for (std::size_t i = 0; i < columns.size(); ++i) // where one object may have taken the place of another
        if (&columns[i].column->spec() != specs_[i] || tableId(*columns[i].column) != sources_[i].table)
            return false;
    return true;
}

void SpreadsheetModel::valuesChanged() {
    emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    if (sorted())
        sortAgain();
}

void SpreadsheetModel::setFilter(RowFilter filter) {
    filter_ = std::move(filter);
    ShownRows next = shown_;
    next.reset(shown_.stored(), filter_);
    sortRows(next);
    show(std::move(next));
}

std::optional<int> SpreadsheetModel::placeOf(RowIndex row) const {
    const auto place = shown_.placeOf(row);
    return place ? std::optional(static_cast<int>(*place)) : std::nullopt;
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
            return toQt(context_.units.formatValue(shown.column->unitOf(row), *figure, buffer.figure));
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
        result += toQt(context_.units.unitLabel(source.unitOf(row)));
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

QString SpreadsheetModel::editHint(int place, int column) const {
    switch (this->column(column).kind()) {
    case ColumnKind::Real:
        return toQt(context_.units.unitName(this->column(column).unitOf(storedRow(place))));
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
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int SpreadsheetModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

Qt::ItemFlags SpreadsheetModel::flags(const QModelIndex& cell) const {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(cell);
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
            .arg(namedKey(place, column), toQt(finding ? finding->text : quobrix::text(spec(column).tooltip)))
            .trimmed();
    }
    case Qt::StatusTipRole:
        if (const auto finding = mark(place, column))
            return toQt(finding->text).simplified() + QLatin1Char(' ') + toQt(cellMarkText(finding->severity));
        return toQt(quobrix::text(spec(column).tooltip));
    case Qt::AccessibleTextRole: {
        const QString read = text(place, column);
        return read.isEmpty() && isEditable(column) ? toQt(quobrix::text(kEmptyCell)) : read;
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
        if (row == ShownRows::kGone)
            return {};
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
        return toQt(quobrix::text(spec(section).tooltip));
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
    ShownRows next = shown_;
    sortRows(next);
    show(std::move(next));
}

void SpreadsheetModel::sortRows(ShownRows& rows) const {
    if (sortColumn_ >= 0 && sortColumn_ < columnCount())
        rows.sort(column(sortColumn_), context_, sortDownward_);
    else
        rows.unsort();
}

void SpreadsheetModel::tableChanged(const TableChange& change) {
    if (columns_.empty() || change.kind == TableChange::Kind::Objects)
        return;
    const bool own = change.table == sources_.front().table;
    if (own && change.kind == TableChange::Kind::RowsInserted) {
        const bool firstRows = shown_.size() == 0;
        shown_.rowsInserted(change.rows);
        ShownRows next = shown_;
        next.show(change.rows);
        show(std::move(next));
        if (firstRows)
            emit firstRowsInserted();
        emit rowsEdited(change.rows.front().first, change.rows.back().end() - change.rows.front().first);
        return;
    }
    if (own && change.kind == TableChange::Kind::RowsRemoved) {
        shown_.rowsRemoved(change.rows);
        ShownRows next = shown_;
        next.dropGone();
        return show(std::move(next));
    }
    // Computed columns change with others of their row, and names with the tables that they come from.
    const RowRun& rows = change.rows.front();
    const bool oneRow = own && rows.count == 1 && !marksOtherRows(change);
    const std::optional<int> first = oneRow ? placeOf(rows.first) : 0;
    if (first && *first < rowCount())
        emit dataChanged(index(*first, 0), index(oneRow ? *first : rowCount() - 1, columnCount() - 1));
    if (own)
        emit rowsEdited(rows.first, rows.count);
    else
        emit othersEdited();
}

bool SpreadsheetModel::marksOtherRows(const TableChange& change) const {
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        const Requirements& needs = specs_[i]->requirements;
        const bool unique = needs.mustBeUnique != Uniqueness::None || needs.shouldBeUnique != Uniqueness::None;
        if ((unique || sources_[i].comparesRows) && sources_[i].column >= change.firstColumn &&
            sources_[i].column <= change.lastColumn)
            return true;
    }
    return false;
}

// Views keep what is current and selected only through single steps: rows that lie together go, rows that lie together
// come, rows move. So those that go are gathered first, and those that come are put in order afterwards. All the while
// storedRow() answers with the numbers of now: views ask it in between.
void SpreadsheetModel::show(ShownRows next) {
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < shown_.size(); ++place)
        if (!next.placeOf(shown_.rowAt(place)))
            places.push_back(place);
    if (!places.empty()) {
        const std::size_t last = places.back();
        const std::size_t first = last + 1 - places.size(); // of these rows, once gathered at the last one's place
        if (places.front() != first) {
            std::vector<std::size_t> from(shown_.size());
            std::iota(from.begin(), from.end(), std::size_t{0});
            std::stable_partition(from.begin(), from.begin() + static_cast<std::ptrdiff_t>(last) + 1,
                                  [&](std::size_t place) { return next.placeOf(shown_.rowAt(place)).has_value(); });
            arrange(from);
        }
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(last));
        shown_.eraseAt(first, places.size());
        endRemoveRows();
    }

    std::vector<RowIndex> coming;
    std::size_t first = 0;
    for (std::size_t place = 0; place < next.size(); ++place)
        if (!shown_.placeOf(next.rowAt(place))) {
            if (coming.empty())
                first = place;
            coming.push_back(next.rowAt(place));
        }
    if (!coming.empty()) {
        const std::size_t at = std::min(first, shown_.size());
        beginInsertRows({}, static_cast<int>(at), static_cast<int>(at + coming.size()) - 1);
        shown_.insertAt(at, coming);
        endInsertRows();
    }

    if (!std::ranges::equal(shown_.rows(), next.rows())) {
        std::vector<std::size_t> from;
        from.reserve(next.size());
        for (const RowIndex row : next.rows())
            from.push_back(*shown_.placeOf(row));
        arrange(from);
    }
    shown_ = std::move(next);
    emit shownRowsChanged();
}

/// Puts what is at place FROM[i] at place i.
void SpreadsheetModel::arrange(std::span<const std::size_t> from) {
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<int> to(from.size());
    for (std::size_t place = 0; place < from.size(); ++place)
        to[from[place]] = static_cast<int>(place);
    shown_.arrange(from);
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& cell : before)
        after.push_back(index(to[static_cast<std::size_t>(cell.row())], cell.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, VerticalSortHint);
}

} // namespace quobrix
