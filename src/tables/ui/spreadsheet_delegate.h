#pragma once

#include <QStyledItemDelegate>

namespace quobrix {

class SpreadsheetModel;

/// Paints the cells of a spreadsheet straight from its model, without the detour over item roles, which a page of cells
/// would notice.
class SpreadsheetDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    /// MODEL must outlive the delegate.
    SpreadsheetDelegate(const SpreadsheetModel& model, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& cell) const override;

private:
    const SpreadsheetModel& model_;
};

} // namespace quobrix
