#pragma once

#include "tables/check.h"
#include "tables/table_edits.h"
#include "tables/ui/shown_rows.h"
#include "texts/source_text.h"

#include <QAbstractTableModel>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace quobrix {

/// A column of a table as it is shown.
struct ShownColumn {
    const Column* column;
    QString heading{};          ///< empty: the column's own
    bool unitInHeading = false; ///< "From (MPH)" over plain figures, instead of a unit in every cell
    bool hiddenAtFirst = false; ///< until a person chooses it
    QString group{};            ///< what it stands under where columns are chosen

    bool operator==(const ShownColumn&) const = default;
};

/// What an empty cell reads.
inline constexpr auto kEmptyCell = SourceText(" [ Empty ] ");

/// Columns of a table as a Qt model, with a choice and order of rows of its own: texts are made only for the cells that
/// are painted, and sorting moves no stored row. It follows every edit, wherever it is made. Whatever comes, goes or
/// moves, cells that stay shown keep their persistent indexes. Header data of Qt::UserRole is the column's key.
class SpreadsheetModel final : public QAbstractTableModel, private TableEditsListener {
    Q_OBJECT
public:
    /// The title of a stored row, for tables whose rows have one.
    using RowTitle = std::function<QString(RowIndex)>;

    /// EDITS (none: no cell can be edited) must outlive the model.
    explicit SpreadsheetModel(const TextContext& context, TableEdits* edits = nullptr, QObject* parent = nullptr);
    ~SpreadsheetModel() override;

    /// Shows COLUMNS; the first one says how many rows there are. Where another column has fewer rows, its cells are
    /// empty. The columns must be there when cells are painted or sorted; headings and keys do not need them. The
    /// filter stays, and is asked about these rows.
    void setColumns(std::vector<ShownColumn> columns, RowTitle rowTitle = {});
    /// What is shown already, but reads otherwise, in other units for instance; with the same cells current and
    /// selected.
    void valuesChanged();
    /// Whether COLUMNS are those that are shown, with as many rows.
    bool shows(const std::vector<ShownColumn>& columns) const;
    const std::vector<ShownColumn>& columns() const { return columns_; }
    const Column& column(int column) const { return *columns_[static_cast<std::size_t>(column)].column; }
    const ColumnSpec& spec(int column) const { return *specs_[static_cast<std::size_t>(column)]; }
    /// The position of a column by key; -1 if it is not shown.
    int indexOf(std::string_view key) const;
    bool hiddenAtFirst(int column) const { return columns_[static_cast<std::size_t>(column)].hiddenAtFirst; }
    const QString& group(int column) const { return columns_[static_cast<std::size_t>(column)].group; }
    /// The column's position in its table.
    std::size_t tableColumn(int column) const { return sources_[static_cast<std::size_t>(column)].column; }

    /// Shows only the rows that FILTER wants (none: all), whatever columns are set. It is asked now and by
    /// setColumns(): a row that is edited stays as it is, shown or not, and one that comes by an edit is shown until
    /// the next time.
    void setFilter(RowFilter filter);
    bool filtered() const { return filter_ != nullptr; }
    /// How many rows there are, shown or not.
    RowIndex storedRows() const { return shown_.stored(); }

    /// The stored row that is shown at PLACE. While a removal is under way it may be ShownRows::kGone.
    RowIndex storedRow(int place) const { return shown_.rowAt(static_cast<std::size_t>(place)); }
    /// Nothing for a row that is not shown.
    std::optional<int> placeOf(RowIndex row) const;
    /// The stored rows that are shown, by place.
    std::span<const RowIndex> rows() const { return shown_.rows(); }

    /// The cell as it reads; empty where there is no value.
    QString text(int place, int column) const;
    /// The cell with all of its value, so that what is copied comes back the same; figures with their unit.
    QString exactText(int place, int column) const;
    /// What the cell's text is a name of; empty where it is the value itself.
    QString namedKey(int place, int column) const;
    /// Its heading in one line, with the unit if that is not in the cells.
    QString plainHeading(int column) const;
    /// Figures stand on the right.
    bool isFigure(int column) const;
    /// A box that is ticked or not.
    bool isCheckBox(int column) const;
    bool isChecked(int place, int column) const;
    bool isEditable(int column) const { return sources_[static_cast<std::size_t>(column)].editable; }
    bool anyEditable() const { return std::ranges::any_of(sources_, &Source::editable); }
    /// Why a cell that can be edited cannot be just now; empty: it can.
    QString lockedBecause(int place, int column) const;
    /// What stands behind the value while it is edited: the unit, or the form of a date.
    QString editHint(int place, int column) const;
    /// The worst that is wrong with the cell; nothing if it is as it should be.
    std::optional<Finding> mark(int place, int column) const;

    /// Sets a cell to what was typed.
    EditOutcome type(int place, int column, const QString& text);

    /// Sorts anew by the column of the last sort(), because values have changed.
    void sortAgain();
    bool sorted() const { return sortColumn_ >= 0; }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& cell) const override;
    QVariant data(const QModelIndex& cell, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// By COLUMN, or in the stored order if it is -1.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

signals:
    /// Other rows are shown, or in another order, but for a reset. Sent when all of it is done.
    void shownRowsChanged();
    /// Rows have come by an edit to where there were none.
    void firstRowsInserted();
    /// Values of stored rows have changed, so that the rows may not be in order any more.
    void rowsEdited(quobrix::RowIndex row, std::size_t rows);
    /// Values of another table have changed, which may be shown here under its names.
    void othersEdited();
    /// What can be undone or redone has changed.
    void editHistoryChanged();

private:
    /// Where a column comes from.
    struct Source {
        ObjectId table = kNoObject;
        std::size_t column = 0;
        bool editable = false;
        TableChecker* checker = nullptr; ///< where there may be something wrong
        bool comparesRows = false;
    };

    bool hasCell(int place, int column) const;
    QString unitOf(int column) const;
    void sortRows(ShownRows& rows) const;

    void tableChanged(const TableChange& change) override;
    void historyChanged() override { emit editHistoryChanged(); }
    /// Cells of other rows are marked by what stands in the columns that CHANGE is about.
    bool marksOtherRows(const TableChange& change) const;
    /// Comes from what is shown to NEXT, in steps that views can follow.
    void show(ShownRows next);
    void arrange(std::span<const std::size_t> from);

    TextContext context_;
    TableEdits* edits_;
    std::vector<ShownColumn> columns_;
    std::vector<const ColumnSpec*> specs_;
    std::vector<Source> sources_;
    mutable std::map<const Table*, TableChecker> checkers_;
    RowTitle rowTitle_;
    RowFilter filter_;
    ShownRows shown_;
    int sortColumn_ = -1;
    bool sortDownward_ = false;
};

} // namespace quobrix
