#pragma once

#include "views/page.h"

#include <optional>

class QAction;
class QLabel;
class QTabWidget;

namespace quobrix {

class TTripLogRecordView;
class TTripLogSummaryView;
class TTripLogTableView;

/// The trip log: the list of all trips, and the views of the one that is current in it. Enter in the list opens its
/// report, Escape goes back to the list, Alt+Left and Alt+Right go to its neighbours in the order of the list.
class TTripLogView final : public Page {
    Q_OBJECT
public:
    /// The views, by their place.
    enum class View { Summary, Report, Plot, Table };

    explicit TTripLogView(const ViewContext& context);

    QString title() const override;
    void refresh() override;
    void showCell(std::string_view columnKey, RowIndex row) override;
    void unitsChanged() override;
    std::optional<Report> printable(const std::optional<RecordRange>& range) const override;
    void showView(View view);

    TTripLogSummaryView& summary() { return *summary_; }
    TTripLogRecordView& report() { return *report_; }
    TTripLogTableView& table() { return *table_; }

private:
    View view() const;
    QWidget* makeNavigator();
    void step(int direction);
    void currentTripChanged();
    void showTripName();
    void showCurrentTrip();
    void focusView();

    ViewContext context_;
    TTripLogSummaryView* summary_;
    TTripLogRecordView* report_;
    TTripLogTableView* table_;
    QTabWidget* tabs_;
    QLabel* trip_ = nullptr;
    QAction* previous_ = nullptr;
    QAction* next_ = nullptr;
};

} // namespace quobrix
