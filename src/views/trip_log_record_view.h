#pragma once

#include "report/ui/report_view.h"
#include "views/page.h"

#include <optional>

namespace quobrix {

/// The report of one trip.
class TTripLogRecordView final : public ReportView {
    Q_OBJECT
public:
    explicit TTripLogRecordView(const ViewContext& context, QWidget* parent = nullptr);

    /// Shows the report of the trip of ROW, or that there is none.
    void showTrip(std::optional<RowIndex> row);

private:
    ViewContext context_;
};

} // namespace quobrix
