#pragma once

#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"

namespace quobrix {

/// What makes a record the same one when it is downloaded again, together with its logger and its code or event: its
/// time as the logger recorded it (before any shift of clocks), and its number among records that are equal in all
/// that.
struct RecordIdentity {
    std::int32_t loggerTime = 0; ///< s since 1970-01-01 00:00 UTC by the logger's clock
    std::uint32_t occurrence = 0;
    bool operator==(const RecordIdentity&) const = default;
};

template <>
struct Element<RecordIdentity> {
    static constexpr std::size_t kSize = 8;
    static constexpr RecordIdentity kNone{};
    static bool isNone(const RecordIdentity&) { return false; }
    static void write(ByteWriter& out, const RecordIdentity& v) {
        out.i32(v.loggerTime);
        out.u32(v.occurrence);
    }
    static RecordIdentity read(ByteReader& in) {
        const std::int32_t time = in.i32();
        return {time, in.u32()};
    }
};

/// The record number: the record's ordinal in its log, from 1. Keeps the record's identity beside it.
class RecordColumn : public ArrayColumn<RecordIdentity> {
public:
    ColumnKind kind() const override { return ColumnKind::Integer; }
    Value value(RowIndex row) const override { return static_cast<std::int64_t>(row) + 1; }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
};

/// Holds a VIN, shows the vehicle's name ("Unknown" without one).
class VehicleColumn : public TextColumn {
public:
    std::string namedKey(RowIndex row) const override { return at(row); }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    std::optional<CellSource> sourceOf(RowIndex row) const override;
};

/// Holds a logger's serial number, shows the logger's name ("Unknown" without one).
class LoggerColumn : public TextColumn {
public:
    bool correctable() const override { return false; }
    std::string namedKey(RowIndex row) const override { return at(row); }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    std::optional<CellSource> sourceOf(RowIndex row) const override;
};

/// Holds a driver's identification number (none: no driver was identified), shows the driver's name ("Unknown" without
/// one).
class DriverColumn : public IntegerColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Selection; }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    /// The number in decimal digits; empty if there is none.
    std::string namedKey(RowIndex row) const override;
    std::optional<CellSource> sourceOf(RowIndex row) const override;
};

/// A speed in m/s as a sample holds it: in whole km/h of 0 to 255, halves upward.
std::uint8_t speedSample(double speed);

/// Speeds as the logger samples them: whole km/h, a byte each, at a fixed interval. Stream: u32 interval (s), then as
/// ArrayColumn.
class SpeedSamplesColumn : public ArrayColumn<std::uint8_t> {
public:
    ColumnKind kind() const override { return ColumnKind::Real; }
    /// m/s
    double speed(RowIndex row) const;
    Value value(RowIndex row) const override { return speed(row); }
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    void setValue(RowIndex row, const Value& value) override;

    /// s between samples
    std::uint32_t interval() const { return interval_; }
    void setInterval(std::uint32_t seconds);

    void write(ByteWriter& out) const override;
    bool read(ByteReader& in, std::uint8_t schema) override;

private:
    std::uint32_t interval_ = 1;
};

} // namespace quobrix
