#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix::test {

/// A drive's cells by column name, as texts; read without the simulator's parser, to be compared with what it makes of
/// them.
struct DriveSheet {
    std::map<std::string, std::vector<std::string>> column;

    explicit DriveSheet(const std::string& csv);

    double number(const std::string& name, std::size_t row) const { return std::stod(column.at(name)[row]); }
    std::size_t rows() const { return column.at("seconds").size(); }
};

/// What a logger with the factory's limits and thresholds has to record of a drive. Times in s from its start.
struct ExpectedTrip {
    using Times = std::vector<std::uint32_t>;

    std::vector<int> speeds; ///< km/h at every second
    double metres = 0;
    int idle = 0;      ///< s
    int bands[4] = {}; ///< s
    Times hardBrakes, extremeBrakes, hardAccelerations, extremeAccelerations;
    Times stops; ///< moments of standstill within 8 s from above 40 km/h

    explicit ExpectedTrip(const DriveSheet& sheet);

private:
    void findEvents(int sign, Times& hard, Times& extreme) const;
};

/// A drive of one speed in km/h a second.
std::string steadyDrive(const std::vector<int>& speeds);

} // namespace quobrix::test
