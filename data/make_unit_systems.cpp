// Writes what is delivered of unit systems: the files of "U.S." and "Metric" into a folder, or the table of all units.
//   make_unit_systems FOLDER
//   make_unit_systems --markdown FILE      writes the table
//   make_unit_systems --check FILE         fails if FILE is not that table

#include "units/unit_system_file.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace quobrix;
namespace fs = std::filesystem;

struct Choice {
    UnitTypeId type;
    UnitId unit;
    int decimals;
};

// What differs from the types' defaults. Decimals follow the logger's resolution: 1 km/h, 1 °C, 1 kPa, 0.01 g/s, 0.5°.
constexpr Choice kUsChoices[] = {
    {UnitTypeId::Depth, UnitId::Foot, 1},
    {UnitTypeId::Diameter, UnitId::Inch, 2},
    {UnitTypeId::Force, UnitId::PoundForce, 1},
    {UnitTypeId::Angle, UnitId::Degree, 1},
    {UnitTypeId::LinearSpring, UnitId::PoundForcePerInch, 2},
    {UnitTypeId::SolidDensity, UnitId::PoundPerCubicFoot, 2},
    {UnitTypeId::YoungsModulus, UnitId::MegapoundPerSquareInch, 2},
    {UnitTypeId::Stress, UnitId::KilopoundPerSquareInch, 2},
    {UnitTypeId::EngineSpeed, UnitId::RevolutionPerMinute, 0},
    {UnitTypeId::Mass, UnitId::Pound, 1},
    {UnitTypeId::MassPerLength, UnitId::PoundPerFoot, 2},
    {UnitTypeId::LiquidDensity, UnitId::PoundPerGallon, 2},
    {UnitTypeId::KinematicViscosity, UnitId::SquareFootPerSecond, 6},
    {UnitTypeId::Torque, UnitId::PoundForceFoot, 1},
    {UnitTypeId::Frequency, UnitId::RevolutionPerMinute, 0},
    {UnitTypeId::DynamicViscosity, UnitId::Centipoise, 2},
    {UnitTypeId::RotarySpring, UnitId::PoundForceFootPerDegree, 2},
    {UnitTypeId::Speed, UnitId::MilePerHour, 0},
    {UnitTypeId::Acceleration, UnitId::StandardGravity, 2},
    {UnitTypeId::Distance, UnitId::Mile, 1},
    {UnitTypeId::Pressure, UnitId::PoundPerSquareInch, 1},
    {UnitTypeId::Temperature, UnitId::Fahrenheit, 0},
    {UnitTypeId::SamplingInterval, UnitId::Seconds, 0},
    {UnitTypeId::BuildRate, UnitId::DegreePer100Feet, 2},
    {UnitTypeId::SecondAcceleration, UnitId::StandardGravity, 2},
    {UnitTypeId::ByteCount, UnitId::Megabytes, 1},
    {UnitTypeId::AirFlowRate, UnitId::PoundPerSecond, 4},
    {UnitTypeId::Fuel, UnitId::Gallon, 1},
    {UnitTypeId::Date, UnitId::MonthDayYear, 0},
    {UnitTypeId::Time, UnitId::AmPm, 0},
};

constexpr Choice kMetricChoices[] = {
    {UnitTypeId::Depth, UnitId::Metre, 1},
    {UnitTypeId::Diameter, UnitId::Millimetre, 1},
    {UnitTypeId::Force, UnitId::Newton, 1},
    {UnitTypeId::Angle, UnitId::Degree, 1},
    {UnitTypeId::LinearSpring, UnitId::KilonewtonPerMetre, 2},
    {UnitTypeId::SolidDensity, UnitId::GramPerCubicCentimetre, 2},
    {UnitTypeId::YoungsModulus, UnitId::Gigapascal, 1},
    {UnitTypeId::Stress, UnitId::Megapascal, 1},
    {UnitTypeId::EngineSpeed, UnitId::RevolutionPerMinute, 0},
    {UnitTypeId::Mass, UnitId::Kilogram, 1},
    {UnitTypeId::LiquidDensity, UnitId::KilogramPerLiter, 3},
    {UnitTypeId::KinematicViscosity, UnitId::SquareMetrePerSecond, 6},
    {UnitTypeId::Torque, UnitId::NewtonMetre, 0},
    {UnitTypeId::Frequency, UnitId::RevolutionPerMinute, 0},
    {UnitTypeId::DynamicViscosity, UnitId::MillipascalSecond, 2},
    {UnitTypeId::RotarySpring, UnitId::NewtonMetrePerDegree, 2},
    {UnitTypeId::Speed, UnitId::KilometrePerHour, 0},
    {UnitTypeId::Acceleration, UnitId::MetrePerSecondSquared, 1},
    {UnitTypeId::Distance, UnitId::Kilometre, 1},
    {UnitTypeId::Pressure, UnitId::Kilopascal, 0},
    {UnitTypeId::Temperature, UnitId::Celsius, 0},
    {UnitTypeId::SamplingInterval, UnitId::Seconds, 0},
    {UnitTypeId::BuildRate, UnitId::DegreePer30Metres, 2},
    {UnitTypeId::SecondAcceleration, UnitId::MetrePerSecondSquared, 1},
    {UnitTypeId::ByteCount, UnitId::Megabytes, 1},
    {UnitTypeId::AirFlowRate, UnitId::GramPerSecond, 2},
    {UnitTypeId::Fuel, UnitId::Liter, 1},
    {UnitTypeId::Date, UnitId::DayMonthYear, 0},
    {UnitTypeId::Time, UnitId::Hour24, 0},
};

