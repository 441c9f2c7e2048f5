#include "model/fuel_entries.h"

#include "base/fold_case.h"
#include "model/names.h"
#include "texts/text.h"
#include "units/economy.h"
#include "units/unit_system.h"

#include <algorithm>

namespace quobrix {
namespace {

// What the most and the least thrifty vehicles on the road do, with room: 3 and 240 miles a gallon.
constexpr double kLeastEconomy = 3 * 1609.344, kMostEconomy = 240 * 1609.344; // m a US gallon

const TFuelEntryTable* entriesOf(const Column& column) { return static_cast<const TFuelEntryTable*>(column.table()); }

} // namespace

const TVehicleNamesTable* FuelVehicleColumn::vehicles() const {
    return store() ? store()->existingSingleton<TVehicleNamesTable>() : nullptr;
}

std::string_view FuelVehicleColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    const TVehicleNamesTable* names = vehicles();
    const RowIndex known = names ? names->find(at(row)) : 0;
    if (!names || known >= names->rowCount())
        return at(row);
    return buffer.words = names->choiceName(known);
}

std::vector<Selection> FuelVehicleColumn::selections() const {
    std::vector<Selection> all;
    if (const TVehicleNamesTable* names = vehicles())
        for (RowIndex row = 0; row < names->rowCount(); ++row)
            if (!names->key(row).empty())
                all.push_back({static_cast<std::int64_t>(row), names->choiceName(row)});
    return all;
}

Parsed FuelVehicleColumn::parse(std::string_view text, const TextContext&) const {
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos)
        return {std::string(), {}};
    const std::string typed = foldCase(text.substr(begin, text.find_last_not_of(" \t") - begin + 1));
    const TVehicleNamesTable* names = vehicles();
    std::vector<RowIndex> called;
    for (RowIndex row = 0; names && row < names->rowCount(); ++row) {
        if (foldCase(names->key(row)) == typed || foldCase(names->choiceName(row)) == typed)
            return {names->key(row), {}};
        if (foldCase(names->name(row)) == typed)
            called.push_back(row);
    }
    return {{}, called.empty() ? quobrix::text(TextId::FuelNoVehicle) : quobrix::text(TextId::FuelManyVehicles)};
}

ShownText OdometerColumn::conflict(RowIndex row) const {
    const TFuelEntryTable* entries = entriesOf(*this);
    if (!entries || row >= entries->fallen().size() || !entries->fallen()[row])
        return {};
    return quobrix::text(TextId::FuelOdometerFalls, *entries->fallen()[row] + 1);
}

Value FuelEconomyColumn::value(RowIndex row) const {
    const TFuelEntryTable* entries = entriesOf(*this);
    if (!entries || row >= entries->uses().size() || !entries->uses()[row])
        return {};
    const FuelUse& use = *entries->uses()[row];
    return use.distance / use.fuel;
}

std::string_view FuelEconomyColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const Value economy = value(row);
    const auto* metres = std::get_if<double>(&economy);
    return metres ? std::string_view(buffer.words = economyText(*metres, context.units)) : std::string_view();
}

ShownText FuelEconomyColumn::doubt(const Value& value) const {
    const auto* metres = std::get_if<double>(&value);
    return metres && (*metres < kLeastEconomy || *metres > kMostEconomy) ? quobrix::text(TextId::FuelDoubtfulEconomy)
                                                                         : ShownText();
}

