#include "tables/ui/cell_note.h"

#include "tables/ui/cell_mark.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>

#include <algorithm>

namespace quobrix {

CellNote::CellNote(QWidget* viewport) : QFrame(viewport), text_(new QLabel) {
    setObjectName(QStringLiteral("cellNote"));
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    setFocusPolicy(Qt::NoFocus);
    auto* icon = new QLabel;
    icon->setPixmap(markPixmap(Severity::Required, fontMetrics().height(), devicePixelRatioF()));
    text_->setObjectName(QStringLiteral("cellNoteText"));
    text_->setTextFormat(Qt::PlainText);
    text_->setForegroundRole(QPalette::ToolTipText);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 8, 4);
    layout->setSpacing(6);
    layout->addWidget(icon, 0, Qt::AlignTop);
    layout->addWidget(text_, 1);
    QFrame::hide();
}

void CellNote::show(const QString& text, const QRect& cell) {
    text_->setText(text);
    text_->setWordWrap(false);
    setAccessibleName(text);
    adjustSize();
    const QRect area = parentWidget()->rect();
    if (width() > area.width()) { // in as many lines as it takes
        text_->setWordWrap(true);
        resize(area.width(), layout()->totalHeightForWidth(area.width()));
    }
    const int below = cell.bottom() + 2;
    const int above = cell.top() - 1 - height();
    move(std::clamp(cell.left(), 0, std::max(0, area.width() - width())),
         below + height() <= area.height() || above < 0 ? below : above);
    QFrame::show();
    raise();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

QString CellNote::text() const { return isVisible() ? text_->text() : QString(); }

} // namespace quobrix
