#pragma once

#include "views/page.h"
#include "views/record_view.h"

#include <QTabWidget>

#include <vector>

namespace quobrix {

/// What a table of a record is called where it stands alone: "Trip 7 Samples".
ShownText tableTitle(const LogSpec& spec, const Table& log, RowIndex row, SourceText table, const TextContext& context);

/// The tables of one record, such as the samples of a trip.
class LogTableView final : public QTabWidget, public RecordView {
public:
    /// SPEC, whose records must have tables, must outlive the view.
    LogTableView(const ViewContext& context, const LogSpec& spec, QWidget* parent = nullptr);

    QWidget& widget() override { return *this; }
    void showRecord(const Table* log, std::optional<RowIndex> row) override;
    /// The tables that have rows.
    Report printable() const override;
    /// The table in view; nothing if it has no rows.
    std::optional<ExportContent> exported() const;
    /// The speed sample that a person has gone to in the table in view.
    std::optional<RowIndex> currentSample() const;

private:
    ViewContext context_;
    const LogSpec& spec_;
    std::string title_;
    std::vector<RecordTable> shown_; ///< own some of the columns
    std::vector<TSpreadsheet*> tables_;
};

} // namespace quobrix
