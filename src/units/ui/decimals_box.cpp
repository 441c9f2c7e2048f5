#include "units/ui/decimals_box.h"

#include "units/unit_system.h"

#include <QKeyEvent>

namespace quobrix {

DecimalsBox::DecimalsBox(QWidget* parent) : QSpinBox(parent) {
    setLocale(QLocale::c()); // a count is written in the digits in which it is read
    setRange(0, 9);
}

QValidator::State DecimalsBox::validate(QString& text, int&) const {
    const std::optional<int> decimals = decimalsFromText(text.toStdString());
    if (!decimals)
        return QValidator::Intermediate;
    if (*decimals == 9) // which any number beyond the range becomes
        text = QStringLiteral("9");
    return QValidator::Acceptable;
}

int DecimalsBox::valueFromText(const QString& text) const {
    return decimalsFromText(text.toStdString()).value_or(value());
}

bool DecimalsBox::event(QEvent* event) {
    // The line of text would keep these keys for itself; they take back changes of the units instead.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)) {
            event->ignore();
            return true;
        }
    }
    return QSpinBox::event(event);
}

} // namespace quobrix
