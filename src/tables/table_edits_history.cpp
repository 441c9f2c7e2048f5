#include "document/document.h"
#include "tables/table_edits.h"

#include <algorithm>
#include <cassert>
#include <utility>

// The steps of TableEdits: recording them, taking them back and forgetting them.

namespace quobrix {

/// While it is there the history records what comes and goes.
class TableEdits::Recording {
public:
    explicit Recording(TableEdits& edits) : edits_(edits), outer_(edits.groupStart_) {
        edits_.groupStart_ = edits_.open_.size();
        if (++edits_.depth_ == 1 && edits_.store())
            edits_.store()->setJournal(&edits_);
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording() {
        edits_.groupStart_ = outer_;
        if (--edits_.depth_ == 0 && edits_.store())
            edits_.store()->setJournal(nullptr);
    }

private:
    TableEdits& edits_;
    std::size_t outer_;
};

EditOutcome TableEdits::step(std::string description, const std::function<EditOutcome()>& work) {
    const std::size_t start = open_.size(), steps = steps_.size();
    EditOutcome outcome;
    std::vector<TableChange> changes;
    {
        const Recording recording(*this);
        try {
            outcome = work();
            if (!outcome.ok())
                rollBack(start);
            else if (depth_ == 1)
                changes = commit(std::move(description));
        } catch (...) {
            rollBack(start);
            throw;
        }
    }
    if (!changes.empty() || (depth_ == 0 && steps_.size() < steps))
        tell(changes);
    return outcome;
}

void TableEdits::objectAdopted(ObjectId id, const PersistentObject& object) {
    const auto& column = static_cast<const Column&>(object);
    const Table& table = *column.table();
    makeRoom();
    open_.push_back({.kind = Kind::ColumnMade,
                     .table = table.id(),
                     .column = table.indexOf(column.spec().key),
                     .rowsBefore = table.rowCount(),
                     .rowsAfter = table.rowCount(),
                     .objects = {id}});
}

void TableEdits::recordObject(Kind kind, ObjectId id) {
    if (open_.size() == groupStart_ || open_.back().kind != kind)
        open_.push_back({.kind = kind});
    open_.back().objects.push_back(id);
}

/// Takes the memory for one more change.
void TableEdits::makeRoom() {
    if (open_.size() == open_.capacity())
        open_.reserve(std::max<std::size_t>(4, open_.size() * 2));
}

/// Makes what is recorded a step. What listeners are to be told of it.
std::vector<TableChange> TableEdits::commit(std::string description) {
    if (open_.empty())
        return {};
    std::vector<TableChange> changes = changesOf(open_, false);
    forgetUndone();
    steps_.emplace_back();
    Step& step = steps_.back();
    step.description = std::move(description);
    step.changes = std::exchange(open_, {});
    groupStart_ = 0;
    ++done_;
    measure(step);
    forgetOldest();
    return changes;
}

void TableEdits::forgetUndone() {
    for (; steps_.size() > done_; steps_.pop_back()) {
        forget(steps_.back().changes, false);
        size_ -= steps_.back().size;
    }
}

void TableEdits::forgetOldest() {
    for (; steps_.size() > 1 && done_ > 0 && (steps_.size() > kMostSteps || size_ > kMostBytes); --done_) {
        forget(steps_.front().changes, true);
        size_ -= steps_.front().size;
        steps_.pop_front();
    }
}

/// Lets go of what a step keeps aside: of one that is DONE what it has deleted, of one that is undone what it had
/// made, in the order in which it was set aside. Its other objects may be kept by another step. Takes no memory.
void TableEdits::forget(std::span<const Change> changes, bool done) {
    for (std::size_t i = 0; store() && i < changes.size(); ++i) {
        const Change& change = changes[done ? i : changes.size() - 1 - i];
        if ((change.kind == Kind::ObjectsSetAside) != done)
            continue;
        const std::vector<ObjectId>& ids = change.objects;
        for (std::size_t k = 0; k < ids.size(); ++k)
            store()->forget(ids[done ? k : ids.size() - 1 - k]);
    }
}

/// Counts the memory that STEP takes now.
void TableEdits::measure(Step& step) {
    size_ -= step.size;
    step.size = sizeOf(step);
    size_ += step.size;
}

std::size_t TableEdits::sizeOf(const Step& step) const {
    std::size_t size = sizeof(Step) + step.description.capacity() + step.changes.capacity() * sizeof(Change);
    for (const Change& change : step.changes) {
        size += change.rows.capacity() * sizeof(RowRun) + change.before.capacity() + change.after.capacity() +
                change.objects.capacity() * sizeof(ObjectId);
        for (const ObjectId id : change.objects)
            size += store() ? store()->asideSize(id) : 0;
    }
    return size;
}

/// Takes back the changes from SIZE on for good. It needs next to no memory, since memory may be what the edit ended
/// for.
void TableEdits::rollBack(std::size_t size) {
    while (open_.size() > size) {
        Change last = std::move(open_.back());
        open_.pop_back();
        swap(last, true, Again::Never);
        forget({&last, 1}, false);
    }
}

std::string_view TableEdits::undoDescription() const {
    return canUndo() ? std::string_view(steps_[done_ - 1].description) : std::string_view();
}

std::string_view TableEdits::redoDescription() const {
    return canRedo() ? std::string_view(steps_[done_].description) : std::string_view();
}

void TableEdits::undo() {
    assert(depth_ == 0);
    if (!canUndo())
        return;
    Step& step = steps_[done_ - 1];
    if (!fits(step, true))
        return clear(); // rows have moved by other means
    const std::vector<TableChange> changes = changesOf(step.changes, true);
    swap(step, true);
    *step.isDone = false;
    --done_;
    measure(step);
    forgetOldest();
    tell(changes);
}

void TableEdits::redo() {
    assert(depth_ == 0);
    if (!canRedo())
        return;
    Step& step = steps_[done_];
    if (!fits(step, false))
        return clear();
    const std::vector<TableChange> changes = changesOf(step.changes, false);
    swap(step, false);
    *step.isDone = true;
    ++done_;
    measure(step);
    forgetOldest();
    tell(changes);
}

void TableEdits::clear() {
    assert(depth_ == 0);
    forgetUndone();
    for (; !steps_.empty(); steps_.pop_front())
        forget(steps_.front().changes, true);
    done_ = size_ = 0;
    tell({});
}

void TableEdits::addListener(TableEditsListener& listener) { listeners_.push_back(&listener); }

void TableEdits::removeListener(TableEditsListener& listener) {
    if (telling_ == 0)
        std::erase(listeners_, &listener);
    else // the places of the others must not move under the loop in tell()
        std::ranges::replace(listeners_, &listener, nullptr);
}

void TableEdits::tell(std::span<const TableChange> changes) {
    ++telling_;
    for (const TableChange& change : changes)
        for (std::size_t i = 0; i < listeners_.size(); ++i)
            if (listeners_[i])
                listeners_[i]->tableChanged(change);
    for (std::size_t i = 0; i < listeners_.size(); ++i)
        if (listeners_[i])
            listeners_[i]->historyChanged();
    if (--telling_ == 0)
        std::erase(listeners_, nullptr);
}

} // namespace quobrix