const TableSpec& TFuelEntryTable::spec() const {
    static constexpr TableSpec spec{
        kType,
        kTypesOf<TFuelEntryVehicleColumn, TFuelEntryTimeColumn, TFuelEntryOdometerColumn, TFuelEntryAmountColumn,
                 TFuelEntryFullTankColumn, TFuelEntryMissedFillColumn, TFuelEntryTotalPriceColumn,
                 TFuelEntryEconomyColumn, TFuelEntryCommentsColumn>,
        {},
        SourceText("Fuel Entry"),
        {.editable = true, .required = {0, 100'000}}};
    return spec;
}

void TFuelEntryTable::refresh() const {
    const auto& vehicles = column<TFuelEntryVehicleColumn>();
    const auto& times = column<TFuelEntryTimeColumn>();
    const auto& odometers = column<TFuelEntryOdometerColumn>();
    const auto& amounts = column<TFuelEntryAmountColumn>();
    const auto& full = column<TFuelEntryFullTankColumn>();
    const auto& missed = column<TFuelEntryMissedFillColumn>();
    const auto& prices = column<TFuelEntryTotalPriceColumn>();
    std::uint64_t state = rowCount();
    for (const Column* each :
         std::initializer_list<const Column*>{&vehicles, &times, &odometers, &amounts, &full, &missed, &prices})
        state = state * 1000003u + each->revision();
    if (state == state_)
        return;
    // What nobody can mean, a damaged file says: it is as if nothing stood there.
    const auto figure = [](const RealColumn& of, RowIndex row) {
        constexpr double kMost = 1e12;
        return of.has(row) && of.at(row) >= 0 && of.at(row) <= kMost ? std::optional(of.at(row)) : std::nullopt;
    };
    fills_.clear();
    for (RowIndex row = 0; row < rowCount(); ++row)
        fills_.push_back({vehicles.at(row), times.has(row) ? std::optional<std::int64_t>(times.at(row)) : std::nullopt,
                          figure(odometers, row), figure(amounts, row), full.at(row) != 0, missed.at(row) != 0,
                          figure(prices, row)});
    uses_ = fuelUses(fills_);
    fallen_ = fallenOdometers(fills_);
    state_ = state;
}

std::vector<std::string> TFuelEntryTable::vehicles() const {
    std::vector<std::string> all;
    for (const std::string& vehicle : column<TFuelEntryVehicleColumn>().values())
        if (!vehicle.empty() && std::ranges::find(all, vehicle) == all.end())
            all.push_back(vehicle);
    return all;
}

ShownText TFuelEntryTable::summaryOf(const std::string& vehicle, const TextContext& context) const {
    std::vector<FuelFill> own;
    std::ranges::copy_if(fills(), std::back_inserter(own),
                         [&](const FuelFill& fill) { return fill.vehicle == vehicle; });
    const FuelTotals totals = fuelTotals(own);
    const TUnitSystem& units = context.units;
    const auto money = [&](double amount) { return units.formatValue(UnitTypeId::D2, amount); };
    std::string known;
    const auto add = [&](const ShownText& part) { known += (known.empty() ? "" : ", ") + part; };
    if (totals.fuel > 0)
        add(text(TextId::FuelEconomyOf, economyText(totals.distance / totals.fuel, units),
                 units.formatValueWithUnits(UnitTypeId::Distance, totals.distance),
                 units.formatValueWithUnits(UnitTypeId::Fuel, totals.fuel)));
    if (totals.pricedDistance > 0) {
        const double perMetre = totals.distancePrice / totals.pricedDistance;
        add(inMiles(units) ? text(TextId::FigurePer100Miles, money(perMetre * 100 * 1609.344))
                           : text(TextId::FigurePer100Kilometres, money(perMetre * 100'000)));
    }
    if (totals.months >= 1)
        add(text(TextId::FuelMonthly, money(totals.monthsPrice / totals.months)));
    if (known.empty())
        return {};
    const auto& column = this->column<TFuelEntryVehicleColumn>();
    const auto row = static_cast<RowIndex>(std::ranges::find(column.values(), vehicle) - column.values().begin());
    return text(TextId::WithDetail, column.text(row, context), known);
}

const std::vector<FuelFill>& TFuelEntryTable::fills() const {
    refresh();
    return fills_;
}
const std::vector<std::optional<FuelUse>>& TFuelEntryTable::uses() const {
    refresh();
    return uses_;
}
const std::vector<std::optional<std::size_t>>& TFuelEntryTable::fallen() const {
    refresh();
    return fallen_;
}

std::vector<OdometerReading> odometerReadings(std::span<const TableRows> parts) {
    std::vector<OdometerReading> readings;
    for (const TableRows& part : parts)
        if (const auto* entries =
                part.table->store() ? part.table->store()->existingSingleton<TFuelEntryTable>() : nullptr)
            for (const FuelFill& fill : entries->fills())
                if (!fill.vehicle.empty() && fill.time && fill.odometer)
                    readings.push_back({fill.vehicle, *fill.time, *fill.odometer});
    return readings;
}

} // namespace quobrix
