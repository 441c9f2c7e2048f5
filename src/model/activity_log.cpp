#include "model/activity_log.h"

#include "model/logs.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kActivityColumns[] = {
#define COLUMN(Name, ...) &Name::kType,
#include "model/activity_log.def"
#undef COLUMN
};

// Two texts have no full stop; they are kept so.
constexpr std::string_view kEvents[21] = {
    "Connected to vehicle.",
    "Disconnected from vehicle",
    "Disconnected during trip.",
    "Configuration altered.",
    "Date or time altered.",
    "Cleared.",
    "Logs downloaded.",
    "Cleared multiple times.",
    "",
    "",
    "",
    "",
    "",
    "",
    "",
    "",
    "",
    "",
    "",
    "", // 8 to 19 are not used
    "Connected to PC",
};
constexpr std::string_view kConfigurationChanges[6] = {
    "Speed bands altered.", "Braking thresholds altered.", "Acceleration thresholds altered.",
    "Parameters altered.",  "Sampling intervals altered.", "Unknown Configuration Change",
};

} // namespace

const TableSpec& TSecurityLogTable::spec() const {
    static const TableSpec spec{kType, kActivityColumns, {}, logSpec(LogId::Activity).title};
    return spec;
}

std::string_view activityEventText(std::int32_t code) {
    if (code >= 0)
        return code < static_cast<std::int32_t>(std::size(kEvents)) ? kEvents[code] : "Unknown Event Type";
    return code >= -static_cast<std::int32_t>(std::size(kConfigurationChanges)) ? kConfigurationChanges[-(code + 1)]
                                                                                : kConfigurationChanges[5];
}

Value ActivityDescriptionColumn::value(RowIndex row) const { return std::string(description(row)); }

std::string_view ActivityDescriptionColumn::textView(RowIndex row, const TextContext&, TextBuffer&) const {
    return description(row);
}

std::string_view ActivityDescriptionColumn::description(RowIndex row) const {
    const auto& events = table()->column<TSecurityLogEventTypeColumn>();
    return events.has(row) ? activityEventText(events.at(row)) : std::string_view();
}

} // namespace quobrix
