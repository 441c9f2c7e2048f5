#include "ui/status_line.h"

#include <QEvent>
#include <QTextLayout>

namespace quobrix {
namespace {

// What is wrong with a cell, and how to learn more, takes two.
constexpr int kLines = 2;

} // namespace

StatusLine::StatusLine(QWidget* parent) : QLabel(parent) {
    setObjectName(QStringLiteral("statusLine"));
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    say({});
}

void StatusLine::say(const QString& text) {
    said_ = text.simplified();
    setAccessibleName(said_.isEmpty() ? tr("Status") : said_); // a name hides the text from screen readers
    fit();
}

void StatusLine::fit() {
    setFixedHeight(kLines * fontMetrics().lineSpacing());
    QTextLayout layout(said_, font());
    layout.beginLayout();
    QStringList lines;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width());
        const bool last = lines.size() == kLines - 1;
        lines << (last ? fontMetrics().elidedText(said_.mid(line.textStart()), Qt::ElideRight, width())
                       : said_.mid(line.textStart(), line.textLength()).trimmed());
        if (last)
            break;
    }
    layout.endLayout();
    setText(lines.join(QLatin1Char('\n')));
    setToolTip(text().simplified() == said_ ? QString() : said_);
}

void StatusLine::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    fit();
}

void StatusLine::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fit();
}

} // namespace quobrix
