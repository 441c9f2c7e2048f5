#include "support/drive_sheet.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace quobrix::test {
namespace {

std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> result(1);
    for (const char c : line)
        if (c == ',')
            result.emplace_back();
        else
            result.back() += c;
    return result;
}

} // namespace

DriveSheet::DriveSheet(const std::string& csv) {
    std::istringstream lines(csv);
    std::string line;
    std::getline(lines, line);
    const auto names = cells(line);
    while (std::getline(lines, line)) {
        const auto row = cells(line);
        for (std::size_t i = 0; i < names.size(); ++i)
            column[names[i]].push_back(row[i]);
    }
}

ExpectedTrip::ExpectedTrip(const DriveSheet& sheet) {
    // Rows are visited once: the drives are long, and a search for every second would take minutes.
    std::size_t row = 0;
    for (int second = 0; second <= sheet.number("seconds", sheet.rows() - 1); ++second) {
        while (row + 1 < sheet.rows() && sheet.number("seconds", row + 1) <= second)
            ++row;
        speeds.push_back(static_cast<int>(std::floor(sheet.number("speed_kmh", row) + 0.5)));
    }
    for (std::size_t k = 0; k + 1 < speeds.size(); ++k) {
        metres += (speeds[k] + speeds[k + 1]) / 2.0 / 3.6;
        if (speeds[k] == 0)
            ++idle;
        else
            ++bands[speeds[k] <= 45 * 1.609344   ? 0
                    : speeds[k] <= 60 * 1.609344 ? 1
                    : speeds[k] <= 70 * 1.609344 ? 2
                                                 : 3];
    }
    findEvents(-1, hardBrakes, extremeBrakes);
    findEvents(+1, hardAccelerations, extremeAccelerations);
    for (std::size_t k = 1; k < speeds.size(); ++k) {
        bool fast = false;
        for (std::size_t back = 1; back <= 8 && back <= k; ++back)
            fast = fast || speeds[k - back] > 40;
        if (speeds[k] == 0 && speeds[k - 1] > 0 && fast)
            stops.push_back(static_cast<std::uint32_t>(k));
    }
}

void ExpectedTrip::findEvents(int sign, Times& hard, Times& extreme) const {
    for (std::size_t k = 1; k < speeds.size();) {
        const std::size_t begin = k;
        double strongest = 0;
        for (; k < speeds.size() && sign * (speeds[k] - speeds[k - 1]) / 3.6 > 2.745862; ++k)
            strongest = std::max(strongest, sign * (speeds[k] - speeds[k - 1]) / 3.6);
        if (k == begin)
            ++k;
        else
            (strongest > 4.707192 ? extreme : hard).push_back(static_cast<std::uint32_t>(begin));
    }
}

std::string steadyDrive(const std::vector<int>& speeds) {
    std::string text = "speed_kmh,seconds\n";
    for (std::size_t i = 0; i < speeds.size(); ++i)
        text += std::to_string(speeds[i]) + "," + std::to_string(i) + "\n";
    return text;
}

} // namespace quobrix::test
