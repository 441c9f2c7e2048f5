#pragma once

#include "report/ui/report_view.h"
#include "views/page.h"
#include "views/record_view.h"

namespace quobrix {

/// The report of one record.
class LogRecordView final : public ReportView, public RecordView {
public:
    /// SPEC and EDIT_COMMENTS must outlive the view.
    LogRecordView(const ViewContext& context, const LogSpec& spec, QAction& editComments, QWidget* parent = nullptr);

    QWidget& widget() override { return *this; }
    void showRecord(const Table* log, std::optional<RowIndex> row) override;
    Report printable() const override { return report(); }

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    Drawing picture() const;

    ViewContext context_;
    const LogSpec& spec_;
    QAction& editComments_;
};

} // namespace quobrix
