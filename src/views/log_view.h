#pragma once

#include "summary/driving_statistics.h"
#include "views/log_list.h"
#include "views/record_view.h"

#include <memory>
#include <optional>
#include <vector>

class QAction;
class QLabel;
class QTabWidget;

namespace quobrix {

/// A log: the list of its records, and the views of the one that is current in it. Enter in the list opens its report,
/// Escape goes back to the list, Alt+Up and Alt+Down go to its neighbours in the order of the list.
class LogView final : public Page {
public:
    /// SPEC must outlive the page.
    LogView(const ViewContext& context, const LogSpec& spec);

    std::vector<PathPart> path() const override;
    PagePlace place() const override;
    PagePlace start() const override { return {views_.front().spec.page, {}, true}; }
    bool has(const PagePlace& place) const override;
    void goTo(const PagePlace& place) override;
    void refresh() override;
    void edited() override;
    void showCell(std::string_view columnKey, RowIndex row) override;
    void showRecord(RowIndex row) override;
    void unitsChanged() override;
    std::optional<Report> printable(const std::optional<RecordRange>& range) const override;
    std::size_t printableRecords() const override;
    /// The list as it is shown, else of the record that is shown the table in view, or in its report the first one.
    std::optional<ExportContent> exported() override;
    bool canExport() const override;
    /// Nothing happens if the log has no such view.
    void showView(LogViewKind kind);

    /// The list of those records only that CHOICE is about.
    void showOnly(const DrivingChoice& choice);

    LogList& summary() { return *summary_; }

private:
    /// A tab; that of the summary has no view.
    struct Tab {
        const LogViewSpec& spec;
        RecordView* view;
    };

    void addView(const LogViewSpec& spec);
    QWidget* makeNavigator();
    const Tab& tab() const;
    int tabOf(LogViewKind kind) const;
    const Table* log() const;
    void step(int direction);
    void currentRecordChanged();
    void showRecordName();
    void showCurrentRecord();
    void followSample(LogViewKind from);
    void focusView();

    ViewContext context_;
    const LogSpec& spec_;
    LogList* summary_;
    QTabWidget* tabs_;
    int lastTab_ = 0;        ///< that was in view before another one
    std::vector<Tab> views_; ///< in the order of the tabs
    QLabel* record_ = nullptr;
    QAction* previous_ = nullptr;
    QAction* next_ = nullptr;
};

} // namespace quobrix
