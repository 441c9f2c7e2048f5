#include "base/no_value.h"
#include "units/unit_catalogue.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <set>

namespace quobrix {
namespace {

TEST(UnitCatalogue, RecordsKeepTheNumbersThatFilesStore) {
    struct Pinned {
        int id;
        const char* name;
        double factor;
        double offset;
        int decimals;
    };
    // The units of the logger's quantities, and the first and last of every run of the others.
    const Pinned pinned[] = {
        {0, "ft", 3.28083989501, 0, 2},
        {1, "m", 1, 0, 2},
        {2, "mm", 1000, 0, 2},
        {5, "N", 1, 0, 2},
        {16, "deg", 57.2957795131, 0, 2},
        {18, "grad", 63.66197723, 0, 2},
        {19, "kN", 0.001, 0, 2},
        {28, "kgf/m", 0.101971621298, 0, 2},
        {29, "kPa", 0.001, 0, 0},
        {32, "Mpsi", 1.4503773773e-10, 0, 4},
        {34, "psi", 0.0001450377377, 0, 0},
        {41, "lbf/ft", 0.0685217658568, 0, 2},
        {42, "RPM", 60, 0, 0},
        {43, "klbf/ft", 6.85217658568e-5, 0, 2},
        {47, "lbm/in³", 3.61272920001e-5, 0, 2},
        {52, "UK Tons", 9.84206527611e-4, 0, 2},
        {56, "kg/m³", 1, 0, 2},
        {57, "ppg", 0.00834540445202, 0, 2},
        {61, "psi/kft", 0.433527504001, 0, 2},
        {64, "ft²/s", 10.7639104167, 0, 2},
        {67, "klbf-ft", 7.37562149277e-4, 0, 2},
        {68, "Hz", 1, 0, 2},
        {71, "kdaN-m", 1e-4, 0, 2},
        {73, "rad/s", 6.28318530718, 0, 2},
        {77, "mPa-s", 1000, 0, 2},
        {78, "N-m/rad", 1, 0, 2},
        {80, "kbf-in/deg", 0.000154474655316, 0, 2},
        {88, "kgf-cm/deg", 0.177974053524, 0, 2},
        {89, "MPH", 2.23693629205, 0, 0},
        {90, "kph", 3.6, 0, 0},
        {93, "G", 0.101971621298, 0, 2},
        {97, "Miles", 0.000621371192237, 0, 1},
        {110, "in H2O", 0.00401864651985, 0, 1},
        {111, "°F", 1.8, -255.37222222222223, 1},
        {112, "°C", 1, -273.15, 2},
        {114, "Seconds", 1, 0, 2},
        {115, "rad/m", 1, 0, 2},
        {116, "Hours", 3600, 0, 2},
        {118, "deg/100ft", 1746.37535956, 0, 2},
        {119, "/s", 1, 0, 2},
        {120, "bits", 8, 0, 0},
        {123, "bytes", 1, 0, 0},
        {130, "nybbles", 2, 0, 2},
        {131, "s", 1, 0, 2},
        {138, "Weeks", 604800, 0, 2},
        {144, "samples per second", 1, 0, 2},
        {146, "g/s", 1000, 0, 3},
        {147, "lb/s", 2.20462262185, 0, 3},
        {149, "mV", 1000, 0, 0},
        {151, "Liter", 3.7854, 0, 0},
        {152, "Month/Day/Year", 1, 0, 0},
        {156, "24 Hour", 1, 0, 0},
    };
    for (const Pinned& row : pinned) {
        const UnitRecord& unit = allUnits()[static_cast<std::size_t>(row.id)];
        EXPECT_EQ(unit.name, row.name) << row.id;
        EXPECT_NEAR(unit.factor, row.factor, 1e-11 * row.factor) << row.name;
        EXPECT_DOUBLE_EQ(unit.offset, row.offset) << row.name;
        EXPECT_EQ(unit.decimals, row.decimals) << row.name;
        EXPECT_EQ(unit.label, " " + std::string(row.name));
    }
    EXPECT_EQ(allUnits()[6].label, "");
}

TEST(UnitCatalogue, TypesOfferTheirUnitsInOrder) {
    const auto names = [](UnitTypeId id) {
        std::string text;
        for (const UnitId unit : unitTypeRecord(id).units)
            text.append(text.empty() ? "" : ",").append(unitRecord(unit).name);
        return text;
    };
    EXPECT_EQ(names(UnitTypeId::Acceleration), "m/s²,G,ft/s²");
    EXPECT_EQ(names(UnitTypeId::SecondAcceleration), "m/s²,ft/s²,G");
    EXPECT_EQ(names(UnitTypeId::Pressure), "Pa,kPa,MPa,GPa,psi,kpsi,Mpsi,in Hg,mm Hg,in H2O");
    EXPECT_EQ(names(UnitTypeId::Fuel), "Liter,Gallon");
    EXPECT_EQ(names(UnitTypeId::ByteCount), "bits,MB,KB,bytes,TB,PB,Mb,Kb,Tb,Pb,nybbles");
    EXPECT_EQ(unitTypeRecord(UnitTypeId(45)).name, unitTypeRecord(UnitTypeId(28)).name);
    // Only the fixed decimals and the three liquid densities repeat a name.
    std::multiset<std::string_view> seen;
    for (const UnitRecord& unit : allUnits())
        seen.insert(unit.name);
    for (const std::string_view name : seen)
        EXPECT_EQ(seen.count(name), name.empty() || name == "%"                               ? 10u
                                    : name == "kg/m³" || name == "lbm/ft³" || name == "g/cm³" ? 2u
                                                                                              : 1u)
            << name;
}

TEST(UnitCatalogue, OffersTypesWithAChoiceSortedByName) {
    const std::vector<UnitTypeId> offered = offeredUnitTypes();
    EXPECT_EQ(offered.size(), kUnitTypeCount - 20 - 2); // without the fixed decimals and the two single-unit times
    EXPECT_EQ(offered[0], UnitTypeId::SecondAcceleration);
    EXPECT_EQ(offered[1], UnitTypeId::Acceleration);
    EXPECT_EQ(offered.back(), UnitTypeId::YoungsModulus);
    EXPECT_TRUE(std::ranges::is_sorted(offered, {}, [](UnitTypeId id) { return unitTypeRecord(id).name; }));
}

TEST(UnitCatalogue, EveryUnitOfEveryTypeConvertsThereAndBack) {
    TUnitSystem system;
    for (const UnitTypeRecord& type : allUnitTypes()) {
        for (const UnitId unit : type.units) {
            system.setUnit(type.id, unit);
            for (double x = 1e-6; x <= 1e9; x *= 1.37) {
                const double back = system.toBase(type.id, system.toDisplay(type.id, x));
                const double bound =
                    4 * std::numeric_limits<double>::epsilon() * (std::fabs(x) + std::fabs(unitRecord(unit).offset));
                ASSERT_LE(std::fabs(back - x), bound) << type.name << " " << unitRecord(unit).name << " " << x;
            }
        }
    }
}

TEST(UnitCatalogue, LoggerValuesBecomeBaseValues) {
    EXPECT_DOUBLE_EQ(toBaseFrom(loggerUnitOfParameter(4), -40), 233.15);
    EXPECT_DOUBLE_EQ(toBaseFrom(loggerUnitOfParameter(1), 90), 25);
    EXPECT_DOUBLE_EQ(toBaseFrom(loggerUnitOfParameter(2), 3000), 50);
    EXPECT_DOUBLE_EQ(toBaseFrom(loggerUnitOfParameter(6), 101), 101000);
    EXPECT_DOUBLE_EQ(toBaseFrom(UnitId::Hours, 2), 7200);
    EXPECT_FALSE(hasValue(toBaseFrom(UnitId::Celsius, kNoValue)));
    for (int code = -1; code <= 30; ++code)
        EXPECT_TRUE(unitTypeRecord(unitTypeOfParameter(code)).offers(loggerUnitOfParameter(code))) << code;
    EXPECT_EQ(unitTypeOfParameter(11), UnitTypeId::D0);
    EXPECT_EQ(unitTypeOfParameter(24), UnitTypeId::Voltage);
    EXPECT_EQ(unitTypeOfParameter(25), UnitTypeId::D9);
}

} // namespace
} // namespace quobrix
