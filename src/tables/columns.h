#pragma once

#include "tables/column.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace quobrix {

/// How an array's element lies in a stream, and which element means "no value".
template <class T>
struct Element;
template <>
struct Element<double> {
    static constexpr std::size_t kSize = 8;
    static constexpr double kNone = kNoValue;
    static bool isNone(double v) { return !hasValue(v); }
    static void write(ByteWriter& out, double v) { out.f64(v); }
    static double read(ByteReader& in) { return in.f64(); }
};
template <>
struct Element<std::int32_t> {
    static constexpr std::size_t kSize = 4;
    static constexpr std::int32_t kNone = std::numeric_limits<std::int32_t>::min();
    static bool isNone(std::int32_t v) { return v == kNone; }
    static void write(ByteWriter& out, std::int32_t v) { out.i32(v); }
    static std::int32_t read(ByteReader& in) { return in.i32(); }
};
template <>
struct Element<std::uint8_t> {
    static constexpr std::size_t kSize = 1;
    static constexpr std::uint8_t kNone = 0;
    static bool isNone(std::uint8_t) { return false; }
    static void write(ByteWriter& out, std::uint8_t v) { out.u8(v); }
    static std::uint8_t read(ByteReader& in) { return in.u8(); }
};
template <>
struct Element<ObjectId> {
    static constexpr std::size_t kSize = 4;
    static constexpr ObjectId kNone = kNoObject;
    static bool isNone(ObjectId v) { return v == kNoObject; }
    static void write(ByteWriter& out, ObjectId v) { out.u32(v); }
    static ObjectId read(ByteReader& in) { return in.u32(); }
};
template <>
struct Element<std::string> {
    static constexpr std::size_t kSize = 4;
    static inline const std::string kNone;
    static bool isNone(const std::string& v) { return v.empty(); }
    static void write(ByteWriter& out, const std::string& v) { out.text(v); }
    static std::string read(ByteReader& in) { return in.text(); }
};

/// A column with an array of its own: u32 count, then the elements.
template <class T>
class ArrayColumn : public Column {
public:
    bool stored() const override { return true; }
    std::size_t storedRows() const override { return values_.size(); }

    /// The element of ROW; the "none" element for a row beyond the array (a column that could not be read).
    const T& at(RowIndex row) const {
        static const T none = Element<T>::kNone;
        return row < values_.size() ? values_[row] : none;
    }
    bool has(RowIndex row) const { return row < values_.size() && !Element<T>::isNone(values_[row]); }
    const std::vector<T>& values() const { return values_; }

    void set(RowIndex row, T value) {
        values_.at(row) = std::move(value);
        setModified();
    }
    void setAll(std::vector<T> values) {
        values_ = std::move(values);
        setModified();
    }

    void writeCells(ByteWriter& out, RowIndex at, std::size_t count) const override {
        for (RowIndex row = at; row < at + count; ++row)
            Element<T>::write(out, values_.at(row));
    }
    void readCells(ByteReader& in, RowIndex at, std::size_t count) override {
        for (RowIndex row = at; row < at + count; ++row)
            values_.at(row) = Element<T>::read(in);
        setModified();
    }

    using Column::insertRows;
    // Each value moves once, however many runs there are.
    void insertRows(std::span<const RowRun> runs) override {
        std::size_t from = values_.size();
        values_.resize(from + countRows(runs), T(Element<T>::kNone));
        std::size_t to = values_.size();
        for (std::size_t i = runs.size(); i-- > 0; to = runs[i].first) {
            const std::size_t behind = to - runs[i].end();
            std::move_backward(position(from - behind), position(from), position(to));
            from -= behind;
            std::fill(position(runs[i].first), position(runs[i].end()), T(Element<T>::kNone));
        }
        setModified();
    }
    void removeRows(std::span<const RowRun> runs) override {
        if (runs.empty())
            return;
        auto to = position(runs.front().first);
        for (std::size_t i = 0; i < runs.size(); ++i)
            to = std::move(position(runs[i].end()), i + 1 < runs.size() ? position(runs[i + 1].first) : values_.end(),
                           to);
        values_.erase(to, values_.end());
        setModified();
    }

    void write(ByteWriter& out) const override {
        out.u32(static_cast<std::uint32_t>(values_.size()));
        for (const T& value : values_)
            Element<T>::write(out, value);
    }
    bool read(ByteReader& in, std::uint8_t) override {
        const std::uint32_t count = in.count(Element<T>::kSize);
        values_.reserve(count);
        for (std::uint32_t i = 0; i < count && in.complete(); ++i)
            values_.push_back(Element<T>::read(in));
        return in.complete();
    }

private:
    auto position(RowIndex row) { return values_.begin() + static_cast<std::ptrdiff_t>(row); }

    std::vector<T> values_;
};

inline constexpr SourceText kYes("Yes"), kNo("No");

/// Yes or no; there is always one of them.
class BooleanColumn : public ArrayColumn<std::uint8_t> {
public:
    ColumnKind kind() const override { return ColumnKind::Boolean; }
    Value value(RowIndex row) const override { return at(row) != 0; }
    std::string_view textView(RowIndex row, const TextContext&, TextBuffer& buffer) const override {
        return textIn(buffer.words, at(row) ? kYes : kNo);
    }
    /// Yes, No in either language, True, False, 1 or 0, in any case.
    Parsed parse(std::string_view text, const TextContext&) const override;
    void setValue(RowIndex row, const Value& value) override;
};

