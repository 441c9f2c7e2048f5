#pragma once

#include "model/log_columns.h"
#include "model/recorded_cells.h"

#include <string_view>

namespace quobrix {

/// The description of a trouble code by SAE J2012: out of the program's table, else by the code's category. Empty for
/// an empty code, "Invalid DTC" for one that is not five characters long.
SourceText troubleCodeDescription(std::string_view code);

/// What the characters of a trouble code say by themselves. Empty what they leave open; all, if they are no code.
struct TroubleCodeParts {
    SourceText system;    ///< of the vehicle
    SourceText control;   ///< who gave the code its meaning
    SourceText subsystem; ///< "Ignition System or Misfire"
};
TroubleCodeParts troubleCodeParts(std::string_view code);

/// Describes the trouble code of its row.
class TroubleCodeDescriptionColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Text; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    SourceText description(RowIndex row) const;
};

/// The status of a fuel system: the number of the bit set in the status byte of SAE J1979 PID 03.
class FuelSystemStatusColumn : public SelectionColumn {
public:
    std::vector<Selection> selections() const override;

protected:
    std::string selection(std::int32_t code) const override;
};

#define COLUMN(Name, Base, Unit, Heading, Tooltip, Needs)                                                              \
    QUOBRIX_COLUMN_CLASS(Name, Base, #Name, Unit, Heading, Tooltip, Needs)
#include "model/trouble_log.def"
#undef COLUMN

/// All trouble codes of the document with their freeze frames, in order of time.
class TTroubleLogTable final : public Table {
    QUOBRIX_TABLE_CLASS(TTroubleLogTable, true)
};

} // namespace quobrix
