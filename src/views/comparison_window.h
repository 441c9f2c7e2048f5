#pragma once

#include "model/logs.h"
#include "report/ui/printable_window.h"
#include "tables/table_edits.h"
#include "units/unit_system.h"
#include "views/page.h"

#include <QDialog>

#include <span>
#include <vector>

class QComboBox;

namespace quobrix {

class PlotPane;

/// Trips over one another, by the time or by the distance from their starts. Follows edits and units; of trips that are
/// gone it says nothing more, and it ends when there are fewer than two.
class ComparisonWindow final : public QDialog,
                               public PrintableWindow,
                               private TableEditsListener,
                               private UnitsListener {
public:
    /// Of the trips in ROWS, as many as can be compared.
    ComparisonWindow(const ViewContext& context, std::span<const RowIndex> rows, QWidget* parent);
    ~ComparisonWindow() override;

    std::optional<Report> printable() override;

private:
    void tableChanged(const TableChange&) override {}
    void historyChanged() override;
    void unitsChanged(UnitsChange, std::optional<UnitTypeId>) override { refresh(); }
    void refresh();

    const ViewContext context_;
    struct Compared {
        RecordKey key;
        std::size_t nth = 0; ///< of those with this key
    };
    std::vector<Compared> trips_;
    QComboBox* along_;
    PlotPane* pane_;
    int shownAlong_ = -1;
};

} // namespace quobrix
