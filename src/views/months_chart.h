#pragma once

#include "summary/driving_charts.h"

#include <QWidget>

#include <functional>
#include <vector>

class QAbstractButton;

namespace quobrix {

class DrawingView;

/// The bars of twelve months. Each bar can be pressed, by mouse, keyboard (Tab comes to one of them, the arrow keys go
/// to the others) and assistive technology, which reads its month and value.
class MonthsChart final : public QWidget {
public:
    using Make = std::function<MonthsPicture(Size room, const TextMeasure& measure)>;

    /// CHOSEN is called with the place of the month that is pressed.
    MonthsChart(const QString& name, Make make, std::function<void(std::size_t month)> chosen);

    /// What is shown has changed.
    void redraw();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeBars();

    Make make_;
    DrawingView* picture_;
    std::function<void(std::size_t)> chosen_;
    std::vector<QAbstractButton*> bars_;
};

} // namespace quobrix
