#include "units/unit_system.h"

#include "units/number_parse.h"

#include "units/unit_example.h"

#include <gtest/gtest.h>

#include <functional>

namespace quobrix {
namespace {

class Recorder final : public UnitsListener {
public:
    Recorder(std::string name, std::string& log) : name_(std::move(name)), log_(log) {}
    void unitsChanged(UnitsChange reason, std::optional<UnitTypeId> type) override {
        log_ += name_ + std::to_string(static_cast<int>(reason));
        log_ += type ? "(" + std::string(unitTypeRecord(*type).name) + ")" : "";
        if (onCall)
            onCall();
    }
    std::function<void()> onCall;

private:
    std::string name_;
    std::string& log_;
};

TEST(UnitSystem, StartsAsSiAndShowsValuesInTheChosenUnits) {
    TUnitSystem system;
    EXPECT_EQ(system.name(), "S.I.");
    EXPECT_TRUE(system.locked());
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::Speed, 26.8224), "26.8 m/s");
    system.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::Speed, 26.8224), "60 MPH");
    system.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    EXPECT_EQ(system.formatValue(UnitTypeId::Speed, 26.8224), "97");
    system.setUnit(UnitTypeId::Temperature, UnitId::Celsius);
    EXPECT_EQ(system.formatValue(UnitTypeId::Temperature, 0), "-273.15");
    system.setUnit(UnitTypeId::Temperature, UnitId::Fahrenheit);
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::Temperature, 0), "-459.7 °F");
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::P2, 12.5), "12.50 %");
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::D0, 1234567), "1,234,567");
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::TripDuration, 5400), "1.50 Hours");
    EXPECT_DOUBLE_EQ(system.toBase(UnitTypeId::TripDuration, 1.5), 5400);
    EXPECT_TRUE(system.modified());
    system.resetToSI();
    EXPECT_FALSE(system.modified());
}

TEST(UnitSystem, NoValueIsNoFigureInAnyUnit) {
    TUnitSystem system;
    system.setFractionDiameters(true);
    system.setUnit(UnitTypeId::Diameter, UnitId::Inch);
    system.setUnit(UnitTypeId::Temperature, UnitId::Fahrenheit);
    for (const UnitTypeRecord& type : allUnitTypes()) {
        EXPECT_EQ(system.formatValue(type.id, kNoValue), "") << type.name;
        EXPECT_EQ(system.formatValueWithUnits(type.id, kNoValue), "") << type.name;
        EXPECT_FALSE(hasValue(system.toDisplay(type.id, kNoValue))) << type.name;
    }
}

TEST(UnitSystem, OneOfAUnitIsNotCalledByItsPlural) {
    TUnitSystem system;
    system.setDecimals(UnitTypeId::SamplingInterval, 0);
    for (const auto& [seconds, text] :
         {std::pair(1.0, "1 Second"), {-1.0, "-1 Second"}, {0.0, "0 Seconds"}, {11.0, "11 Seconds"}, {1.4, "1 Second"}})
        EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::SamplingInterval, seconds), text);
    system.setDecimals(UnitTypeId::SamplingInterval, 2);
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::SamplingInterval, 1), "1.00 Seconds");
    EXPECT_EQ(parseValue(system, UnitTypeId::SamplingInterval, "1 second"), 1.0);
    std::string plurals;
    for (const UnitRecord& unit : allUnits())
        if (unit.nameOfOne() != unit.name)
            plurals.append(unit.nameOfOne()).append(", ");
    EXPECT_EQ(plurals, "tonne, UK Ton, US Ton, Mile, Second, Hour, bit, byte, nybble, Minute, Day, Week, ");
}

TEST(UnitSystem, DiametersAsFractions) {
    TUnitSystem system;
    const double drill = 0.0254 * 47 / 64; // m
    system.setFractionDiameters(true);
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::Diameter, drill), "0.02 m");
    system.setUnit(UnitTypeId::Diameter, UnitId::Inch);
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::Diameter, drill), "47/64 in");
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::Depth, 0.5), "0.50 m") << "diameters only";
    system.setFractionDiameters(false);
    EXPECT_EQ(system.formatValueWithUnits(UnitTypeId::Diameter, drill), "0.73 in");
}

TEST(UnitSystem, ListenersMayLeaveAndComeWhileCalled) {
    TUnitSystem system;
    std::string log;
    Recorder a("a", log), b("b", log), c("c", log), d("d", log);
    for (Recorder* listener : {&a, &b, &c})
        system.addListener(*listener);
    a.onCall = [&] {
        system.removeListener(a);
        system.removeListener(b);
        system.addListener(d);
    };
    system.resetToSI();
    EXPECT_EQ(log, "a0c0d0");
    system.resetToSI();
    EXPECT_EQ(log, "a0c0d0c0d0");
}

} // namespace
} // namespace quobrix
