#pragma once

#include "model/readiness.h"
#include "report/ui/printable_window.h"
#include "tables/table_edits.h"
#include "units/unit_system.h"
#include "views/page.h"

#include <QDialog>

#include <memory>

class QComboBox;
class QLabel;
class QTimer;

namespace quobrix {

class ReportView;

/// What the trips of the open document make likely of the vehicles' emissions monitors. Trips are read a few at a time
/// between events, again after every edit; it must end before the document gets other content.
class ReadinessWindow final : public QDialog,
                              public PrintableWindow,
                              private TableEditsListener,
                              private UnitsListener {
public:
    ReadinessWindow(const ViewContext& context, std::vector<Monitor> monitors, QWidget* parent);
    ~ReadinessWindow() override;

    /// Nothing while the trips are still being read.
    std::optional<Report> printable() override;

private:
    void tableChanged(const TableChange&) override {}
    void historyChanged() override { read(); }
    void unitsChanged(UnitsChange, std::optional<UnitTypeId>) override { showReport(); }
    void read();
    void readSome();
    void showReport();
    std::vector<VehicleReadiness> chosen() const;

    const ViewContext context_;
    const std::vector<Monitor> monitors_;
    QComboBox* vehicle_;
    QLabel* progress_;
    ReportView* report_;
    QTimer* next_;
    std::unique_ptr<ReadinessReader> reader_; ///< while it reads
    std::vector<VehicleReadiness> vehicles_;
};

} // namespace quobrix
