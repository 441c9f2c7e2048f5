#pragma once

#include "tables/edit_check.h"
#include "tables/table.h"

#include <memory>
#include <vector>

namespace quobrix {

/// A few values that one dialog shows and edits, as a table that stands alone and is kept nowhere.
class ValueSheet {
public:
    virtual ~ValueSheet() = default;

    Table& table() { return *table_; }
    const Table& table() const { return *table_; }
    virtual ShownText rowTitle(RowIndex row) const = 0;
    /// The edits after which the table has the values that are delivered.
    virtual std::vector<CellEdit> originals() = 0;

protected:
    /// TABLE gets ROWS.
    ValueSheet(std::unique_ptr<Table> table, RowIndex rows) : table_(std::move(table)) { table_->insertRows(0, rows); }

private:
    std::unique_ptr<Table> table_;
};

} // namespace quobrix
