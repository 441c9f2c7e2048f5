#include "views/totals_line.h"

#include <QBoxLayout>
#include <QLabel>

namespace quobrix {

TotalsLine::TotalsLine(QWidget* parent)
    : QWidget(parent), shown_(new QLabel), selected_(new QLabel),
      layout_(new QBoxLayout(QBoxLayout::LeftToRight, this)) {
    setObjectName(QStringLiteral("TotalsLine"));
    shown_->setObjectName(QStringLiteral("totalsShown"));
    selected_->setObjectName(QStringLiteral("totalsSelected"));
    layout_->setContentsMargins(8, 4, 8, 4);
    layout_->setSpacing(2);
    for (QLabel* label : {shown_, selected_}) {
        label->setMinimumWidth(1); // a window may be narrower: the tool tip has all of it
        layout_->addWidget(label);
    }
    layout_->insertStretch(1);
    sayShown({});
    saySelected({});
}

void TotalsLine::sayShown(const QString& text) {
    shown_->setText(text.isEmpty() ? QStringLiteral(" ") : text); // which keeps its height
    shown_->setToolTip(text);
    arrange();
}

void TotalsLine::saySelected(const QString& text) {
    const QString words = text.isEmpty() ? QString() : tr("Selected: %1").arg(text);
    selected_->setText(words);
    selected_->setToolTip(words);
    selected_->setVisible(!text.isEmpty());
}

void TotalsLine::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

/// All records may be selected: whether both fit does not depend on how many are, lest the list moves under the mouse.
void TotalsLine::arrange() {
    const int widest = 2 * shown_->sizeHint().width() + fontMetrics().horizontalAdvance(tr("Selected: %1")) + 32;
    layout_->setDirection(widest <= width() ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

} // namespace quobrix
