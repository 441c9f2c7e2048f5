#include "model/names.h"

#include "base/utf8.h"
#include "messages/message.h"
#include "model/fuel_entries.h"
#include "model/logs.h"
#include "model/serial_number.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <charconv>
#include <iterator>

namespace quobrix {
namespace {

/// The text of a key, whichever kind of column holds it; empty for none.
std::string keyText(const Column& column, RowIndex row) {
    const Value value = column.value(row);
    if (const auto* text = std::get_if<std::string>(&value))
        return *text;
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return std::to_string(*number);
    return {};
}

bool onlyVinCharacters(std::string_view text) {
    return text.find_first_not_of("ABCDEFGHJKLMNPRSTUVWXYZ0123456789") == std::string_view::npos;
}

TextColumn& nameColumn(const NamesTable& names) { return static_cast<TextColumn&>(names.column(1)); }

/// The columns of the logs of ASKING's document that COLUMN_OF gives, which may be none.
template <class ColumnOf>
std::vector<const Column*> columnsOfLogs(const Column& asking, ColumnOf columnOf) {
    std::vector<const Column*> columns;
    for (const LogSpec& log : logs())
        if (const PersistentType* type = columnOf(log); type && asking.store())
            if (const auto* table = static_cast<Table*>(asking.store()->existingSingletonOf(log.table)))
                columns.push_back(&table->columnOf(*type));
    return columns;
}

std::string_view withoutBlanksAround(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

/// Why the key of ROW is not changed: the records that refer to it would lose their name.
ShownText keyLock(const Column& key, RowIndex row) {
    const auto* names = static_cast<const NamesTable*>(key.table());
    return names && names->inUse(row) ? text(TextId::KeyIsReferredTo) : ShownText();
}

constexpr SourceText kFuels[] = {kUnknownName, SourceText("Petrol"), SourceText("Diesel"),
                                 SourceText("Other")}; // by code

// People add and delete names; more than a list can reasonably be read in is a mistaken paste.
constexpr RowRequirements kNameRows{.editable = true, .required = {0, 100'000}};

} // namespace

bool isVin(std::string_view text) { return text.size() == 17 && onlyVinCharacters(text); }

bool isDriverName(std::string_view name) {
    const std::size_t length = characterCount(name);
    return length >= 1 && length <= kLongestDriverName;
}

Parsed VehicleKeyColumn::parse(std::string_view text, const TextContext&) const {
    std::string vin(withoutBlanksAround(text));
    for (char& c : vin)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return {vin, {}};
}

ShownText VehicleKeyColumn::doubt(const Value& value) const {
    const auto* vin = std::get_if<std::string>(&value);
    if (!vin || onlyVinCharacters(*vin))
        return {};
    return quobrix::text(TextId::UnusualVin);
}

ShownText VehicleKeyColumn::lock(RowIndex row) const { return keyLock(*this, row); }

std::vector<Selection> VehicleFuelColumn::selections() const {
    std::vector<Selection> all;
    for (std::size_t code = 0; code < std::size(kFuels); ++code)
        all.push_back({static_cast<std::int64_t>(code), quobrix::text(kFuels[code])});
    return all;
}

std::string VehicleFuelColumn::selection(std::int32_t code) const {
    return code > 0 && code < static_cast<std::int32_t>(std::size(kFuels)) ? quobrix::text(kFuels[code])
                                                                           : quobrix::text(kFuels[0]);
}

Value VehicleFuelColumn::value(RowIndex row) const { return std::int64_t{has(row) ? at(row) : 0}; }

std::string_view VehicleFuelColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return buffer.words = selection(at(row));
}

Parsed LoggerKeyColumn::parse(std::string_view text, const TextContext&) const {
    const std::string_view serialNumber = withoutBlanksAround(text);
    if (!isAcceptedTyped(serialNumber))
        return {{}, makeMessage(MessageId::InvalidSerialNumber).text, MessageId::InvalidSerialNumber};
    return {std::string(serialNumber), {}};
}

ShownText LoggerKeyColumn::lock(RowIndex row) const { return keyLock(*this, row); }

ShownText DriverKeyColumn::lock(RowIndex row) const { return keyLock(*this, row); }

Parsed NameColumn::parse(std::string_view text, const TextContext&) const {
    return {std::string(withoutBlanksAround(text)), {}};
}

Parsed DriverNameColumn::parse(std::string_view text, const TextContext& context) const {
    Parsed name = NameColumn::parse(text, context);
    if (!isDriverName(std::get<std::string>(name.value)))
        return {{}, makeMessage(MessageId::InvalidDriverName).text};
    return name;
}

std::string_view DriverKeyColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    buffer.words = editText(row, context);
    return buffer.words;
}

bool InUseColumn::inUse(RowIndex row) const {
    const std::vector<const Column*> columns = users();
    std::uint64_t state = columns.size();
    for (const Column* column : columns)
        state = state * 1000003u + column->revision();
    if (state != state_) {
        keys_.clear();
        for (const Column* column : columns)
            for (RowIndex i = 0; i < column->rowCount(); ++i)
                keys_.insert(keyText(*column, i));
        state_ = state;
    }
    const std::string key = static_cast<const NamesTable*>(table())->key(row);
    return !key.empty() && keys_.contains(key); // records without a vehicle do not use a row without a key
}

std::vector<const Column*> VehicleInUseColumn::users() const {
    std::vector<const Column*> columns = columnsOfLogs(*this, [](const LogSpec& log) { return log.vehicle; });
    if (const auto* entries = store() ? store()->existingSingleton<TFuelEntryTable>() : nullptr)
        columns.push_back(&entries->column<TFuelEntryVehicleColumn>());
    return columns;
}

std::vector<const Column*> LoggerInUseColumn::users() const {
    return columnsOfLogs(*this, [](const LogSpec& log) { return log.logger(); });
}

std::vector<const Column*> DriverInUseColumn::users() const {
    return columnsOfLogs(*this, [](const LogSpec& log) { return log.driver; });
}

std::string NamesTable::key(RowIndex row) const { return keyText(column(0), row); }

const std::string& NamesTable::name(RowIndex row) const { return nameColumn(*this).at(row); }

bool NamesTable::inUse(RowIndex row) const { return static_cast<const InUseColumn&>(column(2)).inUse(row); }

void NamesTable::refresh() const {
    const std::uint64_t state = column(0).revision() * 1000003ull + rowCount();
    if (state == state_)
        return;
    rows_.clear();
    for (RowIndex row = 0; row < rowCount(); ++row)
        rows_.emplace(key(row), row);
    state_ = state;
}

RowIndex NamesTable::find(std::string_view key) const {
    if (key.empty())
        return rowCount();
    refresh();
    const auto found = rows_.find(std::string(key));
    return found == rows_.end() ? rowCount() : found->second;
}

std::string NamesTable::nameOf(std::string_view key) const {
    const RowIndex row = find(key);
    return row < rowCount() ? name(row) : std::string();
}

std::string_view NamesTable::displayName(std::string_view key, std::string& buffer) const {
    const RowIndex row = find(key);
    return row < rowCount() && !name(row).empty() ? std::string_view(name(row)) : textIn(buffer, kUnknownName);
}

std::string NamesTable::choiceName(RowIndex row) const {
    const std::string& own = name(row);
    if (own.empty())
        return key(row);
    for (RowIndex other = 0; other < rowCount(); ++other)
        if (other != row && name(other) == own)
            return text(TextId::WithAside, own, key(row));
    return own;
}

const TableSpec& TVehicleNamesTable::spec() const {
    static constexpr TableSpec spec{
        kType,
        kTypesOf<TVehicleNamesVinColumn, TVehicleNamesNameColumn, TVehicleNamesVinInUseColumn, TVehicleNamesFuelColumn>,
        {},
        SourceText("Vehicle ID"),
        kNameRows};
    return spec;
}

const TableSpec& TQuobrixNamesTable::spec() const {
    static constexpr TableSpec spec{
        kType,
        kTypesOf<TQuobrixNamesSerialNumberColumn, TQuobrixNamesNameColumn, TQuobrixNamesSerialNumberInUseColumn>,
        {},
        SourceText("Quobrix ID"),
        kNameRows};
    return spec;
}

const TableSpec& DriverNamesTable::spec() const {
    static constexpr TableSpec spec{kType,
                                    kTypesOf<DriverNamesIDColumn, DriverNamesNameColumn, DriverNamesIDInUseColumn>,
                                    {},
                                    SourceText("Driver ID"),
                                    kNameRows};
    return spec;
}

std::vector<std::string> NamesTable::addMissing(std::span<const std::string> keys) {
    std::vector<std::string> added;
    std::unordered_set<std::string_view> met;
    for (const std::string& key : keys)
        if (!key.empty() && met.insert(key).second && find(key) == rowCount())
            added.push_back(key);
    if (added.empty())
        return added;
    const std::vector<std::string> names = defaultNames(added.size());
    const RowIndex first = rowCount();
    insertRows(first, added.size());
    for (std::size_t i = 0; i < added.size(); ++i)
        setKey(first + i, added[i]);
    for (std::size_t i = 0; i < names.size(); ++i)
        nameColumn(*this).set(first + i, names[i]);
    return added;
}

void NamesTable::nameAll(std::span<const std::string> keys, const std::string& name) {
    for (const std::string& key : keys)
        nameColumn(*this).set(find(key), name);
}

std::vector<std::string> NamesTable::defaultNames(std::size_t) const { return {}; }

void NamesTable::setKey(RowIndex row, const std::string& key) { static_cast<TextColumn&>(column(0)).set(row, key); }

Fuel TVehicleNamesTable::fuelOf(std::string_view key) const {
    const RowIndex row = find(key);
    const auto& fuels = column<TVehicleNamesFuelColumn>();
    return row < rowCount() && fuels.has(row) ? static_cast<Fuel>(fuels.at(row)) : Fuel::Unknown;
}

std::vector<std::string> TVehicleNamesTable::defaultNames(std::size_t count) const {
    std::unordered_set<std::string_view> taken;
    for (RowIndex row = 0; row < rowCount(); ++row)
        taken.insert(name(row));
    std::vector<std::string> names;
    for (std::size_t number = 1; names.size() < count; ++number)
        if (std::string name = text(TextId::UnknownNumber, number); !taken.contains(name))
            names.push_back(std::move(name));
    return names;
}

void DriverNamesTable::setKey(RowIndex row, const std::string& key) {
    std::int32_t number = 0;
    std::from_chars(key.data(), key.data() + key.size(), number);
    column<DriverNamesIDColumn>().set(row, number);
}

} // namespace quobrix
