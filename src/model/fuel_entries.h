#pragma once

#include "model/fuel_use.h"
#include "model/log_columns.h"
#include "model/trip_type_totals.h"

namespace quobrix {

class TVehicleNamesTable;

/// A vehicle of the list of vehicles, chosen or typed by its name or number.
class FuelVehicleColumn : public VehicleColumn {
public:
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    std::string editText(RowIndex row, const TextContext& context) const override { return text(row, context); }
    Parsed parse(std::string_view text, const TextContext& context) const override;
    std::vector<Selection> selections() const override;
    bool comparesRows() const override { return true; }

private:
    const TVehicleNamesTable* vehicles() const;
};

/// Other entries are between others with it.
class FuelTimeColumn : public DateTimeColumn {
public:
    bool comparesRows() const override { return true; }
};

/// Rises with time.
class OdometerColumn : public RealColumn {
public:
    ShownText conflict(RowIndex row) const override;
    bool comparesRows() const override { return true; }
};

/// Metres a US gallon since the last full tank, as the user reads economies.
class FuelEconomyColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Real; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    /// Of what no car does: something was mistyped, or not recorded.
    ShownText doubt(const Value& value) const override;
};

#define COLUMN(Name, Base, Unit, Heading, Tooltip, Needs)                                                              \
    QUOBRIX_COLUMN_CLASS(Name, Base, #Name, Unit, Heading, Tooltip, Needs)
#include "model/fuel_entries.def"
#undef COLUMN

/// What was filled in, entered by people; in any order. A document has it from the first entry on.
class TFuelEntryTable final : public Table {
    QUOBRIX_TABLE_CLASS(TFuelEntryTable, true)

    /// The entries as they are; kept until one of them changes.
    const std::vector<FuelFill>& fills() const;
    const std::vector<std::optional<FuelUse>>& uses() const;
    const std::vector<std::optional<std::size_t>>& fallen() const;

    /// The vehicles that have entries, in the order of their first ones.
    std::vector<std::string> vehicles() const;
    /// What the entries of VEHICLE come to, in a line: its name, economy, cost of distance and month. Empty while
    /// nothing is known.
    ShownText summaryOf(const std::string& vehicle, const TextContext& context) const;

private:
    void refresh() const;
    mutable std::uint64_t state_ = ~0ull;
    mutable std::vector<FuelFill> fills_;
    mutable std::vector<std::optional<FuelUse>> uses_;
    mutable std::vector<std::optional<std::size_t>> fallen_;
};

/// What odometers showed when vehicles were filled, by the documents that the tables of PARTS belong to.
std::vector<OdometerReading> odometerReadings(std::span<const TableRows> parts);

} // namespace quobrix
