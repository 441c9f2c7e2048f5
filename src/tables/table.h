#pragma once

#include "tables/column.h"
#include "texts/source_text.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace quobrix {

/// The description of a table class: its columns in order.
struct TableSpec {
    PersistentType type;
    std::span<const PersistentType* const> columns;  ///< objects of the document
    std::span<const PersistentType* const> computed; ///< derived columns that the document does not know of
    SourceText title{};                              ///< what people call the table ("Trip Log")
    RowRequirements rows{};

    std::size_t columnCount() const { return columns.size() + computed.size(); }
    const PersistentType& column(std::size_t index) const {
        return index < columns.size() ? *columns[index] : *computed[index - columns.size()];
    }
};

/// What the stream of a table holds: u32 row count, u32 column count, then per column u32 type id, u32 object id.
struct TableContent {
    std::uint32_t rows = 0;
    std::vector<Reference> columns;

    void write(ByteWriter& out) const;
    /// False if IN does not hold as many columns as it says.
    bool read(ByteReader& in);
};

/// An ordered list of columns and a row count; a row is one record. The columns are objects of their own and are loaded
/// when first asked for. Stream: TableContent.
///
/// No table lets go of an object that it could not read:
/// - A column that the file lacks stands in without values and follows the rows. It becomes an object of the document
///   when a cell of it is set.
/// - A column that cannot be read stands in empty and keeps its id. Its cells cannot be set, and while its rows cannot
///   move with the others, none do. If its reading failed for a reason that may pass it is tried again.
/// - A column of a class that only a later version knows is kept as it is. How its cells lie, and what stands for an
///   empty one, is known to its class alone; so the table gets neither rows nor columns beside it, and loses none.
///
/// columnLock() and rowLock() say so beforehand. Who does not ask gets std::logic_error, and the document stays as it
/// is.
class Table : public PersistentObject {
public:
    virtual const TableSpec& spec() const = 0;
    const PersistentType& type() const final { return spec().type; }

    RowIndex rowCount() const;
    std::size_t columnCount() const { return spec().columnCount(); }
    /// The column at INDEX of the table's order.
    Column& column(std::size_t index) const;
    /// The column of class C, which the table must have.
    template <class C>
    C& column() const {
        return static_cast<C&>(columnOf(C::kType));
    }
    /// The column of a class, which the table must have.
    Column& columnOf(const PersistentType& type) const;
    /// The position of a column by key; columnCount() if there is none.
    std::size_t indexOf(std::string_view key) const;
    /// Columns that could not be read, by index. Loads all, those too whose reading failed before.
    std::vector<std::size_t> unreadableColumns() const;
    /// Its columns, readable or not, in the order of the file.
    std::vector<Reference> references() const override { return columns_; }

    /// Why no cell of a column can be set whose values are kept; empty: they can.
    SourceText columnLock(const Column& column) const;
    /// Why rows can neither come nor go; empty: they can. Loads all columns as unreadableColumns() does.
    SourceText rowLock() const;
    /// Everything that the cells of ROW own can be read, and replaced by something of another length.
    bool replaceable(RowIndex row) const;

    /// The document lacks the column.
    bool lacks(std::size_t index) const;
    /// Takes back that a cell was set in a column that the document had lacked; no effect unless all are empty again.
    /// Its id is set aside.
    void dropColumn(std::size_t index);
    /// Takes back dropColumn(), under the id that the column had.
    void restoreColumn(std::size_t index, ObjectId id);

    // All or nothing, whatever they throw: std::logic_error if there is a rowLock().

    /// Inserts rows without values.
    void insertRows(std::span<const RowRun> runs);
    void insertRows(RowIndex at, std::size_t count);
    /// Removes rows, with the objects that their cells own.
    void removeRows(std::span<const RowRun> runs);
    void removeRows(RowIndex at, std::size_t count);
    /// The two steps of this: deletes what the cells of rows own, which then name what is not there, and removes rows
    /// whose cells' objects are gone or belong to somebody else by now.
    void deleteOwned(std::span<const RowRun> runs);
    void removeBareRows(std::span<const RowRun> runs);

    /// Called when an edit has set a cell, or when the last such edit has been undone: for a table that keeps its
    /// values elsewhere, too.
    virtual void cellEdited(std::size_t /*column*/, RowIndex) {}
    virtual void cellEditUndone(std::size_t /*column*/, RowIndex) {}

    void write(ByteWriter& out) const override;
    bool read(ByteReader& in, std::uint8_t schema) override;

protected:
    void created() override;
    void deleting() override;
    /// Called after rows or values were inserted or removed, for what a table keeps beside its columns.
    virtual void rowsChanged() {}

private:
    friend class Column;
    struct Entry {
        ObjectId id = kNoObject; ///< none: the file lacks the column, or does not know of it
        Column* column = nullptr;
        std::unique_ptr<Column> standIn;
        bool failing = false; ///< to be read, for a reason that may pass
        std::uint32_t asked = 0;

        bool unreadable() const { return standIn && id != kNoObject; }
    };
    struct MovingRows;
    Column& load(std::size_t index) const;
    void fetch(std::size_t index) const;
    void standIn(std::size_t index) const;
    void followRows(Column& column) const;
    void verifyRows() const;
    void takeIn(const Column& standIn, ObjectId again = kNoObject);
    void checkRowLock() const;

    mutable std::vector<Entry> entries_;
    std::vector<Reference> columns_; ///< as in the stream
    bool hasForeign_ = false;        ///< one of them is of a class that is not known
    mutable RowIndex rows_ = 0;
    // The row count of a file is believed only when a column of that many rows is there.
    mutable bool rowsVerified_ = true;
    mutable bool movingRows_ = false;
};

/// Some rows of a table, such as those that are chosen of it.
struct TableRows {
    const Table* table;
    std::vector<RowIndex> rows;
};

/// The rows of TABLE in their order.
std::vector<RowIndex> allRows(const Table& table);

} // namespace quobrix
