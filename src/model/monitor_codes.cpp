#include "model/monitor_codes.h"

#include "base/path_text.h"
#include "base/utf8.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "texts/text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace quobrix {
namespace {

constexpr std::size_t kLargestMonitorsFile = 64 * 1024;
constexpr std::array<std::string_view, kDriveNeeds> kNeedKeys = {"warmups", "coldstarts", "cruise", "idle",
                                                                 "decelerations"}; // by DriveNeed

std::string_view trimmedPart(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \r");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \r") - first + 1);
}

/// What PART, "idle=120", says goes into NEEDS; false if it says nothing, or what was said already.
bool takeNeed(std::string_view part, DriveAmounts& needs) {
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos)
        return false;
    const auto key = std::ranges::find(kNeedKeys, trimmedPart(part.substr(0, equals)));
    const std::string_view number = trimmedPart(part.substr(equals + 1));
    std::int64_t amount = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), amount);
    if (key == kNeedKeys.end() || error != std::errc() || end != number.data() + number.size() || amount < 1 ||
        amount > kMostOfANeed)
        return false;
    std::int64_t& need = needs[static_cast<std::size_t>(key - kNeedKeys.begin())];
    return std::exchange(need, amount) == 0;
}

std::optional<Monitor> monitorOf(std::string_view line) {
    const std::size_t tab = line.find('\t');
    if (tab == std::string_view::npos)
        return {};
    Monitor monitor{std::string(trimmedPart(line.substr(0, tab))), {}};
    if (monitor.name.empty() || characterCount(monitor.name) > kLongestMonitorName ||
        validUtf8(monitor.name) != monitor.name || oneLine(monitor.name) != monitor.name)
        return {};
    for (std::string_view rest = line.substr(tab + 1);;) {
        const std::size_t comma = rest.find(',');
        if (!takeNeed(rest.substr(0, comma), monitor.needs))
            return {};
        if (comma == std::string_view::npos)
            return monitor;
        rest.remove_prefix(comma + 1);
    }
}

} // namespace

Result<std::vector<Monitor>> readMonitors(std::string_view text) {
    std::vector<Monitor> monitors;
    if (constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; text.starts_with(kByteOrderMark))
        text.remove_prefix(kByteOrderMark.size()); // which some editors put there
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (trimmedPart(line).empty())
            continue;
        std::optional<Monitor> monitor = monitorOf(line);
        if (!monitor)
            return Error{ErrorKind::Corrupt, quobrix::text(TextId::MonitorLine, number)};
        monitors.push_back(*std::move(monitor));
    }
    return monitors;
}

Result<std::vector<Monitor>> loadMonitors() { return loadMonitors({userDataFolder(), deliveredFolder()}); }

Result<std::vector<Monitor>> loadMonitors(const std::vector<std::filesystem::path>& folders) {
    for (const std::filesystem::path& folder : folders) {
        if (folder.empty())
            continue;
        const Result<Bytes> bytes = readFile(folder / kMonitorsFile, kLargestMonitorsFile);
        if (bytes) {
            auto monitors = readMonitors({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
            if (!monitors)
                return Error{monitors.error().kind,
                             text(TextId::WithDetail, utf8(folder / kMonitorsFile), monitors.error().detail)};
            return monitors;
        }
        if (bytes.error().kind != ErrorKind::NotFound)
            return bytes.error();
    }
    return std::vector<Monitor>();
}

} // namespace quobrix
