#pragma once

#include "model/trouble_log.h"
#include "report/report.h"

namespace quobrix {

/// What is to be known of the trouble in ROW besides its facts: what its code says by itself, what the vehicle measured
/// then, how often the code was met in this vehicle, and the trip during which it was. Left out is what is not known.
std::vector<Block> troubleSections(const TTroubleLogTable& troubles, RowIndex row, const TextContext& context);

} // namespace quobrix
