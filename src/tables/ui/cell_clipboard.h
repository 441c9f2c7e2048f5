#pragma once

#include "tables/tabbed_text.h"
#include "tables/ui/cell_block.h"
#include "units/unit_system.h"

#include <memory>
#include <optional>

namespace quobrix {

class SpreadsheetModel;

/// Cells of the clipboard, and how dates and numbers are written in them.
struct ClipboardCells {
    TabbedText texts;
    std::unique_ptr<const TUnitSystem> form;
};

/// Puts BLOCK on the clipboard: as it reads, for other programs, as tabbed text and as a table in HTML, and with all of
/// its values, for this one. A lone cell is no table.
void copyCells(const SpreadsheetModel& model, const CellBlock& block, const TUnitSystem& units);
/// The cells on the clipboard; nothing if there are none. Those of this program are in the form that they were copied
/// in, whatever a person has chosen since: 03/04 stays the day that it was. Those of others are in that of UNITS.
std::optional<ClipboardCells> cellsOnClipboard(const TUnitSystem& units);

} // namespace quobrix
