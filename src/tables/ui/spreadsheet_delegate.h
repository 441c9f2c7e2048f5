#pragma once

#include <QStyledItemDelegate>

#include <functional>

namespace quobrix {

class SpreadsheetModel;

/// Paints the cells of a spreadsheet straight from its model, without the detour over item roles, which a page of cells
/// would notice, and makes their editors.
class SpreadsheetDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    /// MODEL must outlive the delegate. SHOWS_READ_ONLY: cells that are not for editing have another background.
    SpreadsheetDelegate(const SpreadsheetModel& model, bool showsReadOnly, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& cell) const override;
    /// The current cell of its view is framed while MARKED says so, not only while the view has the keyboard.
    void setCurrentMarked(std::function<bool()> marked) { currentMarked_ = std::move(marked); }
    /// Where the box of a cell with one is to be clicked.
    static QRect checkBoxRect(const QStyleOptionViewItem& option);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& cell) const override;
    void setEditorData(QWidget* editor, const QModelIndex& cell) const override;
    void setModelData(QWidget*, QAbstractItemModel*, const QModelIndex&) const override {} // the view does
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& cell) const override;

signals:
    /// A key in an editor asks to take the value and go on to another cell.
    void leaveRequested(int rowStep, int columnStep);

protected:
    bool eventFilter(QObject* editor, QEvent* event) override;
    bool editorEvent(QEvent*, QAbstractItemModel*, const QStyleOptionViewItem&, const QModelIndex&) override {
        return false; // the view does
    }

private:
    const SpreadsheetModel& model_;
    bool showsReadOnly_;
    std::function<bool()> currentMarked_;
};

} // namespace quobrix
