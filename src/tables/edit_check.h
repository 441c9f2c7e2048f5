#pragma once

#include "tables/check.h"
#include "tables/table.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quobrix {

/// The cells of one column that are to change, with their values; by row, each once.
using NewValues = std::vector<std::pair<RowIndex, const Value*>>;

/// A cell to be set.
struct CellEdit {
    std::size_t column = 0;
    RowIndex row = 0;
    Value value;
};

/// How an edit ended. Refused: nothing has changed.
struct EditOutcome {
    ShownText refusal;               ///< why; empty: it was done
    std::vector<Finding> warnings{}; ///< recommendations that the new values do not follow
    ShownText notice{};              ///< a limit that has been reached
    // Where it was refused: a cell of the block that was to be set, if it was for one.
    std::size_t column = 0;
    RowIndex row = Finding::kNoRow;
    std::optional<MessageId> message{}; ///< Parsed::message

    bool ok() const { return refusal.empty(); }
};

/// "The clipboard contains data which cannot be pasted. …"
extern const SourceText kIncompatiblePaste;

/// A limit that has been reached.
extern const SourceText kMostRows;

/// An edit that is refused, for a cell if one is given.
EditOutcome refused(ShownText why, std::size_t column = 0, RowIndex row = Finding::kNoRow);
EditOutcome refused(SourceText why, std::size_t column = 0, RowIndex row = Finding::kNoRow);
EditOutcome refused(const Parsed& parsed, std::size_t column, RowIndex row);

/// A whole edit that was looked at before anything is changed.
struct CheckedEdit {
    EditOutcome outcome;                      ///< the refusal, or the warnings
    std::map<std::size_t, NewValues> changes; ///< by column: what becomes another value
};
/// Which cells a person means to change: those that are for editing, or those that were recorded.
enum class EditedCells { Editable, Recorded };
/// Looks at setting CELLS of TABLE, which gets ADDED_ROWS at its end; CELLS must outlive the result.
CheckedEdit checkEdit(const Table& table, std::size_t addedRows, const std::vector<CellEdit>& cells,
                      const TextContext& context, EditedCells edited = EditedCells::Editable);

/// What is selected in a window when Delete is chosen.
struct DeleteSelection {
    std::vector<RowIndex> wholeRows{}; ///< rows selected from end to end
    bool otherCells = false;           ///< cells of other rows are selected, too
    bool onReadOnlyCell = false;       ///< one of them is not for editing
};
/// Why rows of TABLE cannot be deleted; empty if they can.
ShownText cannotDelete(const Table& table, const DeleteSelection& selection);
/// Why COUNT rows cannot be added to or inserted into TABLE; empty if they can.
ShownText cannotInsert(const Table& table, std::size_t count);

} // namespace quobrix
