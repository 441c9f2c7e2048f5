#pragma once

#include "summary/driving_charts.h"
#include "summary/driving_report.h"
#include "views/page.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace quobrix {

class FigureTile;
class HeadingLabel;
class MonthsChart;

/// What a detail of the statistics is about: a figure, a vehicle, a driver or a month, or several of them.
struct DrivingDetail {
    DrivingChoice only{}; ///< but for the period, which is chosen beside it
    const DrivingFigure* figure = nullptr;

    bool any() const { return figure || only.vehicle || only.driver || only.month; }
    /// As a place of a page has it; empty for nothing.
    std::string subject() const;
    static DrivingDetail of(const std::string& subject);
};

/// How was driven, over all documents whose trips were counted: the figures of a period, a vehicle and a driver, which
/// are remembered, with what has changed since the period before. Figures, bars and names lead to details, which show
/// the same of what they are about.
class DrivingPanel final : public QWidget {
public:
    struct Ways {
        std::function<void(const DrivingChoice&)> showTrips;    ///< brings those of the document into view
        std::function<void(const DrivingDetail&)> showDetail{}; ///< brings a detail into view
    };
    /// CONTEXT has a counter.
    DrivingPanel(const ViewContext& context, Ways ways, QWidget* parent = nullptr);

    /// Shows DETAIL, or all there is if that is about nothing.
    void setDetail(DrivingDetail detail);
    const DrivingDetail& detail() const { return detail_; }
    /// What the detail is called; empty if it is about nothing.
    QString detailTitle() const;
    /// Where a person begins.
    QWidget* firstField() const;

    /// Shows what the records say now, in the units and with the names of now.
    void refresh();
    /// What is shown, as a report; nothing if nothing has been counted.
    std::optional<Report> report() const;
    /// Whether there is any figure of what is shown.
    bool counts() const { return tellsAnything(statistics_.totals); }
    /// The same for other programs.
    std::optional<ExportContent> exported() const;

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// A ranking: a heading above its rows.
    struct Ranking {
        HeadingLabel* heading;
        QWidget* rows;
        std::optional<std::string> DrivingChoice::*key;
    };

    void makeCharts(QVBoxLayout& content);
    void choosePeriod();
    void offer(QComboBox& box, const char* setting, const QString& any, const std::vector<DrivingGroup>& groups);
    DrivingChoice choice() const;
    DrivingStatistics statistics() const;
    DrivingDetail further() const;
    SummaryRows allRows() const;
    void showFigures();
    void showRanking(const Ranking& ranking, const std::vector<DrivingGroup>& groups);
    void showParameters();
    void arrangeTiles();
    void orderTabs();
    void showState();

    const ViewContext context_;
    const Ways ways_;
    DrivingDetail detail_;
    HeadingLabel* heading_;
    std::vector<QLabel*> labels_; ///< of the three boxes
    QComboBox *period_, *vehicle_, *driver_;
    QLabel *state_, *inFile_;
    QWidget* figures_;
    QGridLayout* figuresGrid_;
    std::vector<FigureTile*> tiles_;   ///< of drivingFigures()
    std::vector<MonthsChart*> charts_; ///< of drivingCharts(), and of the detail's figure
    QWidget* rankings_;
    Ranking vehicles_, drivers_;
    QWidget* parameters_;
    DrivingStatistics statistics_; ///< as they are shown
    QPushButton *trips_, *again_, *all_;
};

} // namespace quobrix
