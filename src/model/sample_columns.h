#pragma once

#include "model/log_columns.h"
#include "model/parameters.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quobrix {

/// The elapsed times (s) of the rows of a table that is made to be shown, one after the other.
using SampleTimes = std::shared_ptr<const std::vector<std::int64_t>>;

/// A column of such a table. It belongs to no document, computes its cells, and has as many rows as there are times.
/// What it computes them from must outlive it.
class ShownSampleColumn : public DerivedColumn {
public:
    ShownSampleColumn(const ColumnSpec& spec, SampleTimes times) : spec_(spec), times_(std::move(times)) {}

    const ColumnSpec& spec() const override { return spec_; }
    std::size_t storedRows() const override { return times_->size(); }

protected:
    std::int64_t timeAt(RowIndex row) const { return (*times_)[row]; }

private:
    const ColumnSpec& spec_;
    SampleTimes times_;
};

/// Counts the rows from 1.
class SampleNumberColumn final : public ShownSampleColumn {
public:
    using ShownSampleColumn::ShownSampleColumn;
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override { return static_cast<std::int64_t>(row) + 1; }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// The times themselves, as HH:MM:SS.
class SampleTimeColumn final : public ShownSampleColumn {
public:
    using ShownSampleColumn::ShownSampleColumn;
    ColumnKind kind() const override { return ColumnKind::Integer; }
    bool isElapsedTime() const override { return true; }
    Value value(RowIndex row) const override { return timeAt(row); }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// The speed samples that were taken at the times; nothing in between, and nothing behind the last one.
class SpeedAtTimesColumn final : public ShownSampleColumn {
public:
    SpeedAtTimesColumn(const SpeedSamplesColumn& speeds, SampleTimes times)
        : ShownSampleColumn(speeds.spec(), std::move(times)), speeds_(speeds) {}
    ColumnKind kind() const override { return ColumnKind::Real; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    const SpeedSamplesColumn& speeds_;
};

/// The same of a parameter series.
class SeriesAtTimesColumn final : public ShownSampleColumn {
public:
    SeriesAtTimesColumn(const ParameterSeriesColumn& series, SampleTimes times)
        : ShownSampleColumn(series.spec(), std::move(times)), series_(series) {}
    ColumnKind kind() const override { return series_.kind(); }
    UnitTypeId unitOf(RowIndex row) const override { return series_.unitOf(row); }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    const ParameterSeriesColumn& series_;
};

} // namespace quobrix
