#pragma once

#include "base/result.h"
#include "model/names.h"
#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// What a trip was made for ("Business"), and what is paid for driving it from a day on. Several of one name are its
/// rates one after the other.
struct TripType {
    std::string name;
    std::optional<double> rate{}; ///< per mile or kilometre, in whatever money a person counts
    bool perMile = false;
    std::optional<std::int64_t>
        from{}; ///< the beginning of that day, s since 1970 on the local clock; none: ever since
    bool operator==(const TripType&) const = default;
};

/// The types of a file.
struct TripTypes {
    std::vector<TripType> types{};
    /// A line that says no type, or what another one says already. It is kept as it is.
    struct Unread {
        std::size_t line; ///< counts from 1
        std::string text; ///< its bytes, without the end of the line
        bool operator==(const Unread&) const = default;
    };
    std::vector<Unread> unread{};
};

inline constexpr std::size_t kLongestTripType = 40; ///< characters
inline constexpr double kHighestTripRate = 1e6;

inline constexpr const char* kTripTypesFile = "triptype.txt";

/// The types of TEXT: UTF-8 lines of a name, or of a name, a rate with a decimal point, "mi" or "km" and, unless it
/// holds ever since, the day from which it holds (YYYY-MM-DD, 1970 to 2037), with tabs between. Empty ones do not
/// count.
TripTypes readTripTypes(std::string_view text);
/// The same as text; what is not read comes last.
std::string tripTypesText(const TripTypes& types);

/// Where a user's types lie, and those that everybody begins with.
struct TripTypesFolders {
    std::filesystem::path user, delivered;
};
TripTypesFolders tripTypesFolders();

/// The user's types; until there are any, those that are delivered, and none without either. The errors are those of
/// reading a file, and Unsupported for one that is too large.
Result<TripTypes> loadTripTypes(const TripTypesFolders& folders = tripTypesFolders());
/// Replaces the user's file as a whole.
Result<void> saveTripTypes(const TripTypes& types, const TripTypesFolders& folders = tripTypesFolders());

/// The names, each once, as they come.
std::vector<std::string> namesOf(const std::vector<TripType>& types);
/// The latest rate of the type NAME that holds at TIME (s since 1970 on the local clock); nothing if none does.
const TripType* rateAt(const std::vector<TripType>& types, std::string_view name, std::int64_t time);

/// The day of a moment, without a time. One that is typed is refused: it would count for nothing.
class DayColumn : public DateTimeColumn {
public:
    Parsed parse(std::string_view text, const TextContext& context) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    std::string editText(RowIndex row, const TextContext& context) const override { return text(row, context); }
};

/// The day from which a rate holds; another row of the type must not have the same.
class TripTypeDayColumn : public DayColumn {
public:
    ShownText conflict(RowIndex row) const override;
    bool comparesRows() const override { return true; }
};

/// What a rate is paid for; a rate needs it.
class RateUnitColumn : public SelectionColumn {
public:
    enum Unit : std::int32_t { Mile, Kilometre };
    std::vector<Selection> selections() const override;
    ShownText conflict(RowIndex row) const override;
    bool comparesRows() const override { return true; }

protected:
    std::string selection(std::int32_t code) const override;
};

QUOBRIX_COLUMN_CLASS(TripTypeNameColumn, NameColumn, "TripTypeNameColumn", D0, "&Type",
                     "What a trip was made for. A type may have several rows: its rates, each from a day on.",
                     Required.characters(1, kLongestTripType))
QUOBRIX_COLUMN_CLASS(TripTypeRateColumn, RealColumn, "TripTypeRateColumn", D3, "&Rate",
                     "What is paid for a mile or a kilometer of such trips, in your currency.",
                     Optional.between(0, kHighestTripRate))
QUOBRIX_COLUMN_CLASS(TripTypeUnitColumn, RateUnitColumn, "TripTypeUnitColumn", D0, "&Per",
                     "Whether the rate is for a mile or for a kilometer.", Optional)
QUOBRIX_COLUMN_CLASS(TripTypeFromColumn, TripTypeDayColumn, "TripTypeFromColumn", D0, "&From",
                     "The first day on which this rate holds; without one, it has always held.", Optional)

/// The types as they are edited; kept nowhere but in their file.
class TripTypesTable final : public Table {
    QUOBRIX_TABLE_CLASS(TripTypesTable, false)

    /// Shows TYPES in place of all rows.
    void show(const std::vector<TripType>& types, const TimeZone& zone);
    /// The types of the rows. What is wrong with a row is told by its number: Corrupt.
    Result<std::vector<TripType>> types(const TimeZone& zone) const;
};

} // namespace quobrix
