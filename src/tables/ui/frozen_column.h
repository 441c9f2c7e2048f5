#pragma once

#include <QTableView>

namespace quobrix {

class SpreadsheetModel;
class SpreadsheetView;

/// The first column of a list once more, over the left edge of the list while that is scrolled sideways: what tells the
/// records from each other stays in sight. It shares selection and current cell with the list, which has the keyboard
/// and is the one table that assistive technology knows of.
class FrozenColumn final : public QTableView {
    Q_OBJECT
public:
    /// All of it must outlive the column.
    FrozenColumn(SpreadsheetView& list, SpreadsheetModel& model);

    /// Takes its place in the list, as wide and tall and as far scrolled as it is now.
    void follow();

signals:
    void headingClicked();
    void headingMenuRequested(const QPoint& position);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void hideOthers();

    SpreadsheetView& list_;
    SpreadsheetModel& model_;
    QWidget* edge_; ///< parts it from what is scrolled away under it
};

} // namespace quobrix
