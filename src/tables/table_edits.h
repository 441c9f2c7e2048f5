#pragma once

#include "document/object_store.h"
#include "tables/edit_check.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quobrix {

class TDocument;
class TabbedText;

/// What has changed in a table, by editing, undo or redo.
struct TableChange {
    /// Objects: some have come or gone, on which what is shown may depend that names no row; told last.
    enum class Kind { Cells, RowsInserted, RowsRemoved, Objects };

    Kind kind = Kind::Cells;
    ObjectId table = kNoObject;  ///< not of Objects
    RowRuns rows{};              ///< of Cells: one run that holds all of them
    std::size_t firstColumn = 0; ///< of Cells; computed columns may have changed with them
    std::size_t lastColumn = 0;
};

/// Is told of every change, in order, when all of a step is done.
class TableEditsListener {
public:
    virtual void tableChanged(const TableChange& change) = 0;
    /// What can be undone or redone has changed. All listeners know of the changes by then.
    virtual void historyChanged() {}

protected:
    ~TableEditsListener() = default;
};

/// The way by which every edit goes into the tables of a document, or into a table that stands alone: it is checked as
/// a whole, done, recorded, and told to all listeners. A step of undo is a whole edit or group of edits; whatever stops
/// it half way, an exception included, the tables are as they were before.
///
/// Tables are named by object id (kNoObject: the table that stands alone). Undo keeps cells as they lie in the streams,
/// and sets objects that come and go with them aside in the store, so that undoing all edits restores the streams byte
/// for byte, columns that the document had lacked among them. The oldest steps are forgotten when there are more than
/// kMostSteps or they take more than kMostBytes, with what they have set aside; the newest one never is. An edit that
/// changes nothing is no step. User-interface thread only.
class TableEdits final : private ObjectJournal {
public:
    static constexpr std::size_t kMostSteps = 1000;
    static constexpr std::size_t kMostBytes = 64 << 20;

    /// For the tables of DOCUMENT, which must outlive this.
    explicit TableEdits(TDocument& document) : document_(&document) {}
    /// For a table that stands alone, which must outlive this.
    explicit TableEdits(Table& table) : alone_(&table) {}
    TableEdits(const TableEdits&) = delete;
    TableEdits& operator=(const TableEdits&) = delete;

    /// LOCK says why nothing may be edited now; empty: it may. Every edit is refused for that reason.
    void setLock(std::function<ShownText()> lock) { lock_ = std::move(lock); }
    ShownText lockedBecause() const { return lock_ ? lock_() : ShownText(); }

    /// Sets one cell from what was typed. The text that editText() gives for the cell changes nothing.
    EditOutcome type(ObjectId table, std::size_t column, RowIndex row, std::string_view text,
                     const TextContext& context);
    /// Sets cells to values, all or none, as one step called DESCRIPTION.
    EditOutcome set(ObjectId table, std::vector<CellEdit> cells, const TextContext& context,
                    std::string_view description);
    /// Puts a block of texts into cells, all or none. COLUMNS and ROWS are those of the table that the block goes to,
    /// from the first ones on; what it has more rows than these is added at the end where the table allows that. A
    /// block of another shape is refused with kIncompatiblePaste.
    EditOutcome paste(ObjectId table, std::span<const std::size_t> columns, std::span<const RowIndex> rows,
                      const TabbedText& block, const TextContext& context);
    /// Sets every given cell to what TEXT means there, as if it had been typed into each, all or none, as one step
    /// called DESCRIPTION ("cut", where TEXT is empty).
    EditOutcome fill(ObjectId table, std::span<const std::size_t> columns, std::span<const RowIndex> rows,
                     std::string_view text, const TextContext& context, std::string_view description);
    /// Inserts COUNT empty rows before row AT (the row count: adds them at the end).
    EditOutcome insertRows(ObjectId table, RowIndex at, std::size_t count = 1);
    /// Deletes rows, given in any order, with what their cells own. Refused if not all of that can be read, since it
    /// could not be brought back.
    EditOutcome removeRows(ObjectId table, std::vector<RowIndex> rows);
    /// Runs WORK, whose edits become one step called DESCRIPTION. If WORK ends with a refusal, all of them are undone.
    /// Groups may be within groups.
    EditOutcome group(std::string_view description, const std::function<EditOutcome()>& work);

