#include "views/figure_tile.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/drawing_painter.h"
#include "ui/card.h"

#include <QPainter>
#include <QStyleOption>

#include <string>
#include <vector>

namespace quobrix {
namespace {

constexpr int kPadding = 8;
constexpr int kWidth = 22; // of the narrowest tile, in average characters

} // namespace

FigureTile::FigureTile(const QString& name, Room room, QWidget* parent) : QAbstractButton(parent), room_(room) {
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
    const int titles = titleLines() * fontMetrics().lineSpacing();
    const int remark = room_ == Room::Card ? QFontMetrics(smallFont()).lineSpacing() : 0;
    return {fontMetrics().averageCharWidth() * kWidth + 2 * kPadding,
            QFontMetrics(valueFont()).lineSpacing() + titles + remark + 2 * kPadding};
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
    write(valueFont(), QPalette::Text, value_);
    const FontTextMeasure measure(font(), *this);
    const auto title = wrapped(title_.toStdString(), FontRole::Body, line.width(), measure);
    const auto lines = static_cast<std::size_t>(titleLines());
    for (std::size_t i = 0; i < title.size() && i < lines; ++i) {
        std::string words = title[i];
        for (std::size_t more = i + 1; i + 1 == lines && more < title.size(); ++more) // the last line takes the rest
            words += ' ' + title[more];
        write(font(), QPalette::PlaceholderText, toQt(words));
    }
    if (room_ == Room::Card)
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
