#pragma once

#include "tables/table.h"

#include <cstddef>
#include <span>
#include <vector>

namespace quobrix {

class Settings;

/// Options that are kept in the settings, shown and edited as the one row of a table that stands alone. Each option
/// lies in the section of its column's key under "Value" (texts: "default"); one that is missing has its column's
/// default.
///
/// Edits go into the settings immediately, and into their journal: what accept() has not confirmed is taken back by
/// cancel(), or when the table ends.
class OptionTable final : public Table {
public:
    static constexpr PersistentType kType{"OptionTable"};

    /// COLUMNS must be of the kinds Boolean, Integer, Real or Text, and live as long as the table. TITLE likewise.
    OptionTable(Settings& settings, std::span<const PersistentType* const> columns, SourceText title);
    ~OptionTable() override;

    const TableSpec& spec() const override { return spec_; }

    /// Keeps all edits so far. They can no longer be taken back: the history of edits must be cleared.
    void accept();
    /// Takes all edits since accept() back, in the settings and in the cells.
    void cancel();

    void cellEdited(std::size_t column, RowIndex row) override;
    void cellEditUndone(std::size_t column, RowIndex row) override;

private:
    void load();

    Settings& settings_;
    TableSpec spec_;
    std::size_t start_;              ///< in the journal
    std::vector<std::size_t> marks_; ///< before each edit
    bool journalWasEnabled_;
};

} // namespace quobrix
