#pragma once

#include "model/log_columns.h"
#include "model/parameters.h"
#include "model/print_range.h"

namespace quobrix {

/// Limits that a table sets one above the other, row by row, from above 0 on.
class AscendingColumn : public RealColumn {
public:
    bool comparesRows() const override { return true; }
    ShownText conflict(RowIndex row) const override;
};

/// Where a speed band begins: at the upper end of the one before it.
class SpeedBandFromColumn : public RealColumn {
public:
    bool comparesRows() const override { return true; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    double from(RowIndex row) const; ///< m/s; kNoValue if the band before it has no upper end
};

/// Where a speed band ends. The last one has no end.
class SpeedBandToColumn : public AscendingColumn {
public:
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    ShownText conflict(RowIndex row) const override;

protected:
    ShownText lock(RowIndex row) const override;

private:
    bool isLast(RowIndex row) const { return row + 1 == rowCount(); }
};

/// A parameter, or 0 for none, as a logger can be told to record it. Each can be chosen once.
class ParameterChoiceColumn : public ParameterColumn {
public:
    std::vector<Selection> selections() const override;
    bool comparesRows() const override { return true; }
    ShownText conflict(RowIndex row) const override;

protected:
    std::string selection(std::int32_t code) const override;
};

/// The intervals that a logger can sample at, in whole seconds; kept as reals.
class SamplingIntervalColumn : public RealColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Selection; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    /// "Every 5 Seconds", its beginning, or "5".
    Parsed parse(std::string_view text, const TextContext& context) const override;
    std::string editText(RowIndex row, const TextContext& context) const override { return text(row, context); }
    void setValue(RowIndex row, const Value& value) override;
    std::vector<Selection> selections() const override;
};

#define COLUMN(Name, Base, Unit, Heading, Tooltip, Needs)                                                              \
    QUOBRIX_COLUMN_CLASS(Name, Base, #Name, Unit, Heading, Tooltip, Needs)
#include "model/logger_tables.def"
#include "model/options.def"
#undef COLUMN

/// Per logger, the time of its most recent download.
class TDownloadTable final : public Table {
    QUOBRIX_TABLE_CLASS(TDownloadTable, true)
    bool knows(const std::string& serialNumber) const;
    void record(const std::string& serialNumber, std::int32_t time);
};

/// Per logger, the time at which its memory was last cleared.
class TClearTable final : public Table {
    QUOBRIX_TABLE_CLASS(TClearTable, true)
    void record(const std::string& serialNumber, std::int32_t time);
};

/// The speed bands to be written to the logger.
class TCurrentSpeedBandsTable final : public Table {
    QUOBRIX_TABLE_CLASS(TCurrentSpeedBandsTable, true)
};

/// The parameters that can be chosen, 0 for none included, and whether the vehicle reports them.
class TParametersTable final : public Table {
    QUOBRIX_TABLE_CLASS(TParametersTable, false)
    /// With all parameters, taken for supported.
    TParametersTable();
    /// How PARAMETER is offered: its name, and behind it that the vehicle does not report it.
    std::string choice(std::int32_t parameter) const;
};

/// The parameters and sampling intervals to be written to the logger.
class TCurrentParametersTable final : public Table {
    QUOBRIX_TABLE_CLASS(TCurrentParametersTable, true)
    TParametersTable& choices() { return choices_; }
    const TParametersTable& choices() const { return choices_; }

private:
    TParametersTable choices_;
};

} // namespace quobrix
