#include "views/trip_log_record_view.h"

#include "model/quobrix_document.h"

namespace quobrix {

TTripLogRecordView::TTripLogRecordView(const ViewContext& context, QWidget* parent)
    : ReportView(parent), context_(context) {
    setObjectName(QStringLiteral("TTripLogRecordView"));
    setAccessibleName(QStringLiteral("Trip Report"));
    showTrip(std::nullopt);
}

void TTripLogRecordView::showTrip(std::optional<RowIndex> row) {
    setReport(row ? recordReport(logSpec(LogId::Trips), context_.document.trips(), *row, context_.text())
                  : Report{"No trip", {Paragraph{"There are no trips in this file yet."}}});
}

} // namespace quobrix
