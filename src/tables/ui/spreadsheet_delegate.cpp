#include "tables/ui/spreadsheet_delegate.h"

#include "base/ui/qt_text.h"
#include "tables/ui/cell_editor.h"
#include "tables/ui/cell_mark.h"
#include "tables/ui/spreadsheet_model.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

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

/// A text that stands back behind values.
QColor faded(QColor color) {
    color.setAlpha(140);
    return color;
}

void drawCheckBox(QPainter& painter, const QStyleOptionViewItem& option, bool checked) {
    QStyleOptionViewItem box(option);
    box.rect = SpreadsheetDelegate::checkBoxRect(option);
    box.state &= ~QStyle::State_HasFocus;
    box.state |= checked ? QStyle::State_On : QStyle::State_Off;
    styleOf(option).drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, &painter, option.widget);
}

/// The frame of the current cell: the one that is edited, where whole rows are selected.
void drawFocus(QPainter& painter, const QStyleOptionViewItem& option, bool selected) {
    painter.setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Highlight));
    painter.setBrush(Qt::NoBrush);
    // In the middle of its pixels: what is drawn beyond the cell stays there when another cell is current.
    painter.drawRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5));
}

} // namespace

SpreadsheetDelegate::SpreadsheetDelegate(const SpreadsheetModel& model, bool showsReadOnly, QObject* parent)
    : QStyledItemDelegate(parent), model_(model), showsReadOnly_(showsReadOnly) {}

void SpreadsheetDelegate::paint(QPainter* painter, const QStyleOptionViewItem& given, const QModelIndex& cell) const {
    QStyleOptionViewItem option(given);
    const bool editable = model_.isEditable(cell.column());
    const bool selected = option.state & QStyle::State_Selected;
    option.showDecorationSelected = true;
    const bool readOnly = !editable || !model_.lockedBecause(cell.row(), cell.column()).isEmpty();
    if (showsReadOnly_ && readOnly && model_.anyEditable())
        option.backgroundBrush = option.palette.brush(QPalette::Window);
    styleOf(option).drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);

    if (painter->font() != option.font)
        painter->setFont(option.font);
    const QColor ink = option.palette.color(colorGroup(option), selected ? QPalette::HighlightedText : QPalette::Text);
    const bool right = model_.isFigure(cell.column());
    QRect area = option.rect.adjusted(kSidePadding, 0, -kSidePadding, 0);
    if (const auto finding = editable ? model_.mark(cell.row(), cell.column()) : std::nullopt) {
        const int size = std::min(option.fontMetrics.ascent() + 2, area.width());
        const int x = right ? area.left() : area.right() + 1 - size;
        paintMark(*painter, QRect(x, area.center().y() - size / 2, size, size), finding->severity);
        right ? area.setLeft(x + size + kSidePadding) : area.setRight(x - kSidePadding);
    }
    if (model_.isCheckBox(cell.column())) {
        drawCheckBox(*painter, option, model_.isChecked(cell.row(), cell.column()));
    } else {
        QString text = oneLine(model_.text(cell.row(), cell.column()));
        painter->setPen(ink);
        if (text.isEmpty() && editable && (showsReadOnly_ || selected)) { // says that something can be put here
            text = toQt(quobrix::text(kEmptyCell)).trimmed();
            painter->setPen(faded(ink));
        }
        drawText(*painter, option, area, std::move(text), right);
    }
    const auto isMarked = [&] {
        const auto* view = qobject_cast<const QAbstractItemView*>(option.widget);
        return view && view->currentIndex() == cell;
    };
    if ((option.state & QStyle::State_HasFocus) || (currentMarked_ && currentMarked_() && isMarked()))
        drawFocus(*painter, option, selected);
}

QSize SpreadsheetDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& cell) const {
    const QString text = oneLine(model_.text(cell.row(), cell.column()));
    return {option.fontMetrics.horizontalAdvance(text) + 2 * kSidePadding + 1,
            option.fontMetrics.height() + 2 * kHeightPadding};
}

QRect SpreadsheetDelegate::checkBoxRect(const QStyleOptionViewItem& option) {
    QStyle& style = styleOf(option);
    const QSize size(style.pixelMetric(QStyle::PM_IndicatorWidth, &option, option.widget),
                     style.pixelMetric(QStyle::PM_IndicatorHeight, &option, option.widget));
    return QStyle::alignedRect(option.direction, Qt::AlignLeft | Qt::AlignVCenter, size,
                               option.rect.adjusted(kSidePadding, 0, -kSidePadding, 0));
}

QWidget* SpreadsheetDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                           const QModelIndex& cell) const {
    return makeCellEditor(model_, cell, parent);
}

void SpreadsheetDelegate::setEditorData(QWidget* editor, const QModelIndex& cell) const {
    setEditorText(*editor, model_.data(cell, Qt::EditRole).toString());
}

void SpreadsheetDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                               const QModelIndex&) const {
    // An editor wants a little more room than the text that it replaces.
    editor->setGeometry(option.rect.adjusted(-1, -1, 1, 1));
}

bool SpreadsheetDelegate::eventFilter(QObject* editor, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        const bool back = key.modifiers().testFlag(Qt::ShiftModifier);
        switch (key.key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            emit leaveRequested(back ? -1 : 1, 0);
            return true;
        case Qt::Key_Tab:
            emit leaveRequested(0, 1);
            return true;
        case Qt::Key_Backtab:
            emit leaveRequested(0, -1);
            return true;
        case Qt::Key_Up:
        case Qt::Key_Down:
            if (qobject_cast<QComboBox*>(editor)) // which chooses with them
                break;
            emit leaveRequested(key.key() == Qt::Key_Up ? -1 : 1, 0);
            return true;
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            return true; // what is edited stays in view
        default:
            break;
        }
    }
    return QStyledItemDelegate::eventFilter(editor, event);
}

} // namespace quobrix
