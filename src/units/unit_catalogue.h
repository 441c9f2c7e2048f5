#pragma once

#include "texts/source_text.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace quobrix {

/// Every unit of the program; its number is its index in the catalogue and what unit-system files store.
enum class UnitId : std::uint8_t {
#define UNIT(Number, Id, Name, Factor, Offset, Decimals) Id = Number,
#define TIME_UNIT(Number, Id, Name, SecondsPerUnit, Decimals) Id = Number,
#include "units/units.def"
#undef TIME_UNIT
#undef UNIT
};

/// Every kind of quantity. D0 to D9 are plain numbers and P0 to P9 percentages with that many decimals.
enum class UnitTypeId : std::uint8_t {
#define UNIT_TYPE(Number, Id, Name, Base, ...) Id = Number,
#include "units/unit_types.def"
#undef UNIT_TYPE
};

inline constexpr std::size_t kUnitCount = 157;
inline constexpr std::size_t kUnitTypeCount = 53;

/// A unit. A base value b shows as (b + offset) × factor; where the factor is seconds per unit, as b ÷ factor.
struct UnitRecord {
    UnitId id;
    std::string_view name;
    std::string_view label; ///< what follows a number: a blank and the name; empty for an empty name
    SourceText shownName;   ///< the name for people, in files it is English
    double factor;
    double offset; ///< in base units
    int decimals;  ///< default number of decimals, 0 to 9
    bool secondsPerUnit;

    /// What one of it is called: "Second" for "Seconds". Plurals are the names that end in a word with an "s" at its
    /// end; symbols such as "ms" or "m/s" are none.
    constexpr std::string_view nameOfOne() const { return name.substr(0, name.size() - pluralEnding()); }
    constexpr std::string_view labelOfOne() const { return label.substr(0, label.size() - pluralEnding()); }

    constexpr double toBase(double shown) const { return (secondsPerUnit ? shown * factor : shown / factor) - offset; }

private:
    constexpr std::size_t pluralEnding() const {
        constexpr std::size_t kShortest = 4; // "bits"
        if (name.size() < kShortest || !name.ends_with('s'))
            return 0;
        for (const char c : name.substr(name.size() - kShortest))
            if ((c < 'a' || c > 'z') && (c < 'A' || c > 'Z'))
                return 0;
        return 1;
    }
};

/// A kind of quantity, with its units in the order in which they are offered.
struct UnitTypeRecord {
    UnitTypeId id;
    std::string_view name;
    SourceText shownName;  ///< the name for people
    std::string_view base; ///< the unit in which values are held; empty where there is no arithmetic
    std::span<const UnitId> units;

    constexpr UnitId defaultUnit() const { return units.front(); }
    bool offers(UnitId unit) const;
};

/// The catalogue in order of ids.
std::span<const UnitRecord, kUnitCount> allUnits();
std::span<const UnitTypeRecord, kUnitTypeCount> allUnitTypes();
const UnitRecord& unitRecord(UnitId id);
const UnitTypeRecord& unitTypeRecord(UnitTypeId id);

/// The types among which a person can choose a unit (those with a choice), sorted by the bytes of their names; of two
/// with the same name the later one comes first.
std::vector<UnitTypeId> offeredUnitTypes();

/// The 35 kinds of quantity: every type by its name, but the families of fixed decimals as one kind each, "D" and "P".
std::span<const std::string_view> quantityKinds();

/// The unit type in which the values of sampled engine parameter CODE (1 to 24) are held; D9 for any other code.
UnitTypeId unitTypeOfParameter(int code);
/// The metric unit in which the logger delivers parameter CODE; the plain or percent unit where there is none.
UnitId loggerUnitOfParameter(int code);

/// VALUE, given in UNIT, as a base value. kNoValue stays kNoValue.
double toBaseFrom(UnitId unit, double value);

} // namespace quobrix
