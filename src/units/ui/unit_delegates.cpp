#include "units/ui/unit_delegates.h"

#include "base/ui/qt_text.h"
#include "units/unit_system.h"

#include <QPainter>

namespace quobrix {
namespace {

constexpr int kMargin = 6;

} // namespace

QSize RowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    return {QStyledItemDelegate::sizeHint(option, index).width(), option.fontMetrics.height() + kMargin};
}

QString TypeDelegate::unitName(const QModelIndex& index) const {
    return toQt(units_.unitName(static_cast<UnitTypeId>(index.data(Qt::UserRole).toInt())));
}

void TypeDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    RowDelegate::paint(painter, option, index);
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setFont(option.font);
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::PlaceholderText));
    painter->drawText(option.rect.adjusted(0, 0, -kMargin, 0), Qt::AlignRight | Qt::AlignVCenter, unitName(index));
    painter->restore();
}

QSize TypeDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QSize size = RowDelegate::sizeHint(option, index);
    size.rwidth() += option.fontMetrics.horizontalAdvance(unitName(index)) + 4 * kMargin;
    return size;
}

} // namespace quobrix
