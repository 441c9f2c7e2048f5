#pragma once

#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace quobrix {

/// How a key without a name is shown.
inline constexpr std::string_view kUnknownName = "Unknown";

/// Whether any record of a log still uses the key of the row. Computed from the logs when asked, and kept until one of
/// their key columns changes.
class InUseColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Boolean; }
    bool inUse(RowIndex row) const;
    Value value(RowIndex row) const override { return inUse(row); }
    std::string text(RowIndex row, const TextContext&) const override { return inUse(row) ? "Yes" : "No"; }

protected:
    /// The columns of the logs that hold the key.
    virtual std::vector<const Column*> users() const = 0;

private:
    mutable std::unordered_set<std::string> keys_;
    mutable std::uint64_t state_ = ~0ull;
};

class VehicleInUseColumn : public InUseColumn {
    std::vector<const Column*> users() const override;
};
class LoggerInUseColumn : public InUseColumn {
    std::vector<const Column*> users() const override;
};
class DriverInUseColumn : public InUseColumn {
    std::vector<const Column*> users() const override;
};

#define COLUMN(Name, Base, Heading, Tooltip) QUOBRIX_COLUMN_CLASS(Name, Base, #Name, D0, Heading, Tooltip)
#include "model/names.def"
#undef COLUMN

/// A table of keys that people gave names to: the key column first, then the name column.
class NamesTable : public Table {
public:
    /// The key of a row as text (a driver's number in decimal digits).
    std::string key(RowIndex row) const;
    const std::string& name(RowIndex row) const;
    /// The row of KEY; rowCount() if there is none.
    RowIndex find(std::string_view key) const;
    /// The name of KEY; empty if it has none.
    std::string nameOf(std::string_view key) const;
    /// The name of KEY, or "Unknown".
    std::string displayName(std::string_view key) const;

private:
    void refresh() const;
    mutable std::unordered_map<std::string, RowIndex> rows_;
    mutable std::uint64_t state_ = ~0ull;
};

class TVehicleNamesTable final : public NamesTable {
    QUOBRIX_TABLE_CLASS(TVehicleNamesTable, true)
    /// Adds a VIN with the default name "Unknown #n", n the smallest number from 1 that no row has yet.
    void add(const std::string& vin);
};

class TQuobrixNamesTable final : public NamesTable {
    QUOBRIX_TABLE_CLASS(TQuobrixNamesTable, true)
    /// Adds a serial number without a name.
    void add(const std::string& serialNumber);
};

class DriverNamesTable final : public NamesTable {
    QUOBRIX_TABLE_CLASS(DriverNamesTable, true)
    /// Adds a driver without a name.
    void add(std::int32_t driver);
};

} // namespace quobrix
