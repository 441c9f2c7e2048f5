#include "support/allocation_counter.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <limits>

namespace quobrix {
namespace {

/// Every cell of every list passes through here while it scrolls.
TEST(ValueText, TakesNoMemory) {
    TUnitSystem system;
    system.setFractionDiameters(true);
    const double values[] = {0,
                             -0.0005,
                             26.8224,
                             1234567.891,
                             -98765432.1,
                             4.5e15,
                             1e30,
                             1e300,
                             -1e300,
                             kNoValue,
                             std::numeric_limits<double>::infinity()};
    const std::uint64_t before = test::allocations();
    std::size_t characters = 0;
    ValueText buffer;
    for (const UnitTypeRecord& type : allUnitTypes()) {
        for (const UnitId unit : type.units) {
            system.setUnit(type.id, unit);
            for (const double value : values)
                characters += system.formatValueWithUnits(type.id, value, buffer).size();
        }
    }
    characters += system.formatInteger(std::numeric_limits<std::int64_t>::min(), buffer).size();
    EXPECT_EQ(test::allocations(), before);
    EXPECT_GT(characters, 0u);
    const std::string copy(characters, 'x');
    EXPECT_GT(test::allocations(), before) << "the counter counts";
}

} // namespace
} // namespace quobrix
