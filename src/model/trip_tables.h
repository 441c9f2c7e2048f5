#pragma once

#include "model/record_table.h"
#include "model/trip_log.h"

#include <optional>
#include <vector>

namespace quobrix {

/// The samples, the speed bands with the time spent in each, and the parameters of the trip in ROW of TRIPS, which is
/// there if ROW is.
std::vector<RecordTable> tripTables(const TTripLogTable* trips, std::optional<RowIndex> row,
                                    const TextContext& context);

} // namespace quobrix
