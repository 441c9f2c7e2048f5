#pragma once

#include <QWidget>

namespace quobrix {

/// A bar beside a list in which a person says what is looked for. Escape is about the bar, whatever else it does around
/// it.
class EscapeBar : public QWidget {
public:
    using QWidget::QWidget;

protected:
    virtual void escaped() = 0;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace quobrix
