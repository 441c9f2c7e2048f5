#pragma once

#include "plots/ui/plot_widget.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>

namespace quobrix::test {

/// Mouse and wheel as a person moves them over a plot.
class PlotHand {
public:
    explicit PlotHand(PlotWidget& plot) : plot_(plot) {}

    /// In the middle of the first panel.
    QPointF at(double place) const {
        const PlotLayout& layout = plot_.plotLayout();
        return {layout.axis.x(place), layout.panels.front().area.top + layout.panels.front().area.height / 2};
    }
    void mouse(QEvent::Type type, QPointF point, Qt::MouseButton button = Qt::NoButton,
               Qt::KeyboardModifiers modifiers = {}) {
        QMouseEvent event(type, point, plot_.mapToGlobal(point), button, button, modifiers);
        QApplication::sendEvent(&plot_, &event);
    }
    void drag(QPointF from, QPointF to, Qt::MouseButton button = Qt::LeftButton, Qt::KeyboardModifiers modifiers = {}) {
        mouse(QEvent::MouseButtonPress, from, button, modifiers);
        mouse(QEvent::MouseMove, (from + to) / 2, Qt::NoButton, modifiers);
        mouse(QEvent::MouseMove, to, Qt::NoButton, modifiers);
        mouse(QEvent::MouseButtonRelease, to, button, modifiers);
    }
    void wheel(QPointF point, QPoint angle, Qt::KeyboardModifiers modifiers = {}, QPoint pixels = {}) {
        QWheelEvent event(point, plot_.mapToGlobal(point), pixels, angle, Qt::NoButton, modifiers,
                          pixels.isNull() ? Qt::NoScrollPhase : Qt::ScrollUpdate, false);
        QApplication::sendEvent(&plot_, &event);
    }

private:
    PlotWidget& plot_;
};

} // namespace quobrix::test
