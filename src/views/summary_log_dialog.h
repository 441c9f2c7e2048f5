#pragma once

#include "report/ui/printable_window.h"
#include "summary/summary_table.h"
#include "summary/ui/summary_keeper.h"
#include "views/page.h"

#include <QDialog>

#include <memory>
#include <vector>

class QPushButton;

namespace quobrix {

class StatusLine;

/// The records of the summary database, to be looked at and deleted. It follows what is counted while it is open, and
/// closes when nothing is left.
class SummaryLogDialog final : public QDialog, public PrintableWindow {
public:
    /// CONTEXT has a counter.
    SummaryLogDialog(const ViewContext& context, QWidget* parent);
    ~SummaryLogDialog() override;

    TSpreadsheet& list() { return *list_; }
    std::optional<Report> printable() override;

protected:
    bool event(QEvent* event) override;

private:
    void refresh();
    void showState();
    std::vector<RowIndex> selectedRows() const;
    bool canDelete() const;
    void deleteSelected();
    void deleteAll();
    void remove(std::vector<SummaryRecord> records);

    const ViewContext context_;
    SummaryKeeper& keeper_;
    SummaryKeeper::Records counted_; ///< as the database has them
    SummaryKeeper::Records records_; ///< as they are shown
    std::unique_ptr<SummaryTable> table_;
    TSpreadsheet* list_ = nullptr;
    StatusLine* status_;
    QPushButton *delete_, *deleteAll_;
    bool deleting_ = false; ///< it is under way
};

} // namespace quobrix
