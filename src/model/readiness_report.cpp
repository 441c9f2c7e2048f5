#include "model/readiness_report.h"

#include "model/names.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr TextOf<0> kNeedNames[kDriveNeeds] = {TextId::ReadinessWarmups, TextId::ReadinessColdStarts,
                                               TextId::ReadinessCruise, TextId::ReadinessIdle,
                                               TextId::ReadinessDecelerations};

bool isTime(DriveNeed need) { return need == DriveNeed::Cruise || need == DriveNeed::Idle; }

std::string plainAmount(DriveNeed need, std::int64_t amount, const TextContext& context) {
    return isTime(need) ? durationText(amount) : context.units.formatInteger(amount);
}

/// "2 cold starts"
ShownText amountOfNeed(DriveNeed need, std::int64_t amount, const TextContext& context) {
    const std::string number = plainAmount(need, amount, context);
    const auto count = static_cast<std::uint64_t>(amount);
    switch (need) {
    case DriveNeed::Warmups:
        return counted(TextId::ReadinessNeedsWarmups, count, number);
    case DriveNeed::ColdStarts:
        return counted(TextId::ReadinessNeedsColdStarts, count, number);
    case DriveNeed::Cruise:
        return text(TextId::ReadinessNeedsCruise, number);
    case DriveNeed::Idle:
        return text(TextId::ReadinessNeedsIdle, number);
    case DriveNeed::Decelerations:
        break;
    }
    return counted(TextId::ReadinessNeedsDecelerations, count, number);
}

std::string speedText(double kmh, const TextContext& context) {
    return context.units.formatValueWithUnits(UnitTypeId::Speed, kmh / 3.6);
}
std::string coolantText(double celsius, const TextContext& context) {
    return context.units.formatValueWithUnits(UnitTypeId::Temperature, celsius + 273.15);
}

/// What a drive would have to be like for AMOUNT more of NEED.
ShownText driveFor(DriveNeed need, std::int64_t amount, const TextContext& context) {
    const auto often = [&](const ShownText& drive) {
        return amount > 1 ? text(TextId::ReadinessDriveTimes, drive, context.units.formatInteger(amount)) : drive;
    };
    switch (need) {
    case DriveNeed::Warmups:
        return often(text(TextId::ReadinessDriveWarmup, coolantText(kWarmupLeast, context)));
    case DriveNeed::ColdStarts:
        return often(text(TextId::ReadinessDriveColdStart, coolantText(kColdStart, context)));
    case DriveNeed::Cruise:
        return text(TextId::ReadinessDriveCruise, speedText(kCruiseLeast, context), speedText(kCruiseMost, context),
                    durationText(amount));
    case DriveNeed::Idle:
        return text(TextId::ReadinessDriveIdle, durationText(amount));
    case DriveNeed::Decelerations:
        break;
    }
    return often(text(TextId::ReadinessDriveDecelerations, speedText(kDecelerationFrom, context),
                      speedText(kDecelerationTo, context)));
}

ShownText joined(const ShownText& all, const ShownText& next) {
    return all.empty() ? next : text(TextId::PlotAlso, all, next);
}

/// "P0420 (3 times, last 11/14/2023 11:13 PM)"
ShownText codeText(const VehicleReadiness::Code& code, const TextContext& context) {
    const std::string last = dateTimeText(context.units, context.zone.toLocal(code.last));
    return text(TextId::WithAside, code.code,
                code.times == 1
                    ? last
                    : std::string(text(TextId::ReadinessCodeTimes,
                                       context.units.formatInteger(static_cast<std::int64_t>(code.times)), last)));
}

