#include "ui/card.h"

#include <QAccessibleWidget>
#include <QVBoxLayout>

namespace quobrix {
namespace {

QAccessibleInterface* makeAccessibleHeading(const QString&, QObject* object) {
    auto* label = dynamic_cast<HeadingLabel*>(object);
    return label ? new QAccessibleWidget(label, QAccessible::Heading) : nullptr;
}

} // namespace

QFont headingFont(QFont font, double scale) {
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(true);
    return font;
}

HeadingLabel::HeadingLabel(const QString& text, const QFont& font) {
    static const bool installed = [] {
        QAccessible::installFactory(makeAccessibleHeading);
        return true;
    }();
    Q_UNUSED(installed)
    setTextFormat(Qt::PlainText);
    setText(text); // not by the base's constructor: it has the toolkit make an interface of the base's role
    setFont(font);
    setAccessibleName(text);
}

Card::Card() : content_(new QVBoxLayout(this)) {
    setFrameStyle(QFrame::StyledPanel);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    content_->setContentsMargins(16, 14, 16, 16);
}

} // namespace quobrix
