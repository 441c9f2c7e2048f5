#pragma once

#include "base/no_value.h"
#include "document/persistent.h"
#include "units/unit_catalogue.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace quobrix {

class Table;
class TimeZone;
class TUnitSystem;

enum class ColumnKind { Boolean, Integer, Real, Text, Selection, DateTime, Table };

/// What a cell holds, in base units: nothing, a boolean, an integer (selections: the code; dates: seconds since
/// 1970-01-01 00:00 UTC), a real in the base unit of the column's unit type, or a text.
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

/// The description of a column class: all that differs between most columns.
struct ColumnSpec {
    PersistentType type;
    std::string_view key;     ///< identity in files of values, settings and help; the class name but for two classes
    UnitTypeId unit;          ///< D0 where no unit applies
    std::string_view heading; ///< '&' marks the mnemonic, a line break splits it in two lines
    std::string_view tooltip;
};

/// What turns a base value into the user's text.
struct TextContext {
    const TUnitSystem& units;
    const TimeZone& zone;
};

using RowIndex = std::size_t;

/// A column of a table: one contiguous array of values, or, for a derived column, none at all.
class Column : public PersistentObject {
public:
    virtual const ColumnSpec& spec() const = 0;
    const PersistentType& type() const final { return spec().type; }
    virtual ColumnKind kind() const = 0;
    /// Holds values of its own; derived columns compute theirs from their siblings.
    virtual bool stored() const { return false; }

    /// The table it belongs to; nothing while it stands alone.
    Table* table() const { return table_; }
    /// Rows of the table, or of the column itself while it stands alone.
    RowIndex rowCount() const;

    /// ROW must be below rowCount() in all calls below.
    virtual Value value(RowIndex row) const = 0;
    /// The cell as the user reads it, with its unit; empty when there is no value.
    virtual std::string text(RowIndex row, const TextContext& context) const = 0;

    /// Makes room for COUNT rows without values before row AT. No effect on derived columns.
    virtual void insertRows(RowIndex, std::size_t) {}
    virtual void removeRows(RowIndex, std::size_t) {}
    /// Rows of the column's own array; 0 for derived columns.
    virtual std::size_t storedRows() const { return 0; }

    void write(ByteWriter&) const override {}
    bool read(ByteReader&, std::uint8_t) override { return true; }

private:
    friend class Table;
    Table* table_ = nullptr;
};

/// The heading as plain text: no mnemonic marks, lines joined by a blank, no blank at the ends.
std::string plainHeading(const ColumnSpec& spec);

template <class T>
std::unique_ptr<PersistentObject> makePersistent() {
    return std::make_unique<T>();
}

} // namespace quobrix
