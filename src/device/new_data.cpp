#include "device/new_data.h"

#include "settings/settings.h"

#include <utility>

namespace quobrix {
namespace {

constexpr const char* kNewDataSection = "TNewDataColumn";
constexpr const char* kNewDataName = "Value";
constexpr const char* kAmountsSection = "Downloaded Memory"; // bytes, by serial number

} // namespace

OnNewData onNewData(const Settings& settings) {
    switch (settings.getInteger(kNewDataSection, kNewDataName, 0)) {
    case 1:
        return OnNewData::Ask;
    case 2:
        return OnNewData::Download;
    default:
        return OnNewData::Nothing;
    }
}

void setOnNewData(Settings& settings, OnNewData choice) {
    settings.setInteger(kNewDataSection, kNewDataName, static_cast<std::int32_t>(choice));
}

bool NewDataWatch::see(const LoggerStatus& status, bool idle) {
    const std::optional<MemoryInformation>& memory = status.readings.memory;
    if (!status.loggerPresent() || !memory || status.identity.serialNumber != status.serialText)
        return false;
    if (status.logsCurrent) {
        // Once: what is recorded later, while it is still connected, is new.
        if (std::exchange(settled_, status.logsReadTime) != status.logsReadTime)
            settings_.setInteger(kAmountsSection, status.serialText, memory->used);
        return false;
    }
    const Connection present{status.serialText, status.gaps};
    if (!idle || present == told_ || !memory->holdsData() ||
        memory->used == settings_.getInteger(kAmountsSection, status.serialText, -1))
        return false;
    told_ = present;
    return true;
}

} // namespace quobrix
