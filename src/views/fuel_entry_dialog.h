#pragma once

#include "model/fuel_entries.h"
#include "tables/table_edits.h"
#include "views/list_dialog.h"

class QLabel;

namespace quobrix {

/// Hears of edits before the list of the dialog does, which must not look at a table that has gone.
class HearsFirst : protected TableEditsListener {
protected:
    explicit HearsFirst(TableEdits& edits) : edits_(edits) { edits_.addListener(*this); }
    ~HearsFirst() { edits_.removeListener(*this); }

private:
    TableEdits& edits_;
};

/// Edits the fuel entries of the document, and says what they come to. The document gets its table of them with the
/// first one.
class FuelEntryDialog final : private HearsFirst, public ListDialog {
public:
    FuelEntryDialog(const ViewContext& context, QWidget* parent);
    ~FuelEntryDialog() override { endList(); }

    void refresh() override;

private:
    void tableChanged(const TableChange& change) override;
    void showEntries();
    void showTotals();
    std::vector<CellEdit> newEntry(RowIndex row) const;

    TFuelEntryTable none_; ///< stands for the entries while the document has none
    TFuelEntryTable* shown_ = nullptr;
    QLabel* totals_;
};

} // namespace quobrix
