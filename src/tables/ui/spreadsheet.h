#pragma once

#include "messages/message.h"
#include "tables/ui/spreadsheet_commands.h"
#include "tables/ui/spreadsheet_layout.h"
#include "tables/ui/spreadsheet_model.h"
#include "tables/ui/spreadsheet_view.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <string>

class QAction;
class QMenu;
class QTimer;

namespace quobrix {

class FindBar;
struct CellBlock;
class Prompter;
class Settings;

class TSpreadsheet;

/// The windows that the commands of a spreadsheet open. Those that are missing are not available yet.
struct SpreadsheetWindows {
    std::function<void(const Column&)> requirements;
    std::function<void(const Table&)> errors;
    std::function<void(const CellSource&)> source; ///< brings it into view
    std::function<void(TSpreadsheet&)> exported;   ///< asks where to, and writes what is shown there
    std::function<void()> unitSystems;
    std::function<void(std::string_view topic)> help; ///< the key of a column
};

/// What every spreadsheet shows, edits and remembers through; all of it outlives the spreadsheet.
struct SpreadsheetContext {
    TextContext text;
    Settings& settings;
    TableEdits* edits = nullptr;                 ///< none: nothing can be edited
    Prompter* prompter = nullptr;                ///< none: what is refused is said beside the cell
    const SpreadsheetWindows* windows = nullptr; ///< none: they are not available
};

/// What tells one spreadsheet from another.
struct SpreadsheetSpec {
    std::string name;  ///< object name, and the section of its layout in the settings
    QString title;     ///< accessible name
    QString emptyText; ///< stands in place of rows
    SpreadsheetView::Use use = SpreadsheetView::Use::Records;
};

/// A table on the screen: sorted by a click on a heading, its columns moved, sized and chosen by their headings, all of
/// it remembered; its cells found, copied and edited. Edits go through TableEdits, so that every other window follows
/// them and any of them can take them back.
class TSpreadsheet : public QWidget {
    Q_OBJECT
public:
    TSpreadsheet(const SpreadsheetContext& context, const SpreadsheetSpec& spec, QWidget* parent = nullptr);
    ~TSpreadsheet() override;

    SpreadsheetModel& model() { return model_; }
    const SpreadsheetModel& model() const { return model_; }
    SpreadsheetView& view() { return *view_; }
    const SpreadsheetView& view() const { return *view_; }
    SpreadsheetCommands& commands() { return *commands_; }

    /// Shows COLUMNS as SpreadsheetModel does; the headings keep what the user made of them. There is no current row
    /// then. Rows with titles show them at their left.
    void setColumns(std::vector<ShownColumn> columns, SpreadsheetModel::RowTitle rowTitle = {});
    /// The stored row that is current; nothing if there is none.
    std::optional<RowIndex> currentRow() const { return view_->currentRow(); }
    void setCurrentRow(RowIndex row);
    /// Makes a cell current and brings it into view; the column is one of those shown. A filter that hides the row is
    /// taken off.
    void setCurrentCell(RowIndex row, int column);
    /// The same by the column's key; the row alone, if that column is not shown.
    void showCell(std::string_view columnKey, RowIndex row);
    /// The row shown STEP rows below (above, if negative) ROW; nothing if there is none, or ROW is not shown.
    std::optional<RowIndex> neighbour(RowIndex row, int step) const;

    /// As SpreadsheetView::setFilter. False if an open editor's value is refused: nothing has changed.
    bool setFilter(RowFilter filter);

    /// Shows the same in other units, in columns as wide as that takes.
    void unitsChanged();

    /// Takes the value of an open editor. False if it is refused: the editor is still there, with the reason.
    bool finishEdit() { return view_->finishEdit(); }

signals:
    void rowActivated(quobrix::RowIndex row);
    void currentRowChanged();
    /// The rows are shown in another order, or other ones are.
    void orderChanged();
    /// The filter has been taken off, because somebody goes to a row that it hid.
    void filterLifted();

protected:
    const SpreadsheetContext& context() const { return context_; }
    /// Shows the number of each row at its left, by which it is selected as a whole.
    void showRowNumbers() { rowNumbers_ = true; }
    /// Deletes what is selected: empties cells, or deletes records that can be. Spreadsheets whose rows come and go
    /// delete these.
    virtual void deleteSelection();
    /// Whether deleteSelection() would do so, as far as can be told without asking anybody.
    virtual bool canDelete() const;
    /// Asked before ROWS are deleted; false keeps them.
    using MayDelete = std::function<bool(const std::vector<RowIndex>& rows)>;
    void deleteRows(const MayDelete& mayDelete = {});
    bool canDeleteRows() const;
    /// Tells how an edit ended, if there is anything to tell.
    void report(const EditOutcome& outcome, MessageOf<1> refusal);
    void tell(MessageOf<1> id, const std::string& why);
    /// Where the text of the current cell comes from, if that is elsewhere.
    std::optional<CellSource> currentSource() const;
    /// The table of the rows; nothing while nothing is shown.
    const Table* table() const;
    /// Does EDIT, called DESCRIPTION, with the table of the rows, which is made before where it is not there yet.
    EditOutcome editRows(const QString& description, const std::function<EditOutcome(const Table&)>& edit);
    void emptyCells(const CellBlock& block, std::string_view description, MessageOf<1> refusal);
    bool canEmpty(const CellBlock& block) const;
    DeleteSelection selectionToDelete() const;
    bool deletesRecords() const;
    /// The table of the rows where the one that is shown only stands for it; nothing if it cannot be made.
    virtual Table* makeTable() const { return nullptr; }
    virtual bool makesTable() const { return false; }
    /// Puts what can be done besides into the menu of the cells, before the action BEFORE.
    virtual void addToMenu(QMenu& /*menu*/, QAction* /*before*/) {}

private:
    void addEditCommands();
    void addSortCommands();
    void addWindowCommands();
    void copy();
    void cut();
    /// There are no rows, and pasting makes the first ones.
    bool takesFirstRows() const;
    void paste();
    void copyPicture(bool drawing);
    void stepHistory(void (TableEdits::*step)());
    FindBar& findBar();
    void sortBy(int column, Qt::SortOrder order);
    void chooseColumns();
    void showMenu(const QPoint& position);
    void showHeaderMenu(int column, const QPoint& position);
    /// A list that had no rows gets its layout, which depends on their texts, and a current cell.
    void showFirstRows();
    void restoreLayout();
    void rowsEdited(RowIndex row, std::size_t rows);
    void followHistory();

    SpreadsheetContext context_;
    SpreadsheetModel model_;
    SpreadsheetView* view_;
    FindBar* findBar_ = nullptr; ///< made when it is first opened
    SpreadsheetCommands* commands_;
    SpreadsheetLayout layout_;
    QTimer* sortTimer_;
    bool rowNumbers_ = false;
    bool removable_ = false; ///< the rows are records that can be deleted
    bool sortLater_ = false; ///< rows are out of order, but the person is still in one of them
    std::optional<RowIndex> lastEdited_;
};

} // namespace quobrix
