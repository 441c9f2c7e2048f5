#pragma once

class QWidget;

namespace quobrix {

class TableEdits;
class TTableSpreadsheet;

/// The object name of the last of them.
inline constexpr const char* kLastListButton = "findName";

/// The commands of LIST that a dialog shows as buttons beside it: all others are in the list's menu. Delete takes whole
/// rows, whichever of their cells are selected, while EDITS are not locked. Both outlive the buttons.
QWidget* listButtons(TTableSpreadsheet& list, const TableEdits& edits);

} // namespace quobrix
