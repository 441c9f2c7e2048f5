#pragma once

#include "model/trip_log.h"
#include "report/report.h"

#include <string>
#include <vector>

namespace quobrix {

/// What a parameter series of a trip is headed by.
ShownText seriesHeading(const ParameterSeriesColumn& series);

/// What the report of the trip of ROW tells behind the facts: bands, events, parameters. Parts of the trip that the
/// document does not have, or that cannot be read, are left out.
std::vector<Block> tripSections(const TTripLogTable& trips, RowIndex row, const TextContext& context);

} // namespace quobrix
