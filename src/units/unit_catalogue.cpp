#include "units/unit_catalogue.h"

#include "base/no_value.h"

#include <algorithm>
#include <array>
#include <numbers>

namespace quobrix {
namespace {

// Exact definitions from which factors are built (NIST SP 811, appendix B.8; SI brochure, 9th edition).
constexpr double kPi = std::numbers::pi;
constexpr double kDegree = kPi / 180;                     // rad
constexpr double kInch = 0.0254;                          // m
constexpr double kFoot = 0.3048;                          // m
constexpr double kPound = 0.45359237;                     // kg
constexpr double kGravity = 9.80665;                      // m/s²
constexpr double kPoundForce = kPound * kGravity;         // N
constexpr double kPsi = kPoundForce / (kInch * kInch);    // Pa
constexpr double kGallon = 231 * (kInch * kInch * kInch); // m³, US liquid gallon

constexpr UnitRecord kUnits[] = {
// The label's blank goes where the name is empty.
#define UNIT_ROW(Id, Name, Factor, Offset, Decimals, PerUnit)                                                          \
    {UnitId::Id, Name,   std::string_view(" " Name).substr(sizeof(Name) == 1), SourceText(Name), Factor, Offset,       \
     Decimals,   PerUnit},
#define UNIT(Number, Id, Name, Factor, Offset, Decimals) UNIT_ROW(Id, Name, Factor, Offset, Decimals, false)
#define TIME_UNIT(Number, Id, Name, SecondsPerUnit, Decimals) UNIT_ROW(Id, Name, SecondsPerUnit, 0, Decimals, true)
#include "units/units.def"
#undef TIME_UNIT
#undef UNIT
#undef UNIT_ROW
};

namespace unit_lists {
using enum UnitId;
#define UNIT_TYPE(Number, Id, Name, Base, ...) constexpr UnitId k##Id[] = {__VA_ARGS__};
#include "units/unit_types.def"
#undef UNIT_TYPE
} // namespace unit_lists

constexpr UnitTypeRecord kUnitTypes[] = {
#define UNIT_TYPE(Number, Id, Name, Base, ...) {UnitTypeId::Id, Name, SourceText(Name), Base, unit_lists::k##Id},
#include "units/unit_types.def"
#undef UNIT_TYPE
};

template <class Records>
constexpr bool idsAreIndexes(const Records& records) {
    std::size_t index = 0;
    return std::ranges::all_of(records,
                               [&](const auto& record) { return static_cast<std::size_t>(record.id) == index++; });
}

static_assert(std::size(kUnits) == kUnitCount && idsAreIndexes(kUnits));
static_assert(std::size(kUnitTypes) == kUnitTypeCount && idsAreIndexes(kUnitTypes));
static_assert(std::ranges::all_of(kUnits, [](const UnitRecord& unit) {
    return unit.factor > 0 && unit.decimals >= 0 && unit.decimals <= 9;
}));

/// The first of a family of ten types with fixed decimals stands for all ten.
constexpr bool isFamilyMember(UnitTypeId type, UnitTypeId first) {
    return type >= first && type < UnitTypeId(int(first) + 10);
}

constexpr auto kQuantityKinds = [] {
    std::array<std::string_view, kUnitTypeCount - 2 * 9> kinds;
    std::size_t count = 0;
    for (const UnitTypeRecord& type : kUnitTypes) {
        if (type.id == UnitTypeId::D0 || type.id == UnitTypeId::P0)
            kinds[count++] = type.name.substr(0, 1);
        else if (!isFamilyMember(type.id, UnitTypeId::D0) && !isFamilyMember(type.id, UnitTypeId::P0))
            kinds[count++] = type.name;
    }
    return kinds;
}();
static_assert(kQuantityKinds.size() == 35 && kQuantityKinds.back() == "Time");

struct ParameterUnits {
    UnitTypeId type;
    UnitId logger;
};

constexpr ParameterUnits unitsOfParameter(int code) {
    switch (code) {
    case 1:
        return {UnitTypeId::Speed, UnitId::KilometrePerHour};
    case 2:
        return {UnitTypeId::EngineSpeed, UnitId::RevolutionPerMinute};
    case 3: // throttle position
    case 5: // engine load
    case 12:
    case 13:
    case 14:
    case 15: // fuel trims
        return {UnitTypeId::P2, UnitId::Percent2};
    case 4: // coolant
    case 8: // intake air
        return {UnitTypeId::Temperature, UnitId::Celsius};
    case 6:  // intake manifold
    case 10: // fuel
        return {UnitTypeId::Pressure, UnitId::Kilopascal};
    case 7:
        return {UnitTypeId::AirFlowRate, UnitId::GramPerSecond};
    case 9: // timing advance
        return {UnitTypeId::Angle, UnitId::Degree};
    case 11: // fuel system status
        return {UnitTypeId::D0, UnitId::Number0};
    default: // oxygen sensors and the battery
        if (code >= 16 && code <= 24)
            return {UnitTypeId::Voltage, UnitId::Volt};
        return {UnitTypeId::D9, UnitId::Number9};
    }
}

} // namespace

bool UnitTypeRecord::offers(UnitId unit) const { return std::ranges::find(units, unit) != units.end(); }

std::span<const UnitRecord, kUnitCount> allUnits() { return kUnits; }
std::span<const UnitTypeRecord, kUnitTypeCount> allUnitTypes() { return kUnitTypes; }
const UnitRecord& unitRecord(UnitId id) { return kUnits[static_cast<std::size_t>(id)]; }
const UnitTypeRecord& unitTypeRecord(UnitTypeId id) { return kUnitTypes[static_cast<std::size_t>(id)]; }

std::vector<UnitTypeId> offeredUnitTypes() {
    std::vector<UnitTypeId> offered;
    for (const UnitTypeRecord& type : kUnitTypes) {
        if (type.units.size() < 2)
            continue;
        const auto name = [](UnitTypeId id) { return unitTypeRecord(id).name; };
        offered.insert(std::ranges::lower_bound(offered, type.name, {}, name), type.id);
    }
    return offered;
}

std::span<const std::string_view> quantityKinds() { return kQuantityKinds; }

UnitTypeId unitTypeOfParameter(int code) { return unitsOfParameter(code).type; }
UnitId loggerUnitOfParameter(int code) { return unitsOfParameter(code).logger; }

double toBaseFrom(UnitId unit, double value) { return hasValue(value) ? unitRecord(unit).toBase(value) : kNoValue; }

} // namespace quobrix
