#pragma once

#include "tables/columns.h"
#include "texts/source_text.h"
#include "units/unit_catalogue.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// Sampled engine parameters, identifiers 1 to 24. Any other identifier has no name, converts to 0 and stores as 0.
inline constexpr int kParameterCount = 24;
/// The one parameter that is a pair of codes instead of a figure: the status of fuel systems 1 and 2.
inline constexpr std::int32_t kFuelSystemStatusParameter = 11;

inline constexpr std::int32_t kAirFlowParameter = 7; ///< g/s

inline constexpr SourceText kFuelSystemStatusName("Fuel System Status"); ///< of choices and series

/// "Engine Speed"; empty for 11 and for unknown identifiers.
SourceText parameterName(std::int32_t parameter);
/// What is chosen where nothing is to be recorded.
inline constexpr std::int32_t kNoParameter = 0;
inline constexpr SourceText kNoParameterName("Not Selected");
/// The same among choices: every parameter, and that for nothing, has a name there.
ShownText parameterChoiceName(std::int32_t parameter);
/// Bytes that a stored sample takes: 1 or 2.
int parameterWidth(std::int32_t parameter);
/// The metric value (km/h, rpm, %, °C, kPa, g/s, °, V) of a stored raw value.
double metricFromRaw(std::int32_t parameter, std::uint16_t raw);
/// The raw value of a metric one, rounded to nearest and clamped to the width's range. The conversions of storing are
/// constants of their own (v × 2.55 + 0.5, …), not the inverse of the reading ones, so that files stay comparable.
std::uint16_t rawFromMetric(std::int32_t parameter, double metric);
/// The base value (m/s, Hz, K, Pa, kg/s, rad, V, percent) of a metric one.
double baseFromMetric(std::int32_t parameter, double metric);

/// What a logger has sampled of one parameter, as it is stored: raw samples at an interval of its own, and which of
/// them have no value. Stream: i32 parameter, u8 flag, i32 interval (s), u32 count, the samples (1 or 2 bytes each),
/// then one bit per sample, lowest first, set where there is a value. A series that records nothing has parameter 0 and
/// no samples.
class SampledSeries {
public:
    SampledSeries() = default;
    /// METRIC samples (kNoValue: none) at 0, 1, 2 … INTERVAL (s; at least 1) from the start.
    SampledSeries(std::int32_t parameter, std::int32_t interval, bool twoValues, const std::vector<double>& metric);

    /// 0: nothing is recorded.
    std::int32_t parameter() const { return parameter_; }
    /// s between samples
    std::int32_t interval() const { return interval_; }
    /// Each sample carries two values, such as the status of fuel systems 1 and 2.
    bool twoValues() const { return twoValues_; }
    std::size_t size() const { return raw_.size(); }
    std::uint16_t raw(std::size_t sample) const { return raw_[sample]; }
    bool has(std::size_t sample) const { return (present_[sample / 8] >> sample % 8) & 1; }
    /// The sample's metric value, or kNoValue.
    double metric(std::size_t sample) const;

    /// Both record the same alike, and the samples of the shorter one are the beginning of the other's. A series
    /// without samples is the beginning of any.
    bool agreesWith(const SampledSeries& other) const;

    void write(ByteWriter& out) const;
    bool read(ByteReader& in);

private:
    std::int32_t parameter_ = 0;
    std::int32_t interval_ = 1;
    bool twoValues_ = false;
    std::vector<std::uint16_t> raw_;
    std::vector<std::uint8_t> present_; ///< a bit a sample, lowest first, set where there is a value; the rest is 0
};

/// One parameter series of a trip.
class ParameterSeriesColumn : public Column {
public:
    /// Codes are no figures.
    ColumnKind kind() const override {
        return parameter() == kFuelSystemStatusParameter ? ColumnKind::Selection : ColumnKind::Real;
    }
    UnitTypeId unitOf(RowIndex) const override { return unitTypeOfParameter(parameter()); }

    const SampledSeries& series() const { return series_; }
    void setSeries(SampledSeries series);

    std::int32_t parameter() const { return series_.parameter(); }
    bool twoValues() const { return series_.twoValues(); }
    std::int32_t interval() const { return series_.interval(); }
    std::size_t sampleCount() const { return series_.size(); }
    double metric(std::size_t sample) const { return series_.metric(sample); }
    /// The sample's base value, or kNoValue.
    double base(std::size_t sample) const;
    /// "Engine Speed", or with " 1 / 2" behind it.
    ShownText name() const;

    /// The sample in base units; nothing where there is none.
    Value sampleValue(std::size_t sample) const;
    /// The sample as the user reads it. One without a value reads as zero of the loggers' unit does (0 °C), which it
    /// has always done; codes of the fuel systems' status, the second one only where there are two, are empty then.
    std::string_view sampleText(std::size_t sample, const TextContext& context, TextBuffer& buffer) const;

    /// As rows of the sample table: the sample taken at the row's elapsed time; nothing at rows between samples.
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

    void write(ByteWriter& out) const override { series_.write(out); }
    bool read(ByteReader& in, std::uint8_t) override { return series_.read(in); }

private:
    /// Index of the sample at ROW; the series' size if none was taken then.
    std::size_t sampleAt(RowIndex row) const;

    SampledSeries series_;
};

/// A parameter identifier, shown by name.
class ParameterColumn : public SelectionColumn {
public:
    std::vector<Selection> selections() const override;

protected:
    std::string selection(std::int32_t code) const override;
};

/// How a fuel system status byte stands in the tables of a trip.
std::string_view fuelSystemStatusCode(std::uint8_t status);

} // namespace quobrix
