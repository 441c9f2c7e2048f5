#include "model/trouble_report.h"

#include "model/logs.h"
#include "model/trip_log.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <optional>
#include <utility>

namespace quobrix {
namespace {

constexpr auto kFreezeFrame =
    kTypesOf<TTroubleLogFuelSystemOneStatusColumn, TTroubleLogFuelSystemTwoStatusColumn,
             TTroubleLogShortTermFuelTrimBankOneColumn, TTroubleLogLongTermFuelTrimBankOneColumn,
             TTroubleLogShortTermFuelTrimBankTwoColumn, TTroubleLogLongTermFuelTrimBankTwoColumn,
             TTroubleLogFuelPressureColumn, TTroubleLogIntakeManifoldPressureColumn,
             TTroubleLogEngineCoolantTemperatureColumn, TTroubleLogCalculatedLoadValueColumn,
             TTroubleLogEngineSpeedColumn, TTroubleLogVehicleSpeedColumn>;

using Blocks = std::vector<Block>;

/// FACTS under HEADING; nothing without any.
void addSection(Blocks& blocks, ShownText heading, Facts facts) {
    if (facts.facts.empty())
        return;
    blocks.push_back(Heading{std::move(heading)});
    blocks.push_back(std::move(facts));
}

Facts codeFacts(const std::string& code) {
    const TroubleCodeParts parts = troubleCodeParts(code);
    Facts facts;
    const auto add = [&](TextOf<0> label, SourceText part) {
        if (!part.empty())
            facts.facts.push_back({text(label), text(part)});
    };
    add(TextId::FactSystem, parts.system);
    add(TextId::FactSubsystem, parts.subsystem);
    add(TextId::FactDefinedBy, parts.control);
    return facts;
}

Facts freezeFrame(const TTroubleLogTable& troubles, RowIndex row, const TextContext& context) {
    Facts measured;
    for (const PersistentType* type : kFreezeFrame) {
        const Column& column = troubles.columnOf(*type);
        if (std::string value = column.text(row, context); !value.empty())
            measured.facts.push_back({plainHeading(column.spec()), std::move(value)});
    }
    return measured;
}

/// The trip of LOGGER that had begun last at TIME, if it went on then.
std::optional<RowIndex> tripAt(const TTripLogTable& trips, const std::string& logger, std::int32_t time) {
    const auto& loggers = trips.column<TTripLogQuobrixSerialNumberColumn>();
    const auto& starts = trips.column<TTripLogStartTimeColumn>();
    const auto& ends = trips.column<TTripLogEndTimeColumn>();
    std::optional<RowIndex> latest;
    for (RowIndex trip = 0; trip < trips.rowCount(); ++trip)
        if (starts.has(trip) && starts.at(trip) <= time && time <= ends.at(trip) && loggers.at(trip) == logger &&
            (!latest || starts.at(trip) >= starts.at(*latest)))
            latest = trip;
    return latest;
}

/// When the code was met in this vehicle, and during which trip now. What tells no VIN may be any vehicle of its
/// logger.
Facts history(const TTroubleLogTable& troubles, RowIndex row, const TextContext& context) {
    const auto& codes = troubles.column<TTroubleLogTroubleCodeColumn>();
    const auto& times = troubles.column<TTroubleLogTimeRecordedColumn>();
    const auto& vins = troubles.column<TTroubleLogVinColumn>();
    const auto& loggers = troubles.column<TTroubleLogQuobrixSerialNumberColumn>();
    const bool byVin = vins.has(row);
    RowIndex first = row, last = row;
    std::int64_t count = 0;
    for (RowIndex other = 0; other < troubles.rowCount(); ++other) {
        if (codes.at(other) != codes.at(row) ||
            (byVin ? vins.at(other) != vins.at(row) : loggers.at(other) != loggers.at(row)))
            continue;
        ++count;
        if (times.has(other)) {
            first = times.at(other) < times.at(first) || !times.has(first) ? other : first;
            last = times.at(other) > times.at(last) ? other : last;
        }
    }
    Facts facts{{{text(TextId::FactFirstSeen), times.text(first, context)},
                 {text(TextId::FactLastSeen), times.text(last, context)},
                 {text(TextId::FactTimesSeen), context.units.formatInteger(count)}}};
    const LogSpec& log = logSpec(LogId::Trips);
    const auto* trips = troubles.store() ? troubles.store()->existingSingleton<TTripLogTable>() : nullptr;
    if (const auto trip = trips && times.has(row) ? tripAt(*trips, loggers.at(row), times.at(row)) : std::nullopt)
        facts.facts.push_back(
            {text(TextId::FactDuring), recordTitle(log, *trips, *trip, context), RecordLink{log.page, *trip}});
    return facts;
}

} // namespace

std::vector<Block> troubleSections(const TTroubleLogTable& troubles, RowIndex row, const TextContext& context) {
    Blocks blocks;
    addSection(blocks, plainHeading(TTroubleLogTroubleCodeColumn::kSpec),
               codeFacts(troubles.column<TTroubleLogTroubleCodeColumn>().at(row)));
    addSection(blocks, text(SourceText("Freeze Frame")), freezeFrame(troubles, row, context));
    addSection(blocks, text(TextId::SectionHistory), history(troubles, row, context));
    return blocks;
}

} // namespace quobrix
