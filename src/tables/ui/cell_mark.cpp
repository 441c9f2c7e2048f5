#include "tables/ui/cell_mark.h"

#include <QPainter>
#include <QPainterPath>

namespace quobrix {

void paintMark(QPainter& painter, const QRect& area, Severity severity) {
    const bool error = severity == Severity::Required;
    const QRectF box = QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath shape;
    if (error) {
        shape.addEllipse(box);
    } else {
        shape.moveTo(box.center().x(), box.top());
        shape.lineTo(box.right(), box.bottom());
        shape.lineTo(box.left(), box.bottom());
        shape.closeSubpath();
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(error ? QColor(0x8f, 0x12, 0x1b) : QColor(0x8a, 0x5a, 0x00), 1, Qt::SolidLine, Qt::RoundCap,
                        Qt::RoundJoin));
    painter.setBrush(error ? QColor(0xd9, 0x2b, 0x36) : QColor(0xf5, 0xb8, 0x2e));
    painter.drawPath(shape);
    const double stroke = box.width() / 7;
    painter.setPen(QPen(error ? Qt::white : Qt::black, stroke, Qt::SolidLine, Qt::RoundCap));
    const double top = box.top() + box.height() * (error ? 0.24 : 0.38);
    const double x = box.center().x();
    painter.drawLine(QPointF(x, top), QPointF(x, box.top() + box.height() * 0.6));
    painter.drawPoint(QPointF(x, box.top() + box.height() * 0.8));
    painter.restore();
}

QPixmap markPixmap(Severity severity, int size, qreal pixelRatio) {
    QPixmap pixmap(QSize(size, size) * pixelRatio);
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paintMark(painter, QRect(0, 0, size, size), severity);
    return pixmap;
}

} // namespace quobrix
