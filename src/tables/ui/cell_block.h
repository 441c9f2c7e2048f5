#pragma once

#include <vector>

class QByteArray;
class QImage;
class QTableView;

namespace quobrix {

class SpreadsheetModel;
class SpreadsheetView;

/// Cells of a spreadsheet as a person sees them: rows by place from the top, columns from the left.
struct CellBlock {
    std::vector<int> places;
    std::vector<int> columns;
    std::vector<int> wholePlaces{}; ///< those of the rows that are selected from end to end

    bool empty() const { return places.empty() || columns.empty(); }
};

/// The rows and columns of the cells that are selected; what is hidden is not selected.
CellBlock selectedBlock(const SpreadsheetView& view);
/// Those of them that editing is about: where rows are always selected as a whole, their cells in the current column,
/// if that can be edited.
CellBlock blockToEdit(const SpreadsheetView& view, const SpreadsheetModel& model);
/// The columns that are shown, from left to right, from FROM on.
std::vector<int> shownColumns(const QTableView& view, int from = -1);

/// A picture of BLOCK under its headings, in the colours of paper. Only the rows that a picture can hold are drawn.
QImage drawBitmap(const QTableView& view, const SpreadsheetModel& model, const CellBlock& block);
/// The same as a drawing in SVG.
QByteArray drawSvg(const QTableView& view, const SpreadsheetModel& model, const CellBlock& block);

} // namespace quobrix
