#include "ui/escape_bar.h"

#include <QKeyEvent>

namespace quobrix {

bool EscapeBar::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
        event->accept();
    return QWidget::event(event);
}

void EscapeBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        escaped();
    else
        QWidget::keyPressEvent(event);
}

} // namespace quobrix