Facts factsOf(const VehicleReadiness& vehicle, const TextContext& context) {
    const bool coded = !vehicle.codes.empty();
    Facts facts;
    facts.facts.push_back({text(TextId::ReadinessLastCode),
                           coded ? codeText(vehicle.codes.front(), context) : text(TextId::ReadinessNoCode)});
    if (vehicle.codes.size() > 1) {
        ShownText others;
        for (const VehicleReadiness::Code& code : std::span(vehicle.codes).subspan(1))
            others = joined(others, codeText(code, context));
        facts.facts.push_back({text(TextId::ReadinessOtherCodes), others});
    }
    facts.facts.push_back({coded ? text(TextId::ReadinessTripsSince) : text(TextId::ReadinessTripsInFile),
                           context.units.formatInteger(static_cast<std::int64_t>(vehicle.trips))});
    for (std::size_t i = 0; i < kDriveNeeds; ++i) {
        const std::string amount = plainAmount(static_cast<DriveNeed>(i), vehicle.amounts[i], context);
        const auto number = [&](std::size_t count) {
            return context.units.formatInteger(static_cast<std::int64_t>(count));
        };
        facts.facts.push_back(
            {text(kNeedNames[i]),
             vehicle.sampledTrips[i] == vehicle.trips ? ShownText::asItIs(amount)
             : vehicle.sampledTrips[i] == 0
                 ? text(TextId::ReadinessNotSampled)
                 : text(TextId::ReadinessSampledIn, amount, number(vehicle.sampledTrips[i]), number(vehicle.trips))});
    }
    return facts;
}

/// Adds what MONITOR lacks to MISSING, as far as that has less.
std::vector<std::string> rowOf(const Monitor& monitor, const VehicleReadiness& vehicle, DriveAmounts& missing,
                               const TextContext& context) {
    const MonitorReadiness readiness = readinessOf(monitor, vehicle);
    ShownText lacks, unknown;
    for (std::size_t i = 0; i < kDriveNeeds; ++i) {
        const auto need = static_cast<DriveNeed>(i);
        missing[i] = std::max(missing[i], readiness.missing[i]);
        if (readiness.missing[i] > 0)
            lacks = joined(lacks, amountOfNeed(need, readiness.missing[i], context));
        if (readiness.unsampled[i])
            unknown = joined(unknown, amountOfNeed(need, monitor.needs[i], context));
    }
    switch (readiness.state) {
    case Readiness::NotYet:
        return {monitor.name, text(TextId::ReadinessNotYet),
                lacks.empty() ? text(TextId::ReadinessUnsampled, unknown) : text(TextId::ReadinessMissing, lacks)};
    case Readiness::CannotTell:
        return {monitor.name, text(TextId::ReadinessCannotTell), text(TextId::ReadinessUnsampled, unknown)};
    case Readiness::Likely:
        break;
    }
    return {monitor.name, text(TextId::ReadinessLikely), text(TextId::ReadinessAllThere)};
}

} // namespace

Report readinessReport(std::span<const VehicleReadiness> vehicles, std::span<const Monitor> monitors,
                       const NamesTable& names, const TextContext& context) {
    Report report{text(TextId::Readiness), {}};
    report.blocks.emplace_back(Paragraph{text(TextId::ReadinessCaution)});
    if (vehicles.empty())
        report.blocks.emplace_back(Paragraph{text(TextId::ReadinessNoTrips)});
    if (monitors.empty())
        report.blocks.emplace_back(Paragraph{text(TextId::ReadinessNoMonitors)});
    for (const VehicleReadiness& vehicle : vehicles) {
        const std::string name = names.nameOf(vehicle.vehicle);
        report.blocks.emplace_back(Heading{name.empty() ? vehicle.vehicle : name});
        report.blocks.emplace_back(factsOf(vehicle, context));
        if (monitors.empty())
            continue;
        Grid grid{{{text(TextId::ReadinessMonitor), false},
                   {text(TextId::ReadinessState), false},
                   {text(TextId::ReadinessReason), false}},
                  {}};
        DriveAmounts missing{};
        for (const Monitor& monitor : monitors)
            grid.rows.push_back(rowOf(monitor, vehicle, missing, context));
        report.blocks.emplace_back(std::move(grid));
        ShownText drive;
        for (std::size_t i = 0; i < kDriveNeeds; ++i)
            if (missing[i] > 0)
                drive = joined(drive, driveFor(static_cast<DriveNeed>(i), missing[i], context));
        if (!drive.empty())
            report.blocks.emplace_back(Paragraph{text(TextId::ReadinessDrive, drive)});
    }
    return report;
}

} // namespace quobrix
