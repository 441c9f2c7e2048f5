#pragma once

#include "tables/column.h"

#include <memory>
#include <span>
#include <vector>

namespace quobrix {

/// The description of a table class: its columns in order.
struct TableSpec {
    PersistentType type;
    std::span<const PersistentType* const> columns;  ///< objects of the document
    std::span<const PersistentType* const> computed; ///< derived columns that the document does not know of
    std::string_view title{};                        ///< what people call the table ("Trip Log")
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
/// A column that the file lacks or that cannot be read stands in empty. When rows are about to change, it is replaced
/// by a new object: the old bytes stay in the file, under the id that nothing refers to any more.
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
    /// Columns that could not be read, by index. Loads all.
    std::vector<std::size_t> unreadableColumns() const;
    /// Its columns, readable or not.
    std::vector<Reference> references() const override;

    /// Inserts rows without values.
    void insertRows(std::span<const RowRun> runs);
    void insertRows(RowIndex at, std::size_t count);
    /// Removes rows, with the objects that their cells own.
    void removeRows(std::span<const RowRun> runs);
    void removeRows(RowIndex at, std::size_t count);
    /// Gives every stored column as many rows as the table has, so that all cells can be set. insertRows() and
    /// removeRows() do this first; who sets cells of rows that are there already calls it. References to columns that
    /// stood in end.
    void makeWritable();

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
    struct Entry {
        ObjectId id = kNoObject;
        Column* column = nullptr;
        std::unique_ptr<Column> standIn;
        bool unreadable = false;
    };
    Column& load(std::size_t index) const;
    void standIn(std::size_t index) const;
    void verifyRows() const;

    mutable std::vector<Entry> entries_;
    std::vector<Reference> foreign_; ///< columns of the file that this class does not have: kept as they are
    mutable RowIndex rows_ = 0;
    // The row count of a file is believed only when a column of that many rows is there.
    mutable bool rowsVerified_ = true;
};

} // namespace quobrix
