#include "cli/readiness.h"

#include "base/fold_case.h"
#include "cli/opened_document.h"
#include "cli/printing.h"
#include "cli/units.h"
#include "cli/writing.h"
#include "messages/file_messages.h"
#include "model/names.h"
#include "model/readiness_report.h"
#include "texts/text.h"

#include <utility>

namespace quobrix::cli {

ExitCode readiness(const ReadinessOptions& options) {
    if (!options.out.empty() && !mayReplace(options.out, {&options.file, 1}))
        return kUsage;
    const std::optional<FileFormat> format = chosenFormat(options.format, options.out, kReportFormats);
    if (!format)
        return kUsage;
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;
    const Result<std::vector<Monitor>> monitors = loadMonitors();
    if (!monitors) {
        complain(textFileMessage(monitors.error(), kMonitorsFile).text);
        return kFailed;
    }
    OpenedDocument opened;
    if (!opened.open(options.file))
        return kFailed;
    TQuobrixDocument& document = opened.document();
    ReadinessReader reader(document);
    while (reader.readNext()) {
    }
    std::vector<VehicleReadiness> vehicles = reader.vehicles();
    if (options.vehicle) {
        const std::string wanted = foldCase(*options.vehicle);
        std::erase_if(vehicles, [&](const VehicleReadiness& vehicle) {
            return foldCase(vehicle.vehicle) != wanted &&
                   foldCase(document.vehicles().nameOf(vehicle.vehicle)) != wanted;
        });
        if (vehicles.empty()) {
            complain(text(TextId::CliNoSuchVehicle, *options.vehicle));
            return kFailed;
        }
    }
    Report report = readinessReport(vehicles, *monitors, document.vehicles(), units.context());
    const ShownText title = ShownText::asItIs(report.title);
    return putReport(std::move(report), *format, options.out, opened.completeness(), title);
}

} // namespace quobrix::cli
