#pragma once

#include "model/readiness.h"
#include "report/report.h"
#include "tables/column.h"

namespace quobrix {

class NamesTable;

/// What the trips of VEHICLES, whose names NAMES has, make likely of MONITORS, and what a drive would have to bring.
/// That loggers do not record the monitors' state is said first.
Report readinessReport(std::span<const VehicleReadiness> vehicles, std::span<const Monitor> monitors,
                       const NamesTable& names, const TextContext& context);

} // namespace quobrix
