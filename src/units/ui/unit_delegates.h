#pragma once

#include <QStyledItemDelegate>

namespace quobrix {

class TUnitSystem;

/// Rows as high as those of the program's tables.
class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

/// A row for a unit type (its number is the item's Qt::UserRole), with its current unit at the right end.
class TypeDelegate final : public RowDelegate {
public:
    /// UNITS must outlive the delegate.
    TypeDelegate(const TUnitSystem& units, QObject* parent) : RowDelegate(parent), units_(units) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    QString unitName(const QModelIndex& index) const;

    const TUnitSystem& units_;
};

} // namespace quobrix
