#include "views/log_record_view.h"

#include "texts/text.h"

#include "base/ui/qt_text.h"

namespace quobrix {

LogRecordView::LogRecordView(const ViewContext& context, const LogSpec& spec, QAction& editComments, QWidget* parent)
    : ReportView(parent), context_(context), spec_(spec), editComments_(editComments) {
    setObjectName(toQt(spec.viewName("RecordView")));
    setAccessibleName(tr("%1 Report").arg(toQt(spec.recordHeading())));
    showRecord(nullptr, std::nullopt);
}

void LogRecordView::showRecord(const Table* log, std::optional<RowIndex> row) {
    setSectionCommand(row ? toQt(plainHeading(log->columnOf(*spec_.comments).spec())) : QString(),
                      row ? &editComments_ : nullptr);
    if (row)
        return setReport(recordReport(spec_, *log, *row, context_.text()));
    setReport(
        {text(TextId::NoRecord, text(spec_.record)), {Paragraph{text(TextId::NoRecordsYet, text(spec_.records))}}});
}

} // namespace quobrix
