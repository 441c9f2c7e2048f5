#include "views/figure_tile.h"

#include "ui/card.h"

#include <QPainter>
#include <QStyleOption>

namespace quobrix {
namespace {

constexpr int kPadding = 8;
constexpr int kWidth = 17; // of the narrowest tile, in average characters

} // namespace

FigureTile::FigureTile(const QString& name, QWidget* parent) : QAbstractButton(parent) {
    setObjectName(name);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
}

void FigureTile::show(const QString& title, const QString& value, const QString& remark) {
    title_ = title;
    value_ = value.isEmpty() ? QStringLiteral("–") : value;
    remark_ = remark;
    setAccessibleName(tr("%1: %2").arg(title_, value_));
    setAccessibleDescription(remark_);
    setToolTip(remark_.isEmpty() ? title_ : title_ + QLatin1Char('\n') + remark_);
    update();
}

QFont FigureTile::valueFont() const { return headingFont(font(), 1.25); }

QFont FigureTile::smallFont() const {
    QFont small(font());
    small.setPointSizeF(small.pointSizeF() * 0.85);
    return small;
}

QSize FigureTile::sizeHint() const {
    return {fontMetrics().averageCharWidth() * kWidth + 2 * kPadding,
            fontMetrics().lineSpacing() + QFontMetrics(valueFont()).lineSpacing() +
                QFontMetrics(smallFont()).lineSpacing() + 2 * kPadding};
}

void FigureTile::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    if (underMouse() || isDown())
        painter.fillRect(rect(), palette().color(QPalette::AlternateBase));
    QRect line = rect().adjusted(kPadding, kPadding, -kPadding, -kPadding);
    const auto write = [&](const QFont& font, QPalette::ColorRole role, const QString& text) {
        const QFontMetrics metrics(font);
        painter.setFont(font);
        painter.setPen(palette().color(role));
        painter.drawText(line.left(), line.top() + metrics.ascent(),
                         metrics.elidedText(text, Qt::ElideRight, line.width()));
        line.setTop(line.top() + metrics.lineSpacing());
    };
    write(font(), QPalette::PlaceholderText, title_);
    write(valueFont(), QPalette::Text, value_);
    write(smallFont(), QPalette::PlaceholderText, remark_);
    if (hasFocus()) {
        QStyleOptionFocusRect frame;
        frame.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, this);
    }
}

void FigureTile::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void FigureTile::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

} // namespace quobrix
