#pragma once

#include "base/bytes.h"
#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"

#include <cstdint>
#include <type_traits>
#include <vector>

namespace quobrix {

/// Those cells of a record that a person has changed, as they were recorded.
struct RecordedCells {
    struct Cell {
        std::uint32_t column = 0; ///< the id of its class
        Bytes bytes;              ///< as it lies in the column's stream
        bool operator==(const Cell&) const = default;
    };
    std::vector<Cell> cells;
    bool operator==(const RecordedCells&) const = default;
};

template <>
struct Element<RecordedCells> {
    static constexpr std::size_t kSize = 4;
    static inline const RecordedCells kNone;
    static bool isNone(const RecordedCells& v) { return v.cells.empty(); }
    static void write(ByteWriter& out, const RecordedCells& v);
    static RecordedCells read(ByteReader& in);
};

/// What was recorded stays here when a person changes the cells of a record: by it the record is known again. Stream:
/// u32 count, then of each record u32 count and of each cell the id of the column's class (u32), u32 length, bytes.
class RecordedCellsColumn : public ArrayColumn<RecordedCells> {
public:
    ColumnKind kind() const override { return ColumnKind::Table; }
    Value value(RowIndex) const override { return {}; }
    std::string_view textView(RowIndex, const TextContext&, TextBuffer&) const override { return {}; }

    /// Sets a cell of COLUMN, a sibling, for a person.
    void edit(Column& column, RowIndex row, const Value& value);
    /// Exchanges what a person has made of the record for what was recorded, and back.
    void exchange(RowIndex row);
    /// The recorded cell of a column whose cell a person has changed; else nothing.
    const Bytes* find(const PersistentType& column, RowIndex row) const;
    /// The cell of COLUMN, a sibling, as it was recorded.
    Value recorded(const Column& column, RowIndex row) const;
};

/// The cell of COLUMN in ROW as it was recorded. KEPT: what is kept of that beside it; may be none.
template <class C>
auto recordedAt(const C& column, const RecordedCellsColumn* kept, RowIndex row) {
    using T = std::remove_cvref_t<decltype(column.at(row))>;
    if (const Bytes* bytes = kept ? kept->find(column.type(), row) : nullptr) {
        ByteReader in(*bytes);
        if (T value = Element<T>::read(in); in.finished())
            return value;
    }
    return T(column.at(row));
}

/// Objects as they were recorded, where a person has made others of them: they hold what was recorded whole, and
/// nothing shows them.
template <class T>
class RecordedObjectsOf : public ObjectColumnOf<T> {
public:
    bool isShown() const override { return false; }
};

} // namespace quobrix
