#include "document/document.h"
#include "tables/stored_cells.h"
#include "tables/table_edits.h"

#include <algorithm>
#include <unordered_set>

// What the changes of a step do when it is taken back or done again.

namespace quobrix {
namespace {

/// Calls MOVE with each of ITEMS and UNDOING, the last one first if UNDOING: all of them, or none if that throws.
template <class Items, class Move>
void moveAll(Items& items, bool undoing, const Move& move) {
    const auto at = [&](std::size_t i) -> auto& { return items[undoing ? items.size() - 1 - i : i]; };
    std::size_t i = 0;
    try {
        for (; i < items.size(); ++i)
            move(at(i), undoing);
    } catch (...) {
        while (i-- > 0)
            move(at(i), !undoing);
        throw;
    }
}

} // namespace

bool TableEdits::fits(const Step& step, bool undoing) const {
    // Within a step the changes follow from each other, so the first one of each table tells of its rows. Tables that
    // come with the step are not there yet.
    std::unordered_set<ObjectId> known, coming;
    for (std::size_t i = 0; i < step.changes.size(); ++i) {
        const Change& change = step.changes[undoing ? step.changes.size() - 1 - i : i];
        if (change.kind == Kind::ObjectsMade || change.kind == Kind::ObjectsSetAside) {
            const bool come = (change.kind == Kind::ObjectsMade) != undoing;
            for (const ObjectId id : change.objects)
                if (come)
                    coming.insert(id);
                else if (!coming.contains(id) && !store()->find(id))
                    return false;
            continue;
        }
        if (coming.contains(change.table))
            continue;
        const Table* table = find(change.table);
        const bool ofCells = change.kind == Kind::Cells;
        if (!table || (change.kind != Kind::ColumnMade &&
                       !(ofCells ? table->columnLock(table->column(change.column)) : table->rowLock()).empty()))
            return false;
        if (change.kind != Kind::ColumnMade && known.insert(change.table).second &&
            table->rowCount() != (undoing ? change.rowsAfter : change.rowsBefore))
            return false;
    }
    return true;
}

void TableEdits::swap(Step& step, bool undoing) {
    moveAll(step.changes, undoing, [this](Change& change, bool back) { swap(change, back); });
}

void TableEdits::swapObjects(const Change& change, bool undoing) {
    const bool made = change.kind == Kind::ObjectsMade;
    moveAll(change.objects, undoing, [&](ObjectId id, bool back) {
        if (made != back)
            store()->putBack(id);
        else
            store()->setAside(id, made ? ObjectStore::Aside::Unmade : ObjectStore::Aside::Deleted);
    });
}

void TableEdits::swap(Change& change, bool undoing, Again again) {
    if (change.kind == Kind::ObjectsMade || change.kind == Kind::ObjectsSetAside)
        return swapObjects(change, undoing);
    Table* table = find(change.table);
    if (change.kind == Kind::ColumnMade) {
        if (undoing)
            table->dropColumn(change.column);
        else
            table->restoreColumn(change.column, change.objects.front());
    } else if (change.kind == Kind::Cells) {
        Column& column = table->column(change.column);
        try {
            ByteReader in(undoing ? change.before : change.after);
            readCells(column, in, change.rows);
        } catch (...) {
            ByteReader in(undoing ? change.after : change.before);
            readCells(column, in, change.rows);
            throw;
        }
        if (!undoing)
            for (const RowRun& run : change.rows)
                for (RowIndex row = run.first; row < run.end(); ++row)
                    table->cellEdited(change.column, row);
        else
            for (auto run = change.rows.rbegin(); run != change.rows.rend(); ++run)
                for (RowIndex row = run->end(); row-- > run->first;)
                    table->cellEditUndone(change.column, row);
    } else if ((change.kind == Kind::RowsInserted) == undoing) {
        if (again == Again::Maybe)
            change.before = wholeRows(*table, change.rows);
        table->removeBareRows(change.rows);
    } else {
        table->insertRows(change.rows);
        try {
            ByteReader in(change.before);
            for (Column* column : columnsWithCells(*table))
                readCells(*column, in, change.rows);
        } catch (...) {
            table->removeBareRows(change.rows);
            throw;
        }
        change.before = {};
    }
}

std::vector<TableChange> TableEdits::changesOf(std::span<const Change> done, bool undone) {
    using Told = TableChange::Kind;
    std::vector<TableChange> changes;
    bool objects = false;
    for (std::size_t i = 0; i < done.size(); ++i) {
        const Change& change = done[undone ? done.size() - 1 - i : i];
        if (change.kind == Kind::RowsInserted || change.kind == Kind::RowsRemoved) {
            const bool inserted = (change.kind == Kind::RowsInserted) != undone;
            changes.push_back({inserted ? Told::RowsInserted : Told::RowsRemoved, change.table, change.rows});
            continue;
        }
        objects = objects || change.kind == Kind::ObjectsMade || change.kind == Kind::ObjectsSetAside;
        if (change.kind != Kind::Cells)
            continue;
        // Cells that change one after another are told as the one block that holds them all.
        if (changes.empty() || changes.back().kind != Told::Cells || changes.back().table != change.table)
            changes.push_back({Told::Cells, change.table, {change.rows.front()}, change.column, change.column});
        TableChange& block = changes.back();
        RowRun& rows = block.rows.front();
        const RowIndex end = std::max(rows.end(), change.rows.back().end());
        rows.first = std::min(rows.first, change.rows.front().first);
        rows.count = end - rows.first;
        block.firstColumn = std::min(block.firstColumn, change.column);
        block.lastColumn = std::max(block.lastColumn, change.column);
    }
    if (objects)
        changes.push_back({.kind = Told::Objects});
    return changes;
}

} // namespace quobrix
