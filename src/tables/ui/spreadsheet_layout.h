#pragma once

#include <map>
#include <set>
#include <string>

class QTableView;

namespace quobrix {

class Settings;
class SpreadsheetModel;

/// What a person makes of the columns of a spreadsheet: their order, their widths, which of them are hidden, and the
/// sorting. Kept in a section of the settings:
///
/// "Columns"  key:width of each column from left to right, separated by blanks. A width of 0 leaves it to the texts, as
///            for columns that the user has not resized; a negative one belongs to a hidden column, -1 to one whose
///            texts will say.
/// "Sort"     the key of the column that is sorted by, behind a minus when it is sorted downward
class SpreadsheetLayout {
public:
    /// All of it must outlive the layout.
    SpreadsheetLayout(Settings& settings, std::string section, QTableView& view, const SpreadsheetModel& model);

    /// Gives the columns that the user has not resized the widths of what they show now: of their headings alone while
    /// there are no rows.
    void fitToTexts();
    /// Gives the columns what is remembered of them, else their texts' widths.
    void restore();
    /// Hides the columns that nobody has chosen yet, and shows all others.
    void hideUnchosen();
    /// Stores what has been changed since restore().
    void remember();
    /// restore() has been called for columns that are still shown.
    bool restored() const { return restored_; }
    void forget() {
        restored_ = false;
        resized_.clear();
    }

private:
    Settings& settings_;
    std::string section_;
    QTableView& view_;
    const SpreadsheetModel& model_;
    std::set<int> resized_;           ///< columns whose width is a person's
    std::map<int, int> hiddenWidths_; ///< by column: what a hidden one is wide when it is shown again
    bool restored_ = false;
    bool changed_ = false;
    bool fitting_ = false; ///< widths change by themselves
};

} // namespace quobrix
