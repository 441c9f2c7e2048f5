#pragma once

#include <map>
#include <string>

class QTableView;

namespace quobrix {

class Settings;
class SpreadsheetModel;

/// What a person makes of the columns of a spreadsheet: their order, their widths, which of them are hidden, and the
/// sorting. Kept in a section of the settings:
///
/// "Columns"  key:width of each column from left to right, separated by blanks. A width of 0 leaves it to the texts, a
///            negative one belongs to a hidden column.
/// "Sort"     the key of the column that is sorted by, behind a minus when it is sorted downward
class SpreadsheetLayout {
public:
    /// All of it must outlive the layout.
    SpreadsheetLayout(Settings& settings, std::string section, QTableView& view, const SpreadsheetModel& model);

    /// Gives the columns the widths of what they show now: of their headings alone while there are no rows.
    void fitToTexts();
    /// Gives the columns their texts' widths, then what is remembered of them.
    void restore();
    /// Stores what has been changed since restore().
    void remember();
    /// Back to the order and the widths that nobody has changed, and no sorting.
    void reset();
    /// restore() has been called for columns that are still shown.
    bool restored() const { return restored_; }
    void forget() { restored_ = false; }

private:
    Settings& settings_;
    std::string section_;
    QTableView& view_;
    const SpreadsheetModel& model_;
    std::map<int, int> hiddenWidths_; ///< by column: what a hidden one is wide when it is shown again
    bool restored_ = false;
    bool changed_ = false;
};

} // namespace quobrix
