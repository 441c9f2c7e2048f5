#pragma once

#include "drawing/text_measure.h"

#include <QWidget>

namespace quobrix {

/// Shows a drawing, made anew for every width that the widget gets. Assistive technology reads it as a chart with the
/// drawing's title and description.
class DrawingView final : public QWidget {
    Q_OBJECT
public:
    explicit DrawingView(DrawingMaker make, QWidget* parent = nullptr);

    /// What is shown has changed: makes the drawing anew.
    void redraw();

    QSize sizeHint() const override { return least_; }
    QSize minimumSizeHint() const override { return least_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    Drawing draw(double width) const;
    void measureLeast();
    void name();

    DrawingMaker make_;
    QSize least_; ///< that the drawing can do with
    Drawing drawing_;
};

} // namespace quobrix
