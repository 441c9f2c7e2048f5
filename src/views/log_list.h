#pragma once

#include "model/logs.h"
#include "summary/driving_statistics.h"
#include "views/page.h"

class QTimer;

namespace quobrix {

class FilterBar;
class RecordCommands;
class TotalsLine;

/// The records of a log, one row each, between the filter that chooses which of them are shown and the line that says
/// what these come to. The filter is as old as the list: a person finds it as they left it, until the document gets
/// other content.
class LogList final : public TSpreadsheet {
public:
    /// SPEC must outlive the list.
    LogList(const ViewContext& context, const LogSpec& spec, QWidget* parent = nullptr);

    /// Shows the rows of LOG, which may be none. The current record stays current where its row has moved, the last one
    /// becomes so where there was none.
    void show(const Table* log);

    /// What the current record is known by; nothing if there is none.
    const std::optional<RecordKey>& current() const { return current_; }

    RecordCommands& recordCommands() { return *recordCommands_; }

    /// Shows the records that CHOICE is about, by a filter as a person could have set it.
    void filterBy(const DrivingChoice& choice);
    /// Gives the keyboard to the filter.
    void openFilter();

    /// As Page::printable.
    std::optional<Report> printable(const std::optional<RecordRange>& range);

private:
    void addToMenu(QMenu& menu, QAction* before) override;
    void deleteSelection() override;
    void makeCurrent();
    void applyFilter();
    void showCount();
    void updateLater(bool shown);
    void updateTotals();

    const LogSpec& spec_;
    const ViewContext context_;
    RecordCommands* recordCommands_;
    FilterBar* filter_;
    TotalsLine* totals_;
    QTimer* update_;
    bool hadRecords_ = false;  ///< in this document
    bool shownChanged_ = true; ///< what totals_ says of the rows that are shown does not hold any more
    /// By row: whether the filter wants it, when it was applied last.
    std::vector<bool> wanted_;
    const Table* log_ = nullptr;
    std::optional<RecordKey> current_;
};

} // namespace quobrix
