#pragma once

#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace quobrix {

/// How a key without a name is shown.
inline constexpr SourceText kUnknownName("Unknown");

/// A driver's name is 1 to 20 characters long.
inline constexpr std::size_t kLongestDriverName = 20;
bool isDriverName(std::string_view name);

/// Whether TEXT is a vehicle identification number as ISO 3779 has them: 17 capital letters, of which I, O and Q are
/// none, and digits.
bool isVin(std::string_view text);

/// Where the settings keep the names that drivers get at first: one that is entered by hand, and one that a download
/// brings by number only. Each under kDefaultName; none or an empty one leaves the driver without a name.
inline constexpr std::string_view kNewDriverSection = "NewDriverColumn";
inline constexpr std::string_view kUnidentifiedDriverSection = "UnidentifiedDriverColumn";
inline constexpr std::string_view kDefaultName = "default";

/// A vehicle's VIN. What is typed becomes upper case; other forms than ISO 3779's are doubted, never refused: older
/// vehicles have them. Like every key it keeps its value while records refer to it.
class VehicleKeyColumn : public TextColumn {
public:
    Parsed parse(std::string_view text, const TextContext&) const override;
    ShownText doubt(const Value& value) const override;

protected:
    ShownText lock(RowIndex row) const override;
};
/// What an engine burns, as the codes that documents keep.
enum class Fuel : std::int32_t { Unknown, Petrol, Diesel, Other };

/// Always one of them: what was never set is unknown.
class VehicleFuelColumn : public SelectionColumn {
public:
    std::vector<Selection> selections() const override;
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext&, TextBuffer& buffer) const override;

protected:
    std::string selection(std::int32_t code) const override;
};

/// A logger's serial number, without blanks around it. What is typed must be accepted by isAcceptedTyped().
class LoggerKeyColumn : public TextColumn {
public:
    Parsed parse(std::string_view text, const TextContext&) const override;

protected:
    ShownText lock(RowIndex row) const override;
};
/// A driver's identification number: a number that is not counted with, so its digits are not grouped.
class DriverKeyColumn : public IntegerColumn {
public:
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

protected:
    ShownText lock(RowIndex row) const override;
};

/// A name, without blanks around it.
class NameColumn : public TextColumn {
public:
    Parsed parse(std::string_view text, const TextContext&) const override;
};
/// What is typed must be a driver's name; a driver without one is none of the person's doing.
class DriverNameColumn : public NameColumn {
public:
    Parsed parse(std::string_view text, const TextContext& context) const override;
};

/// Whether any record of a log still uses the key of the row. Computed from the logs when asked, and kept until one of
/// their key columns changes.
class InUseColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Boolean; }
    bool inUse(RowIndex row) const;
    Value value(RowIndex row) const override { return inUse(row); }
    std::string_view textView(RowIndex row, const TextContext&, TextBuffer& buffer) const override {
        return textIn(buffer.words, inUse(row) ? kYes : kNo);
    }

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

#define COLUMN(Name, Base, Heading, Tooltip, Needs) QUOBRIX_COLUMN_CLASS(Name, Base, #Name, D0, Heading, Tooltip, Needs)
#include "model/names.def"
#undef COLUMN

/// A table of keys that people gave names to: the key column first, then the name column, then the in-use column.
class NamesTable : public Table {
public:
    /// The key of a row as text (a driver's number in decimal digits).
    std::string key(RowIndex row) const;
    const std::string& name(RowIndex row) const;
    /// Whether any record of a log refers to the key of the row.
    bool inUse(RowIndex row) const;
    /// The row of KEY; rowCount() if there is none, as for the empty key.
    RowIndex find(std::string_view key) const;
    /// The name of KEY; empty if it has none.
    std::string nameOf(std::string_view key) const;
    /// The name of KEY, or "Unknown"; holds until a name or BUFFER changes.
    std::string_view displayName(std::string_view key, std::string& buffer) const;
    /// What tells the row from the others where people choose among them: its name; with its key, where another row has
    /// the same name; its key alone, where it has none.
    std::string choiceName(RowIndex row) const;

    /// Adds a row for each of KEYS that has none, in their order; gives the keys added. Empty ones are passed over.
    /// Takes time in proportion to the keys and the rows.
    std::vector<std::string> addMissing(std::span<const std::string> keys);
    /// Gives each of KEYS, which must be there, the name NAME.
    void nameAll(std::span<const std::string> keys, const std::string& name);
    /// The names that COUNT new keys get by themselves: none, if the keys stay without.
    virtual std::vector<std::string> defaultNames(std::size_t count) const;

protected:
    virtual void setKey(RowIndex row, const std::string& key);

private:
    void refresh() const;
    mutable std::unordered_map<std::string, RowIndex> rows_;
    mutable std::uint64_t state_ = ~0ull;
};

class TVehicleNamesTable final : public NamesTable {
    QUOBRIX_TABLE_CLASS(TVehicleNamesTable, true)
    /// What the vehicle KEY burns.
    Fuel fuelOf(std::string_view key) const;
    /// "Unknown #n" each, n the smallest numbers from 1 that no row has yet.
    std::vector<std::string> defaultNames(std::size_t count) const override;
};

class TQuobrixNamesTable final : public NamesTable {
    QUOBRIX_TABLE_CLASS(TQuobrixNamesTable, true)
};

class DriverNamesTable final : public NamesTable {
    QUOBRIX_TABLE_CLASS(DriverNamesTable, true)
protected:
    void setKey(RowIndex row, const std::string& key) override;
};

} // namespace quobrix
