#pragma once

#include "model/trip_type_report.h"
#include "report/ui/printable_window.h"
#include "tables/table_edits.h"
#include "units/unit_system.h"
#include "views/page.h"

#include <QDialog>

class QComboBox;

namespace quobrix {

class ReportView;

/// The trip type report of the open document: what the trips that are chosen come to, above these trips, whose types
/// and comments are edited here. It follows edits and units, and must end before the document gets other content.
class TripTypeWindow final : public QDialog, public PrintableWindow, private TableEditsListener, private UnitsListener {
public:
    TripTypeWindow(const ViewContext& context, TripTypes types, QWidget* parent);
    ~TripTypeWindow() override;

    /// Other types, or other rates, hold.
    void setTypes(TripTypes types);
    /// With the trips one by one; nothing if none is chosen.
    std::optional<Report> printable() override;
    bool finishEdit() { return list_->finishEdit(); }

private:
    void tableChanged(const TableChange&) override {}
    void historyChanged() override;
    void unitsChanged(UnitsChange, std::optional<UnitTypeId>) override;
    void showTypes();
    void refresh();
    void offer();
    TripTypeReport chosen() const;

    const ViewContext context_;
    TripTypes types_;
    QComboBox *period_, *vehicle_, *driver_, *type_;
    ReportView* report_;
    TSpreadsheet* list_;
    ExportContent content_; ///< holds columns of the list
};

} // namespace quobrix
