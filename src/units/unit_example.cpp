#include "units/unit_example.h"

#include "texts/text.h"
#include "units/date_time.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

struct Example {
    UnitTypeId type;
    double value; ///< in base units
};

constexpr Example kExamples[] = {
    {UnitTypeId::Depth, 12.5},
    {UnitTypeId::Diameter, 0.018653125}, // 47/64 in
    {UnitTypeId::Force, 4500},
    {UnitTypeId::Angle, 0.25},
    {UnitTypeId::LinearSpring, 25000},
    {UnitTypeId::SolidDensity, 7850},
    {UnitTypeId::YoungsModulus, 2.1e11},
    {UnitTypeId::Stress, 2.5e8},
    {UnitTypeId::EngineSpeed, 50},
    {UnitTypeId::Mass, 1450},
    {UnitTypeId::MassPerLength, 7.5},
    {UnitTypeId::LiquidDensity, 750},
    {UnitTypeId::KinematicViscosity, 0.0001},
    {UnitTypeId::Torque, 320},
    {UnitTypeId::Frequency, 50},
    {UnitTypeId::DynamicViscosity, 0.085},
    {UnitTypeId::RotarySpring, 1200},
    {UnitTypeId::Speed, 26.8224},
    {UnitTypeId::Acceleration, 4.5},
    {UnitTypeId::Distance, 40000},
    {UnitTypeId::Pressure, 101325},
    {UnitTypeId::Temperature, 293.15},
    {UnitTypeId::TripDuration, 5400},
    {UnitTypeId::SamplingInterval, 5},
    {UnitTypeId::BuildRate, 0.001},
    {UnitTypeId::SecondAcceleration, 4.5},
    {UnitTypeId::SamplingRate, 10},
    {UnitTypeId::ByteCount, 2500000},
    {UnitTypeId::AirFlowRate, 0.0125},
    {UnitTypeId::Voltage, 13.8},
    {UnitTypeId::Fuel, 12},
};
constexpr DateTime kMoment{2009, 3, 4, 15, 4, 0};

/// VALUE with as many decimals as it has, up to nine.
std::string wholeText(const TUnitSystem& units, double value) {
    int decimals = 0;
    for (double power = 1; decimals < 9 && std::fabs(std::round(value * power) / power - value) > 1e-12 * value;
         power *= 10)
        ++decimals;
    return units.formatNumber(value, decimals);
}

} // namespace

std::string unitExample(const TUnitSystem& units, UnitTypeId type) {
    if (type == UnitTypeId::Date)
        return text(TextId::DateShowsAs, text(monthName(kMoment.month)), kMoment.day, kMoment.year,
                    dateText(units, kMoment));
    if (type == UnitTypeId::Time)
        return text(TextId::ShowsAs, fmt::format("{}:{:02}", kMoment.hour, kMoment.minute), timeText(units, kMoment));
    const auto example = std::ranges::find(kExamples, type, &Example::type);
    if (example == std::end(kExamples))
        return {};
    return text(TextId::ShowsAs, fmt::format("{} {}", wholeText(units, example->value), unitTypeRecord(type).base),
                units.formatValueWithUnits(type, example->value));
}

} // namespace quobrix