bool writeWhole(const fs::path& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    return static_cast<bool>(out.flush());
}

/// The file is read-only, which makes the system a locked one.
bool writeSystem(const fs::path& path, std::span<const Choice> rows) {
    UnitChoices choices;
    for (const Choice& row : rows) {
        choices.choose(row.type, row.unit);
        choices.decimals[static_cast<std::size_t>(row.type)] = static_cast<std::uint8_t>(row.decimals);
    }
    const Bytes bytes = encodeUnitSystem(choices);
    std::error_code error;
    if (fs::exists(path, error)) { // left by an earlier run; Windows removes no read-only file
        fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, error);
        fs::remove(path, error);
    }
    if (!writeWhole(path, std::string(bytes.begin(), bytes.end())))
        return false;
    fs::permissions(path, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read, error);
    return !error;
}

std::string unitRow(const UnitRecord& unit) {
    return fmt::format("| {} | {} | {:.12g} | {:.12g} | {} |\n", unit.name.empty() ? "(none)" : unit.name,
                       static_cast<int>(unit.id), unit.factor, unit.offset, unit.decimals);
}

std::string markdown() {
    std::string text =
        "# Units\n\n"
        "Written by `make_unit_systems --markdown docs/units.md` from the catalogue in `src/units/`.\n\n"
        "Values are held in the base unit of their type and shown as (base + offset) × factor; units of\n"
        "time have seconds as their factor and show base ÷ factor. The first unit of a type is its\n"
        "default, and the one of the S.I. system. Figures are given to 12 digits.\n\n"
        "A system may show diameters in inches as fractions, as drills are sized: the nearest 64th of an\n"
        "inch, reduced (1 47/64 in, 3/8 in). Their decimals have no effect then.\n\n";
    text +=
        fmt::format("The {} units belong to {} types. These are of {} kinds of quantity, since plain numbers (D) and\n"
                    "percentages (P) have a type for each number of decimals:\n\n",
                    kUnitCount, kUnitTypeCount, quantityKinds().size());
    for (const std::string_view kind : quantityKinds())
        text += fmt::format("- {}\n", kind);
    std::array<bool, kUnitCount> listed{};
    constexpr std::string_view kHead = "\n| Unit | Id | Factor | Offset | Decimals |\n|---|--:|--:|--:|--:|\n";
    for (const UnitTypeRecord& type : allUnitTypes()) {
        text += fmt::format("\n## {} ({})\n\nBase: {}\n", type.name, static_cast<int>(type.id),
                            type.base.empty() ? "none" : type.base);
        text += kHead;
        for (const UnitId unit : type.units) {
            text += unitRow(unitRecord(unit));
            listed[static_cast<std::size_t>(unit)] = true;
        }
    }
    text += "\n## Units that no type offers\n";
    text += kHead;
    for (const UnitRecord& unit : allUnits()) {
        if (!listed[static_cast<std::size_t>(unit.id)])
            text += unitRow(unit);
    }
    return text;
}

bool isCurrent(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {}) == markdown();
}

} // namespace

int main(int argc, char** argv) {
    const std::string first = argc > 1 ? argv[1] : "";
    bool done = false;
    if (argc == 3 && first == "--markdown")
        done = writeWhole(argv[2], markdown());
    else if (argc == 3 && first == "--check")
        done = isCurrent(argv[2]);
    else if (argc == 2)
        done = writeSystem(fs::path(first) / "U.S..us", kUsChoices) &&
               writeSystem(fs::path(first) / "Metric.us", kMetricChoices);
    if (!done)
        fmt::print(stderr, "make_unit_systems: failed, or not up to date: {}\n",
                   argc > 1 ? argv[argc - 1] : "no folder");
    return done ? 0 : 1;
}
