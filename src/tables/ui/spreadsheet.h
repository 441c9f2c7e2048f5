#pragma once

#include "tables/ui/spreadsheet_layout.h"
#include "tables/ui/spreadsheet_model.h"
#include "tables/ui/spreadsheet_view.h"

#include <QWidget>

#include <optional>
#include <string>

namespace quobrix {

class Settings;

/// What every spreadsheet shows and remembers through; all of it outlives the spreadsheet.
struct SpreadsheetContext {
    TextContext text;
    Settings& settings;
};

/// What tells one spreadsheet from another.
struct SpreadsheetSpec {
    std::string name;  ///< object name, and the section of its layout in the settings
    QString title;     ///< accessible name
    QString emptyText; ///< stands in place of rows
    SpreadsheetView::Use use = SpreadsheetView::Use::Records;
};

/// A table on the screen: sorted by a click on a heading, its columns moved, sized and chosen by their headings, all of
/// it remembered.
class TSpreadsheet : public QWidget {
    Q_OBJECT
public:
    TSpreadsheet(const SpreadsheetContext& context, const SpreadsheetSpec& spec, QWidget* parent = nullptr);
    ~TSpreadsheet() override;

    SpreadsheetModel& model() { return model_; }
    const SpreadsheetModel& model() const { return model_; }
    SpreadsheetView& view() { return *view_; }

    /// Shows COLUMNS as SpreadsheetModel does; the headings keep what the user made of them. There is no current row
    /// then. Rows with titles show them at their left.
    void setColumns(std::vector<ShownColumn> columns, SpreadsheetModel::RowTitle rowTitle = {});
    /// The stored row that is current; nothing if there is none.
    std::optional<RowIndex> currentRow() const { return view_->currentRow(); }
    void setCurrentRow(RowIndex row);
    /// The row shown STEP rows below (above, if negative) ROW; nothing if there is none.
    std::optional<RowIndex> neighbour(RowIndex row, int step) const;

signals:
    void rowActivated(quobrix::RowIndex row);
    void currentRowChanged();
    /// The rows are shown in another order.
    void orderChanged();

private:
    SpreadsheetContext context_;
    SpreadsheetModel model_;
    SpreadsheetView* view_;
    SpreadsheetLayout layout_;
};

} // namespace quobrix
