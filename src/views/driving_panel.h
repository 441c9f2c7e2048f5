#pragma once

#include "summary/driving_charts.h"
#include "summary/driving_report.h"
#include "views/page.h"

#include <functional>
#include <optional>
#include <vector>

class QComboBox;
class QLabel;
class QPushButton;

namespace quobrix {

class DrawingView;
class FigureTile;

/// How was driven, over all documents whose trips were counted: the figures of a period, a vehicle and a driver, which
/// are remembered, with what has changed since the period before.
class DrivingPanel final : public QWidget {
public:
    /// SHOW_TRIPS brings those trips of the document into view that are wanted. CONTEXT has a counter.
    DrivingPanel(const ViewContext& context, std::function<void(const DrivingChoice&)> showTrips,
                 QWidget* parent = nullptr);

    /// Shows what the records say now, in the units and with the names of now.
    void refresh();
    /// What is shown, as a report; nothing if nothing has been counted.
    std::optional<Report> report() const;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void offer(QComboBox& box, const char* setting, const QString& any, const std::vector<DrivingGroup>& groups);
    DrivingChoice choice() const;
    DrivingStatistics statistics() const;
    Drawing draw(DrivingChart chart, Size room, const TextMeasure& measure) const;
    void showFigures();
    void showState();

    const ViewContext context_;
    std::function<void(const DrivingChoice&)> showTrips_;
    QComboBox *period_, *vehicle_, *driver_;
    QLabel *state_, *inFile_;
    QWidget* figures_;
    std::vector<FigureTile*> tiles_; ///< of drivingFigures()
    std::vector<DrawingView*> charts_;
    DrivingStatistics statistics_; ///< as they are shown
    QPushButton *trips_, *again_;
};

} // namespace quobrix
