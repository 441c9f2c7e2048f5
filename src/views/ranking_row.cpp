#include "views/ranking_row.h"

#include "drawing/ui/drawing_painter.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace quobrix {
namespace {

constexpr int kBar = 6;
constexpr int kSpace = 4;

} // namespace

RankingRow::RankingRow(const QString& name, const QString& value, double part, QWidget* parent)
    : QAbstractButton(parent), value_(value), part_(std::clamp(part, 0.0, 1.0)) {
    setText(name);
    setAccessibleName(tr("%1: %2").arg(name, value));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
}

QSize RankingRow::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 36, fontMetrics().lineSpacing() + kBar + 3 * kSpace};
}

QSize RankingRow::minimumSizeHint() const { return {fontMetrics().averageCharWidth() * 14, sizeHint().height()}; }

void RankingRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (underMouse() || isDown())
        painter.fillRect(rect(), palette().color(QPalette::AlternateBase));
    const QRect room = rect().adjusted(kSpace, kSpace, -kSpace, -kSpace);
    const QFontMetrics metrics(font());
    const int baseline = room.top() + metrics.ascent();
    const int value = metrics.horizontalAdvance(value_);
    painter.setPen(palette().color(QPalette::Text));
    const QString name = metrics.elidedText(text(), Qt::ElideRight, room.width() - value - 2 * kSpace);
    painter.drawText(room.left(), baseline, name);
    setToolTip(name == text() ? QString() : text());
    painter.drawText(room.right() + 1 - value, baseline, value_);
    const QRect bar(room.left(), room.top() + metrics.lineSpacing() + kSpace / 2, room.width(), kBar);
    const auto colour = [palette = screenPalette(palette())](ColourRole role) {
        const Colour of = palette[role];
        return QColor(of.red, of.green, of.blue);
    };
    painter.fillRect(bar, colour(ColourRole::Track));
    painter.fillRect(QRect(bar.topLeft(), QSize(static_cast<int>(bar.width() * part_), kBar)),
                     colour(ColourRole::Accent));
    if (hasFocus()) {
        QStyleOptionFocusRect frame;
        frame.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, this);
    }
}

void RankingRow::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void RankingRow::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

} // namespace quobrix
