#include "model/trip_types.h"

#include "base/fold_case.h"
#include "base/utf8.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <utility>

namespace quobrix {
namespace {

constexpr std::size_t kLargestTripTypesFile = 64 * 1024;

/// What some editors begin a file with.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The end of a line in files of Windows counts as a blank.
std::string_view withoutBlanks(std::string_view text) {
    constexpr const char* kBlanks = " \r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool isName(std::string_view name) {
    return !name.empty() && characterCount(name) <= kLongestTripType && validUtf8(name) == name &&
           oneLine(name) == name && !name.starts_with(kByteOrderMark);
}

std::optional<double> rateOf(std::string_view text) {
    double rate = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rate, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size() || !(rate >= 0 && rate <= kHighestTripRate))
        return {};
    return rate + 0.0; // -0 is 0
}

/// The beginning of the day YYYY-MM-DD.
std::optional<std::int64_t> dayOf(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return {};
    const auto number = [&](std::size_t at, std::size_t digits) {
        int value = -1;
        const char* last = text.data() + at + digits;
        const auto [end, error] = std::from_chars(text.data() + at, last, value);
        return error == std::errc() && end == last ? value : -1;
    };
    const DateTime day{number(0, 4), number(5, 2), number(8, 2)};
    if (day.year < 1970 || day.year > 2037 || day.month < 1 || day.day < 1 || normalized(day) != day)
        return {};
    return secondsFromFields(day);
}

std::optional<TripType> typeOf(std::string_view line) {
    if (line.starts_with(kByteOrderMark))
        line.remove_prefix(kByteOrderMark.size());
    std::array<std::string_view, 4> fields;
    std::size_t count = 0;
    for (std::string_view rest = line;; ++count) {
        if (count == fields.size())
            return {};
        const std::size_t tab = rest.find('\t');
        fields[count] = withoutBlanks(rest.substr(0, tab));
        if (tab == std::string_view::npos)
            break;
        rest.remove_prefix(tab + 1);
    }
    TripType type{.name = std::string(fields[0])};
    if (!isName(type.name) || count == 1)
        return {};
    if (count == 0)
        return type;
    type.rate = rateOf(fields[1]);
    type.perMile = fields[2] == "mi";
    if (count == 3)
        type.from = dayOf(fields[3]);
    if (!type.rate || (!type.perMile && fields[2] != "km") || (count == 3 && !type.from))
        return {};
    return type;
}

std::string lineOf(const TripType& type) {
    std::string line = type.name;
    if (type.rate) {
        std::array<char, 400> digits; // as few as give the rate back, which may be as small as a double can be
        const auto end =
            std::to_chars(digits.data(), digits.data() + digits.size(), *type.rate, std::chars_format::fixed).ptr;
        line += fmt::format("\t{}\t{}", std::string_view(digits.data(), end), type.perMile ? "mi" : "km");
    }
    if (!type.rate || !type.from)
        return line;
    const DateTime day = fieldsFromSeconds(*type.from);
    return line + fmt::format("\t{:04}-{:02}-{:02}", day.year, day.month, day.day);
}

} // namespace

TripTypes readTripTypes(std::string_view text) {
    TripTypes all;
    std::set<std::pair<std::string, std::optional<std::int64_t>>> known; // names and days
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (withoutBlanks(line).empty())
            continue;
        std::optional<TripType> type = typeOf(line);
        if (type && known.emplace(foldCase(type->name), type->from).second)
            all.types.push_back(std::move(*type));
        else
            all.unread.push_back({number, std::string(line)});
    }
    return all;
}

std::string tripTypesText(const TripTypes& types) {
    std::string text;
    for (const TripType& type : types.types)
        text += lineOf(type) + '\n';
    for (const TripTypes::Unread& line : types.unread)
        text += line.text + '\n';
    return text;
}

TripTypesFolders tripTypesFolders() { return {userDataFolder(), deliveredFolder()}; }

