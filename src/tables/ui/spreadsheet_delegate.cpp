#include "tables/ui/spreadsheet_delegate.h"

#include "tables/ui/spreadsheet_model.h"

#include <QApplication>
#include <QPainter>

namespace quobrix {
namespace {

// Between a text and the edges of its cell: a figure on the right must not touch the text on the left of its neighbour.
constexpr int kSidePadding = 6;
constexpr int kHeightPadding = 5;

QStyle& styleOf(const QStyleOptionViewItem& option) { return option.widget ? *option.widget->style() : *qApp->style(); }

QPalette::ColorGroup colorGroup(const QStyleOptionViewItem& option) {
    if (!(option.state & QStyle::State_Enabled))
        return QPalette::Disabled;
    return option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
}

/// A cell has one line, whatever its text.
QString oneLine(QString text) { return text.replace(QLatin1Char('\n'), QLatin1Char(' ')); }

void drawText(QPainter& painter, const QStyleOptionViewItem& option, QRect area, QString text, bool right) {
    if (text.isEmpty() || area.width() <= 0)
        return;
    int width = option.fontMetrics.horizontalAdvance(text);
    if (width > area.width()) {
        text = option.fontMetrics.elidedText(text, option.textElideMode, area.width());
        width = right ? option.fontMetrics.horizontalAdvance(text) : 0;
    }
    if (text.isRightToLeft()) { // its first character stands on the right; the general way knows how
        painter.drawText(area, (right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter | Qt::TextSingleLine, text);
        return;
    }
    const int x = right ? area.right() + 1 - width : area.left();
    const int y = area.top() + (area.height() - option.fontMetrics.height()) / 2 + option.fontMetrics.ascent();
    painter.drawText(QPoint(x, y), text);
}

} // namespace

SpreadsheetDelegate::SpreadsheetDelegate(const SpreadsheetModel& model, QObject* parent)
    : QStyledItemDelegate(parent), model_(model) {}

void SpreadsheetDelegate::paint(QPainter* painter, const QStyleOptionViewItem& given, const QModelIndex& cell) const {
    QStyleOptionViewItem option(given);
    option.showDecorationSelected = true;
    QStyle& style = styleOf(option);
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);

    const bool selected = option.state & QStyle::State_Selected;
    painter->setPen(option.palette.color(colorGroup(option), selected ? QPalette::HighlightedText : QPalette::Text));
    if (painter->font() != option.font)
        painter->setFont(option.font);
    drawText(*painter, option, option.rect.adjusted(kSidePadding, 0, -kSidePadding, 0),
             oneLine(model_.text(cell.row(), cell.column())), model_.isFigure(cell.column()));

    if (option.state & QStyle::State_HasFocus) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.state |= QStyle::State_KeyboardFocusChange | QStyle::State_Item;
        focus.backgroundColor = option.palette.color(selected ? QPalette::Highlight : QPalette::Base);
        style.drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, option.widget);
    }
}

QSize SpreadsheetDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& cell) const {
    const QString text = oneLine(model_.text(cell.row(), cell.column()));
    return {option.fontMetrics.horizontalAdvance(text) + 2 * kSidePadding + 1,
            option.fontMetrics.height() + 2 * kHeightPadding};
}

} // namespace quobrix