    // What the program itself does to the tables of a document, within a group. Nothing of it is checked. Objects are
    // made and deleted as ever; FILL and CHANGE do to the table itself what is said here and no more.

    /// Inserts rows, all of whose cells FILL may set.
    void addRows(Table& table, const RowRuns& rows, const std::function<void()>& fill);
    /// Runs CHANGE, which may set cells of ROWS, and add rows at the end.
    void changeRows(Table& table, const RowRuns& rows, const std::function<void()>& change);

    bool canUndo() const { return done_ > 0; }
    bool canRedo() const { return done_ < steps_.size(); }
    /// "typing in Name"; empty if there is nothing to undo (redo). Menus put "Undo " or "Redo " before it.
    std::string_view undoDescription() const;
    std::string_view redoDescription() const;
    void undo();
    void redo();
    /// Whether what the newest step did is done, from now on and whatever becomes of the step or the history: false
    /// after it was undone, true again after it was redone. There must be one to undo.
    std::shared_ptr<const bool> lastStepDone() const { return steps_[done_ - 1].isDone; }
    /// Forgets all steps: there is another document, or the table that stands alone holds something else.
    void clear();
    /// Bytes of memory that the history takes, but for what the system adds to each piece.
    std::size_t historySize() const { return size_; }

    /// Listeners must be removed before they end; they may be added and removed while they are called.
    void addListener(TableEditsListener& listener);
    void removeListener(TableEditsListener& listener);

private:
    enum class Kind { Cells, RowsInserted, RowsRemoved, ColumnMade, ObjectsMade, ObjectsSetAside };
    struct Change {
        Kind kind;
        ObjectId table = kNoObject;
        std::size_t column = 0; ///< Cells, ColumnMade
        RowRuns rows{};
        Bytes before{},
            after{}; ///< cells of one column; whole rows, column by column, while they are not there (before)
        RowIndex rowsBefore = 0, rowsAfter = 0; ///< of the table
        std::vector<ObjectId> objects{};        ///< that were made or set aside, in order
    };
    struct Step {
        std::string description;
        std::vector<Change> changes;
        std::size_t size = 0;
        std::shared_ptr<bool> isDone = std::make_shared<bool>(true);
    };
    class Recording;

    ObjectStore* store() const;
    Table* find(ObjectId table) const;
    ShownText lockOf(const Table& table) const;
    EditOutcome apply(ObjectId id, std::size_t addedRows, const std::vector<CellEdit>& cells,
                      const TextContext& context, std::string description);
    EditOutcome setCells(Table& table, std::size_t addedRows, const std::map<std::size_t, NewValues>& values);
    EditOutcome step(std::string description, const std::function<EditOutcome()>& work);
    void idWanted() override { forgetUndone(); }
    void objectMade(ObjectId id) override { recordObject(Kind::ObjectsMade, id); }
    void objectAdopted(ObjectId id, const PersistentObject& object) override;
    void objectSetAside(ObjectId id) override { recordObject(Kind::ObjectsSetAside, id); }
    void recordObject(Kind kind, ObjectId id);
    void makeRoom();
    std::size_t sizeOf(const Step& step) const;
    bool fits(const Step& step, bool undoing) const;
    void swap(Step& step, bool undoing);
    /// Whether a change that is taken back may be done again.
    enum class Again { Maybe, Never };
    void swap(Change& change, bool undoing, Again again = Again::Maybe);
    void swapObjects(const Change& change, bool undoing);
    std::vector<TableChange> commit(std::string description);
    void measure(Step& step);
    void forget(std::span<const Change> changes, bool done);
    void forgetOldest();
    void forgetUndone();
    void rollBack(std::size_t size);
    static std::vector<TableChange> changesOf(std::span<const Change> changes, bool undone);
    void tell(std::span<const TableChange> changes);

    TDocument* document_ = nullptr;
    Table* alone_ = nullptr;
    std::function<ShownText()> lock_;
    std::deque<Step> steps_;
    std::size_t done_ = 0; ///< steps before it are done, those from it on undone
    std::size_t size_ = 0; ///< of all steps
    std::vector<Change> open_;
    std::size_t groupStart_ = 0; ///< in open_
    int depth_ = 0;              ///< of groups
    std::vector<TableEditsListener*> listeners_;
    int telling_ = 0;
};

} // namespace quobrix