Result<TripTypes> loadTripTypes(const TripTypesFolders& folders) {
    for (const std::filesystem::path& folder : {folders.user, folders.delivered}) {
        if (folder.empty())
            continue;
        const Result<Bytes> bytes = readFile(folder / kTripTypesFile, kLargestTripTypesFile);
        if (bytes)
            return readTripTypes({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
        if (bytes.error().kind != ErrorKind::NotFound)
            return bytes.error();
    }
    return TripTypes{};
}

Result<void> saveTripTypes(const TripTypes& types, const TripTypesFolders& folders) {
    const std::string text = tripTypesText(types);
    if (text.size() > kLargestTripTypesFile)
        return Error{ErrorKind::Unsupported, quobrix::text(TextId::TripTypesMany)};
    makePrivateFolder(folders.user);
    return writeFileAtomically(folders.user / kTripTypesFile,
                               {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::vector<std::string> namesOf(const std::vector<TripType>& types) {
    std::vector<std::string> names;
    std::set<std::string> known;
    for (const TripType& type : types)
        if (known.insert(foldCase(type.name)).second)
            names.push_back(type.name);
    return names;
}

const TripType* rateAt(const std::vector<TripType>& types, std::string_view name, std::int64_t time) {
    const TripType* best = nullptr;
    const std::string wanted = foldCase(name);
    for (const TripType& type : types)
        if (type.rate && (!type.from || *type.from <= time) && foldCase(type.name) == wanted &&
            (!best || !best->from || (type.from && *type.from > *best->from)))
            best = &type;
    return best;
}

Parsed DayColumn::parse(std::string_view text, const TextContext& context) const {
    // As it was typed: a day may begin later than at midnight.
    const std::optional<DateTime> typed = parseDateTime(context.units, text);
    if (typed && (typed->hour != 0 || typed->minute != 0 || typed->second != 0))
        return {{}, quobrix::text(TextId::TripTypeDayOnly)};
    return DateTimeColumn::parse(text, context);
}

std::string_view DayColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    if (!has(row))
        return {};
    buffer.words = dateText(context.units, context.zone.toLocal(at(row)));
    return buffer.words;
}

ShownText TripTypeDayColumn::conflict(RowIndex row) const {
    const auto& names = table()->column<TripTypeNameColumn>();
    const std::string name = foldCase(names.at(row));
    for (RowIndex other = 0; other < rowCount(); ++other)
        if (other != row && at(other) == at(row) && foldCase(names.at(other)) == name && !name.empty())
            return quobrix::text(TextId::TripTypeTwice, other + 1);
    return {};
}

std::vector<Selection> RateUnitColumn::selections() const {
    return {{Mile, selection(Mile)}, {Kilometre, selection(Kilometre)}};
}

std::string RateUnitColumn::selection(std::int32_t code) const {
    return code == Mile ? quobrix::text(TextId::RatePerMile) : quobrix::text(TextId::RatePerKilometre);
}

ShownText RateUnitColumn::conflict(RowIndex row) const {
    return table()->column<TripTypeRateColumn>().has(row) && !has(row) ? quobrix::text(TextId::TripRateUnit)
                                                                       : ShownText();
}

const TableSpec& TripTypesTable::spec() const {
    static constexpr TableSpec spec{
        kType,
        kTypesOf<TripTypeNameColumn, TripTypeRateColumn, TripTypeUnitColumn, TripTypeFromColumn>,
        {},
        SourceText("Trip Types"),
        {.editable = true, .required = {0, 500}}};
    return spec;
}

void TripTypesTable::show(const std::vector<TripType>& types, const TimeZone& zone) {
    removeRows(0, rowCount());
    insertRows(0, types.size());
    for (RowIndex row = 0; row < types.size(); ++row) {
        const TripType& type = types[row];
        column<TripTypeNameColumn>().set(row, type.name);
        if (type.rate) {
            column<TripTypeRateColumn>().set(row, *type.rate);
            column<TripTypeUnitColumn>().set(row, type.perMile ? RateUnitColumn::Mile : RateUnitColumn::Kilometre);
        }
        if (type.from)
            column<TripTypeFromColumn>().set(row, static_cast<std::int32_t>(zone.toUtc(fieldsFromSeconds(*type.from))));
    }
}

Result<std::vector<TripType>> TripTypesTable::types(const TimeZone& zone) const {
    std::vector<TripType> all;
    const auto& names = column<TripTypeNameColumn>();
    const auto& rates = column<TripTypeRateColumn>();
    const auto& units = column<TripTypeUnitColumn>();
    const auto& days = column<TripTypeFromColumn>();
    for (RowIndex row = 0; row < rowCount(); ++row) {
        const auto wrong = [row](const ShownText& why) {
            return Error{ErrorKind::Corrupt, text(TextId::TripTypeRow, row + 1, why)};
        };
        TripType type{.name = oneLine(names.at(row))};
        if (!isName(type.name))
            return wrong(text(TextId::TripTypeUnnamed));
        if (ShownText why = days.conflict(row); !why.empty())
            return wrong(why);
        if (rates.has(row)) {
            if (ShownText why = units.conflict(row); !why.empty())
                return wrong(why);
            type.rate = rates.at(row);
            type.perMile = units.at(row) == RateUnitColumn::Mile;
        }
        if (days.has(row)) {
            if (!type.rate)
                return wrong(text(TextId::TripTypeDayAlone));
            const DateTime local = zone.toLocal(days.at(row));
            type.from = secondsFromFields({local.year, local.month, local.day});
        }
        all.push_back(std::move(type));
    }
    return all;
}

} // namespace quobrix
