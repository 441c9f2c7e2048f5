#include "tables/edit_check.h"

#include "texts/text.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace quobrix {

const SourceText kIncompatiblePaste(
    "The clipboard contains data which cannot be pasted.\nIt's in a format that's incompatible with this spreadsheet.");
const SourceText
    kMostRows("This now contains the maximum number of allowable rows.\nNo more can be added or inserted.");

namespace {

/// Puts VALUES, given in any order, by row. Of a row that was given twice the last one counts.
void putInOrder(NewValues& values) {
    const auto row = &NewValues::value_type::first;
    if (!std::ranges::is_sorted(values, {}, row))
        std::ranges::stable_sort(values, {}, row);
    // From the end, so that the last one of a row stays.
    const auto kept =
        std::unique(values.rbegin(), values.rend(), [](const auto& a, const auto& b) { return a.first == b.first; });
    values.erase(values.begin(), kept.base());
}

/// The first of the new values' rows that another row will be equal to, if any.
std::optional<RowIndex> repeatedRow(const Column& column, const NewValues& edits, Uniqueness uniqueness) {
    std::unordered_map<std::string, RowIndex> firstRows;
    firstRows.reserve(edits.size());
    std::optional<RowIndex> first;
    const auto repeat = [&](RowIndex row) { first = std::min(first.value_or(row), row); };
    for (const auto& [row, value] : edits)
        if (std::string key = uniquenessKey(*value, uniqueness); !key.empty())
            if (const auto [entry, isNew] = firstRows.try_emplace(std::move(key), row); !isNew)
                repeat(entry->second);
    auto edit = edits.begin();
    for (RowIndex row = 0; row < column.rowCount(); ++row)
        if (edit != edits.end() && edit->first == row)
            ++edit;
        else if (const auto found = firstRows.find(uniquenessKey(column.value(row), uniqueness));
                 found != firstRows.end())
            repeat(found->second);
    return first;
}

} // namespace

EditOutcome refused(ShownText why, std::size_t column, RowIndex row) {
    return {.refusal = std::move(why), .column = column, .row = row};
}

EditOutcome refused(SourceText why, std::size_t column, RowIndex row) { return refused(text(why), column, row); }

EditOutcome refused(const Parsed& parsed, std::size_t column, RowIndex row) {
    EditOutcome outcome = refused(parsed.refusal, column, row);
    outcome.message = parsed.message;
    return outcome;
}

CheckedEdit checkEdit(const Table& table, std::size_t addedRows, const std::vector<CellEdit>& cells,
                      const TextContext& context, EditedCells edited) {
    CheckedEdit checked;
    std::vector<Finding>& warnings = checked.outcome.warnings;
    const auto refuse = [](const auto& why, std::size_t column, RowIndex row) {
        return CheckedEdit{refused(why, column, row), {}};
    };
    const RowIndex rows = table.rowCount();
    for (const CellEdit& cell : cells) {
        if (cell.column >= table.columnCount() || cell.row >= rows + addedRows)
            return refuse(kIncompatiblePaste, cell.column, cell.row);
        const Column& column = table.column(cell.column);
        if (edited == EditedCells::Editable ? !column.editable() : !column.correctable())
            return refuse(kNotEditable, cell.column, cell.row);
        if (cell.row < rows && column.value(cell.row) == cell.value)
            continue;
        if (const ShownText why = cell.row < rows ? column.lockedBecause(cell.row) : text(table.columnLock(column));
            !why.empty())
            return refuse(why, cell.column, cell.row);
        for (Finding& finding : checkValue(column, cell.value, context)) {
            if (finding.severity == Severity::Required)
                return refuse(finding.text, cell.column, cell.row);
            finding.table = table.id();
            finding.title = text(table.spec().title);
            finding.column = &column.spec();
            finding.row = cell.row;
            warnings.push_back(std::move(finding));
        }
        checked.changes[cell.column].emplace_back(cell.row, &cell.value);
    }
    for (auto& [index, edits] : checked.changes) {
        putInOrder(edits);
        const Column& column = table.column(index);
        const Requirements& r = column.requirements();
        if (r.mustBeUnique != Uniqueness::None)
            if (const auto row = repeatedRow(column, edits, r.mustBeUnique))
                return refuse(uniquenessText(Severity::Required, r.mustBeUnique), index, *row);
        if (r.shouldBeUnique != Uniqueness::None)
            if (const auto row = repeatedRow(column, edits, r.shouldBeUnique))
                warnings.push_back({Severity::Recommended, uniquenessText(Severity::Recommended, r.shouldBeUnique),
                                    table.id(), text(table.spec().title), &column.spec(), *row});
    }
    return checked;
}

ShownText cannotDelete(const Table& table, const DeleteSelection& selection) {
    if (table.rowCount() == 0)
        return text(SourceText("Unable to delete. This spreadsheet is empty."));
    if (selection.wholeRows.empty() && !selection.otherCells)
        return text(SourceText("Unable to delete. No rows or cells have been selected."));
    if (selection.onReadOnlyCell || !(table.spec().rows.editable || table.spec().rows.removable))
        return text(SourceText("Unable to delete. This cell is read-only and cannot be edited or deleted."));
    if (selection.otherCells)
        return text(SourceText("Unable to delete. Only entire rows can be deleted."));
    if (table.rowCount() - selection.wholeRows.size() < table.spec().rows.required.least)
        return text(
            SourceText("Unable to delete. This spreadsheet already contains\nthe minimum number of allowable rows."));
    return text(table.rowLock());
}

ShownText cannotInsert(const Table& table, std::size_t count) {
    if (!table.spec().rows.editable)
        return text(kNotEditable);
    const CountRange& allowed = table.spec().rows.required;
    if (allowed.most != CountRange::kUnlimited &&
        count > allowed.most - std::min<std::size_t>(allowed.most, table.rowCount()))
        return text(kMostRows);
    return text(table.rowLock());
}

} // namespace quobrix
