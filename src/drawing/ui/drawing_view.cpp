#include "drawing/ui/drawing_view.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/drawing_painter.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QPainter>

#include <cmath>

namespace quobrix {
namespace {

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* view = qobject_cast<DrawingView*>(object);
    return view ? new QAccessibleWidget(view, QAccessible::Chart) : nullptr;
}

} // namespace

DrawingView::DrawingView(DrawingMaker make, QWidget* parent) : QWidget(parent), make_(std::move(make)) {
    static const bool installed = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    Q_UNUSED(installed)
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    measureLeast();
    name();
}

void DrawingView::redraw() {
    measureLeast();
    drawing_ = draw(width());
    name();
    update();
}

void DrawingView::name() {
    setAccessibleName(toQt(drawing_.title));
    setAccessibleDescription(toQt(drawing_.description));
}

Drawing DrawingView::draw(double width) const { return make_({width, kUnlimited}, FontTextMeasure(font(), *this)); }

void DrawingView::measureLeast() {
    drawing_ = draw(0);
    least_ = QSize(static_cast<int>(std::ceil(drawing_.size.width)), static_cast<int>(std::ceil(drawing_.size.height)));
    updateGeometry();
}

void DrawingView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintDrawing(painter, drawing_, screenPalette(palette()), font());
}

void DrawingView::resizeEvent(QResizeEvent*) { drawing_ = draw(width()); }

void DrawingView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        measureLeast();
        drawing_ = draw(width());
        update();
    }
}

} // namespace quobrix
