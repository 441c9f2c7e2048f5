#pragma once

#include "tables/table_edits.h"
#include "tables/ui/shown_rows.h"

#include <QTableView>

#include <optional>

namespace quobrix {

class CellNote;
class FrozenColumn;
class SpreadsheetModel;

/// The grid of a spreadsheet: selecting, moving, and editing in place.
///
/// An editor that holds a value that is refused stays open, with the reason beside it, until the value is one that can
/// be taken or Escape gives it up: neither a click elsewhere nor the loss of the keyboard loses what was typed.
class SpreadsheetView final : public QTableView {
    Q_OBJECT
public:
    /// How a person works with the rows.
    enum class Use {
        Records, ///< a row at a time: Enter or a double click activates it
        Cells,   ///< a cell at a time
    };

    /// MODEL must outlive the view. EMPTY_TEXT stands in place of rows.
    SpreadsheetView(SpreadsheetModel& model, Use use, QString emptyText, QWidget* parent);
    ~SpreadsheetView() override;

    Use use() const { return use_; }
    void setEmptyText(const QString& text);
    /// What stands in place of rows while none is shown.
    QString emptyText() const;
    std::optional<RowIndex> currentRow() const;
    /// Makes CELL the current one, the only one selected, and in view; whatever keys are held down.
    void goTo(const QModelIndex& cell);
    /// Scrolls up or down to the current row.
    void showCurrentRow();

    using QTableView::edit;
    bool isEditing() const { return editor() != nullptr; }
    /// Takes the value of an open editor and closes it. False if the value is refused: the editor stays.
    bool finishEdit();
    /// Says TEXT beside a cell, until something else happens.
    void say(const QString& text, const QModelIndex& cell);
    /// What is said beside a cell; empty when nothing is.
    QString note() const;

    /// Frames the current cell without having the keyboard, too: what has been found.
    void markCurrent(bool marked);
    bool marksCurrent() const { return marksCurrent_; }
    /// How much of the left edge the first column takes while it stays in sight there.
    int frozenWidth() const;
    void scrollTo(const QModelIndex& cell, ScrollHint hint = EnsureVisible) override;

    /// Sorts anew, with the current row at the same height of the window.
    void sortAgain();
    /// As SpreadsheetModel::setFilter. The current row stays so, else the next one that stays shown becomes it; with no
    /// row shown there is none, and with rows again the one that was current last becomes so.
    void setFilter(RowFilter filter);

signals:
    void rowActivated(quobrix::RowIndex row);
    void currentRowChanged();
    /// Another cell is current, or other ones are selected.
    void selectionAltered();
    /// At a place of the screen.
    void menuRequested(const QPoint& position);
    void headingMenuRequested(int column, const QPoint& position);
    /// A person has pressed the keys for a command that is not available.
    void cutRefused();
    void deleteRefused();
    /// A person has tried to leave an editor whose value is refused.
    void entryRefused(const EditOutcome& outcome);

public slots:
    void reset() override;

protected:
    int sizeHintForColumn(int column) const override;
    bool edit(const QModelIndex& cell, EditTrigger trigger, QEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    /// A current row that was in sight stays so.
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;
    bool focusNextPrevChild(bool next) override;

protected slots:
    void commitData(QWidget* editor) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    QWidget* editor() const;
    QModelIndex checkBoxAt(const QMouseEvent& event) const;
    EditOutcome commit();
    void leaveEditor(int rowStep, int columnStep);
    void toggle(const QModelIndex& cell);
    bool moveBy(int rowStep, int columnStep);
    /// Asks for the menu at a place of the viewport, or at the current cell.
    void requestMenu(std::optional<QPoint> position);
    void showStatus(const QModelIndex& cell);
    bool wantsFrozen() const;
    void placeFrozen();
    void sortByFrozen();

    SpreadsheetModel& model_;
    Use use_;
    QString emptyText_;
    CellNote* note_;
    FrozenColumn* frozen_ = nullptr; ///< made when it is first needed
    bool frozenHeld_ = false;        ///< it may have the mouse, so it is neither hidden nor moved
    bool marksCurrent_ = false;
    bool hinted_ = false;                     ///< the status bar explains the current cell
    std::optional<RowIndex> rowBeforeFilter_; ///< the current one, when the filter was set last
    QPersistentModelIndex edited_;            ///< the cell of the open editor
    bool accepted_ = true;                    ///< the editor's value has been taken
    QPersistentModelIndex pressedBox_;
};

} // namespace quobrix
