#include "simulator/circumstances.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quobrix::sim {

namespace {

/// The check digit of a vehicle identification number, ISO 3779 as North America uses it: position 9 makes the
/// weighted sum of all positions' values what it says modulo 11, X standing for 10.
char checkDigit(std::string_view vin) {
    constexpr std::string_view kLetters = "ABCDEFGHJKLMNPRSTUVWXYZ";
    constexpr std::string_view kValues = "12345678123457923456789";
    constexpr std::array<int, 17> kWeights{8, 7, 6, 5, 4, 3, 2, 10, 0, 9, 8, 7, 6, 5, 4, 3, 2};
    int sum = 0;
    for (std::size_t i = 0; i < kWeights.size(); ++i) {
        const std::size_t letter = kLetters.find(vin[i]);
        sum += kWeights[i] * ((letter == std::string_view::npos ? vin[i] : kValues[letter]) - '0');
    }
    return sum % 11 == 10 ? 'X' : static_cast<char>('0' + sum % 11);
}

} // namespace

std::string makeVin(std::string_view pattern, Random& random) {
    std::string vin(pattern);
    for (std::size_t i = 12; i < vin.size(); ++i)
        vin[i] = static_cast<char>('0' + random.integer(0, 9));
    vin[8] = checkDigit(vin);
    return vin;
}

// The air follows the year and the day; the coolant falls towards it while the car stands.
Surroundings surroundingsAt(std::int64_t time, std::int64_t secondsOfDay, double gap, Random& random) {
    constexpr double kTwoPi = 6.283185307179586;
    constexpr double kHour = 3600;
    constexpr double kDay = 24 * kHour;
    const double year = std::cos(kTwoPi * static_cast<double>(time % 31557600) / 31557600);
    const double day = std::cos(kTwoPi * (static_cast<double>(secondsOfDay) - 15 * kHour) / kDay);
    const double air = 11 - 10 * year + 4 * day + random.uniform(-4, 4);
    return {air, air + (90 - air) / (1 + gap / (1.5 * kHour) * gap / kHour)};
}

Trouble troubleDuring(const Drive& drive, const Vehicle& vehicle, std::int32_t start, std::string_view code,
                      bool whenCold, Random& random) {
    const auto last = static_cast<std::int32_t>(drive.seconds.size()) - 1;
    const std::int32_t row = whenCold ? random.integer(0, std::min(last, 60)) : random.integer(last / 3, last);
    const auto reading = [&](std::size_t parameter) {
        return drive.parameter[parameter - 1][static_cast<std::size_t>(row)];
    };
    Trouble trouble;
    trouble.vin = vehicle.vin;
    trouble.time = start + row;
    trouble.code = code;
    trouble.fuelSystem[0] = reading(11) == 1 ? 0 : reading(11) == 2 ? 1 : 2;
    trouble.load = reading(5);
    trouble.coolant = reading(4);
    trouble.shortTrim[0] = code == "P0171" ? 18.75 : reading(12);
    trouble.longTrim[0] = code == "P0171" ? 14.0625 : reading(14);
    if (vehicle.displacement > 4) { // an engine with two banks, which also tells its fuel pressure
        trouble.shortTrim[1] = random.integer(-4, 4) * 0.78125;
        trouble.longTrim[1] = 0.78125;
        trouble.fuelPressure = 270 + 3 * random.integer(0, 15);
    }
    trouble.manifoldPressure = reading(6);
    trouble.engineSpeed = reading(2);
    trouble.vehicleSpeed = std::round(drive.speed[static_cast<std::size_t>(row)]);
    return trouble;
}

} // namespace quobrix::sim
