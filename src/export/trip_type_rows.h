#pragma once

#include "export/export_file.h"
#include "model/trip_type_totals.h"

namespace quobrix {

/// TRIPS, rows of trip tables, with what is paid for each, for other programs.
ExportContent tripTypeContent(std::span<const TableRows> trips, const std::vector<TripType>& types,
                              const TimeZone& zone);

} // namespace quobrix