/// A whole number, shown with the digits grouped as the user's locale does it.
class IntegerColumn : public ArrayColumn<std::int32_t> {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    Parsed parse(std::string_view text, const TextContext& context) const override;
    std::string editText(RowIndex row, const TextContext& context) const override;
    void setValue(RowIndex row, const Value& value) override;
};

/// A real figure in the base unit of its unit type.
class RealColumn : public ArrayColumn<double> {
public:
    ColumnKind kind() const override { return ColumnKind::Real; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    Parsed parse(std::string_view text, const TextContext& context) const override;
    std::string editText(RowIndex row, const TextContext& context) const override;
    void setValue(RowIndex row, const Value& value) override;

protected:
    /// What TEXT means as a figure of UNIT.
    Parsed parseAs(UnitTypeId unit, std::string_view text, const TextContext& context) const;
};

class TextColumn : public ArrayColumn<std::string> {
public:
    ColumnKind kind() const override { return ColumnKind::Text; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext&, TextBuffer&) const override { return at(row); }
    std::string editText(RowIndex row, const TextContext&) const override { return at(row); }
    Parsed parse(std::string_view text, const TextContext&) const override { return {std::string(text), {}}; }
    void setValue(RowIndex row, const Value& value) override;
};

/// A moment, in seconds since 1970-01-01 00:00 UTC; shown in local time.
class DateTimeColumn : public ArrayColumn<std::int32_t> {
public:
    ColumnKind kind() const override { return ColumnKind::DateTime; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    Parsed parse(std::string_view text, const TextContext& context) const override;
    /// With seconds where there are any.
    std::string editText(RowIndex row, const TextContext& context) const override;
    std::string figureText(double base, const TextContext& context) const override;
    void setValue(RowIndex row, const Value& value) override;
};

/// The one of SELECTIONS that TEXT is, in any case, or begins.
Parsed parseSelection(const std::vector<Selection>& selections, std::string_view text);

/// A code out of a list of texts.
class SelectionColumn : public ArrayColumn<std::int32_t> {
public:
    ColumnKind kind() const override { return ColumnKind::Selection; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext&, TextBuffer& buffer) const override;
    /// The text of a selection in any case, or the beginning of only one.
    Parsed parse(std::string_view text, const TextContext& context) const override;
    void setValue(RowIndex row, const Value& value) override;

protected:
    /// The text of a code.
    virtual std::string selection(std::int32_t code) const = 0;
};

/// An elapsed time in whole seconds, shown as HH:MM:SS.
class ElapsedTimeColumn : public IntegerColumn {
public:
    bool isElapsedTime() const override { return true; }
    std::string_view textView(RowIndex row, const TextContext&, TextBuffer& buffer) const override;
    /// HH:MM:SS, with hours of any length.
    Parsed parse(std::string_view text, const TextContext&) const override;
    std::string editText(RowIndex row, const TextContext& context) const override { return text(row, context); }
    std::string figureText(double base, const TextContext&) const override;
};

/// Cells that hold objects (nested tables, lists). The column owns them.
class ObjectColumn : public ArrayColumn<ObjectId> {
public:
    ColumnKind kind() const override { return ColumnKind::Table; }
    Value value(RowIndex) const override { return {}; }
    std::string_view textView(RowIndex, const TextContext&, TextBuffer&) const override { return {}; }
    void deleteOwned(std::span<const RowRun> runs) override;
    std::vector<Reference> references() const override;
    bool replaceable(RowIndex row) const override;
    /// The class of the objects.
    virtual const PersistentType& objectType() const = 0;
    /// The object of ROW in OTHER, which has none then, takes the place of that of this column, which is deleted.
    void takeOver(RowIndex row, ObjectColumn& other);

protected:
    void deleting() override;
    /// An object of objectType() for ROW, which has none. std::logic_error if it has one that cannot be read.
    PersistentObject& make(RowIndex row);
    /// Deletes the object of ROW, if it has one.
    void clear(RowIndex row);

private:
    void destroyObject(RowIndex row);
};

/// An object column whose cells are objects of class T.
template <class T>
class ObjectColumnOf : public ObjectColumn {
public:
    using Object = T;
    /// The object of ROW, loaded on first request; nothing if there is none or it cannot be read.
    T* object(RowIndex row) const;
    /// The object of ROW, made if the cell has none. std::logic_error if it has one that cannot be read: nothing would
    /// lead to that any more.
    T& makeObject(RowIndex row);
    /// A new object for ROW in place of the one that it has.
    T& replaceObject(RowIndex row) {
        clear(row);
        return static_cast<T&>(make(row));
    }
    const PersistentType& objectType() const final { return T::kType; }
};

/// A column that computes its cells from its siblings. TABLE kinds aside, the base of every column without an array.
class DerivedColumn : public Column {};

/// One that computes an elapsed time, in whole seconds.
class DerivedElapsedTimeColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    bool isElapsedTime() const override { return true; }
    std::string_view textView(RowIndex row, const TextContext&, TextBuffer& buffer) const override;
};

/// The number of a row: its ordinal in the table, from 1.
class RowNumberColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override { return static_cast<std::int64_t>(row) + 1; }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

} // namespace quobrix

#include "document/object_store.h"

namespace quobrix {

template <class T>
T* ObjectColumnOf<T>::object(RowIndex row) const {
    return has(row) && store() ? store()->template find<T>(at(row)) : nullptr;
}

template <class T>
T& ObjectColumnOf<T>::makeObject(RowIndex row) {
    T* existing = object(row);
    return existing ? *existing : static_cast<T&>(make(row));
}

} // namespace quobrix
