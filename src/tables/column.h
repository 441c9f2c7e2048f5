#pragma once

#include "base/no_value.h"
#include "document/persistent.h"
#include "tables/requirements.h"
#include "tables/row_runs.h"
#include "texts/source_text.h"
#include "units/number_format.h"
#include "units/unit_catalogue.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quobrix {

class Table;
enum class MessageId;
class TimeZone;
class TUnitSystem;

/// The refusal of what is not for editing at all.
extern const SourceText kNotEditable;

enum class ColumnKind { Boolean, Integer, Real, Text, Selection, DateTime, Table };

/// What a cell holds, in base units: nothing, a boolean, an integer (selections: the code; dates: seconds since
/// 1970-01-01 00:00 UTC), a real in the base unit of the column's unit type, or a text.
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

/// The description of a column class: all that differs between most columns.
struct ColumnSpec {
    PersistentType type;
    std::string_view key; ///< identity in files of values, settings and help; the class name but for two classes
    UnitTypeId unit;      ///< D0 where no unit applies
    SourceText heading;   ///< '&' marks the mnemonic, a line break splits it in two lines
    SourceText tooltip;
    Requirements requirements{};
};

/// What turns a base value into the user's text.
struct TextContext {
    const TUnitSystem& units;
    const TimeZone& zone;
};

/// Where the text of a cell is put together, to be used again for the next cell.
struct TextBuffer {
    ValueText figure;
    std::string words;
};

/// What a text that a person typed means: a value (nothing for an empty text), or why it is refused.
struct Parsed {
    Value value;
    ShownText refusal;
    std::optional<MessageId> message{}; ///< the one that the refusal is, where it is one that people are reminded of

    bool ok() const { return refusal.empty(); }
};

/// A cell that the text of another one is taken from.
struct CellSource {
    const Table& table;
    std::string_view columnKey;
    RowIndex row;
};

/// One entry of the list that a selection is made from.
struct Selection {
    std::int64_t code;
    std::string text;
};

/// A column of a table: one contiguous array of values, or, for a derived column, none at all.
class Column : public PersistentObject {
public:
    virtual const ColumnSpec& spec() const = 0;
    const PersistentType& type() const final { return spec().type; }
    virtual ColumnKind kind() const = 0;
    /// Holds values of its own; derived columns compute theirs from their siblings.
    virtual bool stored() const { return false; }
    /// The class of the sibling that it shows once more, under the heading that this has in a summary or report; none:
    /// it shows a figure of its own.
    virtual const PersistentType* repeats() const { return nullptr; }
    bool repeatsSibling() const { return repeats() != nullptr; }
    /// Its whole numbers are seconds of elapsed time, shown as HH:MM:SS.
    virtual bool isElapsedTime() const { return false; }

    /// The table it belongs to; nothing while it stands alone.
    Table* table() const { return table_; }
    /// Rows of the table, or of the column itself while it stands alone.
    RowIndex rowCount() const;

    /// ROW must be below rowCount() in all calls below.
    virtual Value value(RowIndex row) const = 0;
    /// The cell as the user reads it, with its unit; empty when there is no value.
    std::string text(RowIndex row, const TextContext& context) const;
    /// The same, without taking memory for it: it lies in the column or in BUFFER, and holds until either changes.
    virtual std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const = 0;

    const Requirements& requirements() const { return spec().requirements; }
    /// A person may change its cells.
    bool editable() const { return stored() && !requirements().readOnly && !requirements().notApplicable; }

    /// A person may correct what was recorded in its cells, where that is asked for.
    virtual bool correctable() const { return requirements().recorded && stored() && kind() != ColumnKind::Table; }
    /// It is there for people; others only keep what the program needs beside these.
    virtual bool isShown() const { return true; }

    /// What TEXT means as a value of this column, by the person's locale, units and clock. Says nothing of ranges and
    /// other requirements. A figure may be followed by the name of any unit of the column's type. A figure that reads
    /// the same as a bound of a range is that bound, or a bound could not be typed in other units than its own.
    virtual Parsed parse(std::string_view text, const TextContext& context) const;
    /// The same in ROW, for columns whose rows have units of their own.
    virtual Parsed parseIn(RowIndex, std::string_view text, const TextContext& context) const {
        return parse(text, context);
    }
    /// What the figures of ROW are a quantity of.
    virtual UnitTypeId unitOf(RowIndex) const { return spec().unit; }
    /// The cell as text for an editor: without a unit, and precise enough that parse() gives the value back.
    virtual std::string editText(RowIndex row, const TextContext& context) const { return text(row, context); }
    /// A figure of this column's kind as the user reads it, such as a bound of a range.
    virtual std::string figureText(double base, const TextContext& context) const;
    /// What can be selected, in the order in which it is offered: all that columns of the kind Selection can hold, and
    /// texts of others, for which codes mean nothing.
    virtual std::vector<Selection> selections() const { return {}; }
    /// What speaks against a value without forbidding it; empty: nothing.
    virtual ShownText doubt(const Value&) const { return {}; }
    /// What is wrong with the cell of ROW beside the other rows; empty: nothing. It is marked as an error, but no edit
    /// is refused for it, since the way from one right state to another may lead through it.
    virtual ShownText conflict(RowIndex) const { return {}; }
    /// A change of one cell may change how cells of other rows read or what is wrong with them.
    virtual bool comparesRows() const { return false; }
    /// Why the cell of ROW keeps its value although the column is editable; empty: it need not.
    ShownText lockedBecause(RowIndex row) const;

    /// What the text of the cell is a name of: a VIN, a serial number, an identification number. Empty where the text
    /// is the value itself.
    virtual std::string namedKey(RowIndex) const { return {}; }
    /// Where the text of the cell is taken from; nothing, if that is the cell itself.
    virtual std::optional<CellSource> sourceOf(RowIndex) const { return {}; }

    /// Sets a cell of an editable column to a value of its kind, or to nothing where the kind has that.
    virtual void setValue(RowIndex row, const Value& value);
    /// Cells as they lie in the column's stream, for undo. Nothing for derived columns.
    virtual void writeCells(ByteWriter&, RowIndex, std::size_t) const {}
    virtual void readCells(ByteReader&, RowIndex, std::size_t) {}

    /// Makes room for rows without values, or throws and changes nothing; removes rows. No effect on derived columns.
    virtual void insertRows(std::span<const RowRun>) {}
    virtual void removeRows(std::span<const RowRun>) {}
    /// Deletes the objects that the cells of rows own; the cells go on naming them.
    virtual void deleteOwned(std::span<const RowRun>) {}
    void insertRows(RowIndex at, std::size_t count);
    /// Rows of the column's own array; 0 for derived columns.
    virtual std::size_t storedRows() const { return 0; }

    /// What the cell of ROW owns, if anything, can be read, and replaced by something of another length.
    virtual bool replaceable(RowIndex) const { return true; }

    void write(ByteWriter&) const override {}
    bool read(ByteReader&, std::uint8_t) override { return true; }

protected:
    /// What the column itself has against another value in ROW; empty: nothing.
    virtual ShownText lock(RowIndex) const { return {}; }

private:
    friend class Table;
    void changedAlone() final;
    Table* table_ = nullptr;
};

/// The heading as plain text: no mnemonic marks, lines joined by a blank, no blank at the ends.
ShownText plainHeading(const ColumnSpec& spec);

template <class T>
std::unique_ptr<PersistentObject> makePersistent() {
    return std::make_unique<T>();
}

} // namespace quobrix
