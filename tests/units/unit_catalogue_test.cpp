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

// The figures of all units, which files refer to by number, are pinned in docs/units.md: units_document_is_current.

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
