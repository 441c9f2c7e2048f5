#include "model/names.h"

#include "base/utf8.h"
#include "model/accident_log.h"
#include "model/security_log.h"
#include "model/trip_log.h"
#include "model/trouble_log.h"

#include <fmt/format.h>

#include <charconv>

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

TextColumn& nameColumn(const NamesTable& names) { return static_cast<TextColumn&>(names.column(1)); }

/// The column C of the log, if the document has that log.
template <class LogTable, class C>
void addUser(const Column& asking, std::vector<const Column*>& users) {
    if (const LogTable* log = asking.store() ? asking.store()->existingSingleton<LogTable>() : nullptr)
        users.push_back(&log->template column<C>());
}

// People add and delete names; more than a list can reasonably be read in is a mistaken paste.
constexpr RowRequirements kNameRows{.editable = true, .required = {0, 100'000}};

} // namespace

bool isDriverName(std::string_view name) {
    const std::size_t length = characterCount(name);
    return length >= 1 && length <= kLongestDriverName;
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
    return keys_.contains(static_cast<const NamesTable*>(table())->key(row));
}

std::vector<const Column*> VehicleInUseColumn::users() const {
    std::vector<const Column*> result;
    addUser<TTripLogTable, TTripLogVinColumn>(*this, result);
    addUser<TTroubleLogTable, TTroubleLogVinColumn>(*this, result);
    addUser<TSecurityLogTable, TSecurityLogVinColumn>(*this, result);
    addUser<TAccidentLogTable, TAccidentLogTableVinColumn>(*this, result);
    return result;
}

std::vector<const Column*> LoggerInUseColumn::users() const {
    std::vector<const Column*> result;
    addUser<TTripLogTable, TTripLogQuobrixSerialNumberColumn>(*this, result);
    addUser<TTroubleLogTable, TTroubleLogQuobrixSerialNumberColumn>(*this, result);
    addUser<TSecurityLogTable, TSecurityLogQuobrixSerialNumberColumn>(*this, result);
    addUser<TAccidentLogTable, TAccidentLogTableQuobrixSerialNumberColumn>(*this, result);
    return result;
}

std::vector<const Column*> DriverInUseColumn::users() const {
    std::vector<const Column*> result;
    addUser<TTripLogTable, TTripLogDriverIDColumn>(*this, result);
    return result;
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
    refresh();
    const auto found = rows_.find(std::string(key));
    return found == rows_.end() ? rowCount() : found->second;
}

std::string NamesTable::nameOf(std::string_view key) const {
    const RowIndex row = find(key);
    return row < rowCount() ? name(row) : std::string();
}

std::string NamesTable::displayName(std::string_view key) const {
    std::string result = nameOf(key);
    return result.empty() ? std::string(kUnknownName) : result;
}

const TableSpec& TVehicleNamesTable::spec() const {
    static constexpr TableSpec spec{
        kType,
        kTypesOf<TVehicleNamesVinColumn, TVehicleNamesNameColumn, TVehicleNamesVinInUseColumn>,
        {},
        "Vehicle ID",
        kNameRows};
    return spec;
}

const TableSpec& TQuobrixNamesTable::spec() const {
    static constexpr TableSpec spec{
        kType,
        kTypesOf<TQuobrixNamesSerialNumberColumn, TQuobrixNamesNameColumn, TQuobrixNamesSerialNumberInUseColumn>,
        {},
        "Quobrix ID",
        kNameRows};
    return spec;
}

const TableSpec& DriverNamesTable::spec() const {
    static constexpr TableSpec spec{kType,
                                    kTypesOf<DriverNamesIDColumn, DriverNamesNameColumn, DriverNamesIDInUseColumn>,
                                    {},
                                    "Driver ID",
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

std::vector<std::string> TVehicleNamesTable::defaultNames(std::size_t count) const {
    std::unordered_set<std::string_view> taken;
    for (RowIndex row = 0; row < rowCount(); ++row)
        taken.insert(name(row));
    std::vector<std::string> names;
    for (std::size_t number = 1; names.size() < count; ++number)
        if (std::string name = fmt::format("Unknown #{}", number); !taken.contains(name))
            names.push_back(std::move(name));
    return names;
}

void DriverNamesTable::setKey(RowIndex row, const std::string& key) {
    std::int32_t number = 0;
    std::from_chars(key.data(), key.data() + key.size(), number);
    column<DriverNamesIDColumn>().set(row, number);
}

} // namespace quobrix
