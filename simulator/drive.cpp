#include "simulator/drive.h"

#include "simulator/fault.h"

#include "base/no_value.h"

#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <optional>
#include <string>

namespace quobrix::sim {

namespace {

constexpr std::size_t kMostLines = 4'000'000;
constexpr std::uintmax_t kLargestFile = 1u << 30; // bytes
constexpr double kLargestFigure = 1e6;            // of any parameter

struct ColumnName {
    std::string_view name;
    std::size_t parameter; // 0: the time
};
constexpr std::size_t kTime = 0;
constexpr std::size_t kSpeed = 1;
constexpr ColumnName kColumns[] = {
    {"seconds", kTime},  {"speed_kmh", kSpeed}, {"engine_rpm", 2}, {"throttle_pct", 3}, {"coolant_c", 4},
    {"load_pct", 5},     {"map_kpa", 6},        {"maf_gps", 7},    {"iat_c", 8},        {"timing_deg", 9},
    {"stft_b1_pct", 12}, {"ltft_b1_pct", 14},   {"o2_b1s1_v", 16}, {"battery_v", 24},
};

/// Cuts TEXT at the next SEPARATOR; what is before it is returned.
std::string_view cut(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view part = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return part;
}

std::string_view nextLine(std::string_view& text) {
    std::string_view line = cut(text, '\n');
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

std::optional<double> number(std::string_view cell) {
    double value = 0;
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), value);
    if (error != std::errc() || end != cell.data() + cell.size() || !(std::fabs(value) <= kLargestFigure))
        return std::nullopt;
    return value;
}

/// Texts of the file are quoted in messages as far as they are plain and short.
std::string quoted(std::string_view text) {
    std::string result;
    for (const char c : text.substr(0, 40))
        result += c >= ' ' && c <= '~' ? c : '?';
    return '"' + result + (text.size() > 40 ? "…\"" : "\"");
}

Error atLine(std::size_t line, const std::string& what) {
    return fault(ErrorKind::Corrupt, fmt::format("line {}: {}", line, what));
}

Result<std::vector<const ColumnName*>> parseHeader(std::string_view line) {
    std::vector<const ColumnName*> columns;
    std::array<bool, kParameters + 1> seen{};
    for (bool more = true; more;) {
        more = line.find(',') != std::string_view::npos;
        const std::string_view name = cut(line, ',');
        const ColumnName* found = nullptr;
        for (const ColumnName& column : kColumns)
            if (column.name == name)
                found = &column;
        if (!found)
            return atLine(1, "unknown column " + quoted(name));
        if (std::exchange(seen[found->parameter], true))
            return atLine(1, "column " + quoted(name) + " stands twice");
        columns.push_back(found);
    }
    if (!seen[kTime] || !seen[kSpeed])
        return atLine(1, "the columns \"seconds\" and \"speed_kmh\" are needed");
    return columns;
}

} // namespace

Result<Drive> parseDrive(std::string_view text) {
    const auto columns = parseHeader(nextLine(text));
    if (!columns)
        return columns.error();
    Drive drive;
    std::vector<std::vector<double>*> targets;
    for (const ColumnName* column : *columns)
        targets.push_back(column->parameter == kTime    ? &drive.seconds
                          : column->parameter == kSpeed ? &drive.speed
                                                        : &drive.parameter[column->parameter - 1]);
    for (std::size_t lineNumber = 2; !text.empty(); ++lineNumber) {
        if (lineNumber > kMostLines)
            return atLine(lineNumber, "too many lines");
        std::string_view line = nextLine(text);
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const bool last = i + 1 == targets.size();
            if (last == (line.find(',') != std::string_view::npos))
                return atLine(lineNumber, fmt::format("{} cells are needed", targets.size()));
            const std::string_view cell = cut(line, ',');
            const ColumnName& column = *(*columns)[i];
            const auto value = cell.empty() && column.parameter > kSpeed ? kNoValue : number(cell);
            if (!value)
                return atLine(lineNumber, fmt::format("{}: not a number: {}", column.name, quoted(cell)));
            targets[i]->push_back(*value);
        }
        const std::size_t row = drive.seconds.size() - 1;
        if (row == 0 ? drive.seconds[0] != 0 : !(drive.seconds[row] > drive.seconds[row - 1]))
            return atLine(lineNumber, row == 0 ? "seconds: the first is not 0" : "seconds do not rise");
        if (drive.seconds[row] > static_cast<double>(kLongestDrive))
            return atLine(lineNumber, "the drive is longer than seven days");
        if (drive.speed[row] < 0 || drive.speed[row] >= 255.5)
            return atLine(lineNumber, "speed_kmh: not from 0 to 255");
    }
    if (drive.seconds.empty())
        return atLine(2, "the drive is empty");
    return drive;
}

Result<Drive> readDrive(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        return fault(ErrorKind::NotFound, path.string() + ": no such file");
    if (!std::filesystem::is_regular_file(path, error))
        return fault(ErrorKind::IsDirectory, path.string() + ": not a file");
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size > kLargestFile)
        return fault(ErrorKind::Unsupported, path.string() + ": too large");
    std::string text(static_cast<std::size_t>(size), '\0');
    std::ifstream in(path, std::ios::binary);
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!in)
        return fault(ErrorKind::AccessDenied, path.string() + ": cannot be read");
    auto drive = parseDrive(text);
    if (!drive)
        return fault(drive.error().kind, path.string() + ": " + drive.error().detail);
    return drive;
}

} // namespace quobrix::sim
