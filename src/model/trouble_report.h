#pragma once

#include "model/trouble_log.h"
#include "report/report.h"

namespace quobrix {

/// What the vehicle measured when it found the trouble of ROW, under a heading; nothing if the vehicle told nothing.
std::vector<Block> freezeFrameSection(const TTroubleLogTable& troubles, RowIndex row, const TextContext& context);

} // namespace quobrix
