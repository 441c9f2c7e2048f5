#pragma once

#include "tables/tabbed_text.h"
#include "tables/ui/cell_block.h"

#include <optional>

namespace quobrix {

class SpreadsheetModel;

/// Puts BLOCK on the clipboard: as it reads, for other programs, and with all of its values, for this one.
void copyCells(const SpreadsheetModel& model, const CellBlock& block);
/// The cells on the clipboard, from this or another program; nothing if there are none.
std::optional<TabbedText> cellsOnClipboard();

} // namespace quobrix
