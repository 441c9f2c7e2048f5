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
constexpr SourceText kEvents[] = {
    SourceText("Connected to vehicle."),     SourceText("Disconnected from vehicle"),
    SourceText("Disconnected during trip."), SourceText("Configuration altered."),
    SourceText("Date or time altered."),     SourceText("Cleared."),
    SourceText("Logs downloaded."),          SourceText("Cleared multiple times."),
};
constexpr std::int32_t kLogsDownloaded = 6;
constexpr std::int32_t kConnectedToPc = 20; // those between are not used
constexpr SourceText kConfigurationChanges[] = {
    SourceText("Speed bands altered."),
    SourceText("Braking thresholds altered."),
    SourceText("Acceleration thresholds altered."),
    SourceText("Parameters altered."),
    SourceText("Sampling intervals altered."),
    SourceText("Unknown Configuration Change"),
};

} // namespace

const TableSpec& TSecurityLogTable::spec() const {
    static const TableSpec spec{kType,
                                kActivityColumns,
                                kTypesOf<TSecurityLogRemarksColumn>,
                                logSpec(LogId::Activity).title,
                                {.removable = true}};
    return spec;
}

SourceText activityEventText(std::int32_t code) {
    if (code == kConnectedToPc)
        return SourceText("Connected to PC");
    if (code >= 0 && code < static_cast<std::int32_t>(std::size(kEvents)))
        return kEvents[code];
    if (code >= 0)
        return code < kConnectedToPc ? SourceText() : SourceText("Unknown Event Type");
    return code >= -static_cast<std::int32_t>(std::size(kConfigurationChanges)) ? kConfigurationChanges[-(code + 1)]
                                                                                : kConfigurationChanges[5];
}

bool ActivityVehicleColumn::hasNone(RowIndex row) const {
    const std::int32_t event = table() ? table()->column<TSecurityLogEventTypeColumn>().at(row) : 0;
    return event == kLogsDownloaded || event == kConnectedToPc;
}

std::string ActivityVehicleColumn::namedKey(RowIndex row) const {
    return hasNone(row) ? std::string() : VehicleColumn::namedKey(row);
}

std::string_view ActivityVehicleColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return hasNone(row) ? std::string_view() : VehicleColumn::textView(row, context, buffer);
}

std::optional<CellSource> ActivityVehicleColumn::sourceOf(RowIndex row) const {
    return hasNone(row) ? std::nullopt : VehicleColumn::sourceOf(row);
}

Value ActivityDescriptionColumn::value(RowIndex row) const { return std::string(description(row).english()); }

std::string_view ActivityDescriptionColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return textIn(buffer.words, description(row));
}

SourceText ActivityDescriptionColumn::description(RowIndex row) const {
    const auto& events = table()->column<TSecurityLogEventTypeColumn>();
    return events.has(row) ? activityEventText(events.at(row)) : SourceText();
}

} // namespace quobrix
