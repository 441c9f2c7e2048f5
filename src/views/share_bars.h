#pragma once

#include "model/trip_report.h"

#include <QWidget>

namespace quobrix {

/// How a whole divides, as a picture: a bar for each part with its label and text. Assistive technology reads it as a
/// chart whose description has every part.
class ShareBars final : public QWidget {
    Q_OBJECT
public:
    /// NAME says what is divided.
    ShareBars(const QString& name, std::vector<Report::Bar> bars, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int rowHeight() const;

    std::vector<Report::Bar> bars_;
};

} // namespace quobrix
