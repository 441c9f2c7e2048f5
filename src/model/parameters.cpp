#include "model/parameters.h"

#include "model/trip_log.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace quobrix {
namespace {

struct Parameter {
    SourceText name;
    int width;
    double factor, offset, storingFactor;
};

constexpr Parameter kParameters[] = {
    {SourceText(), 1, 0.0, 0.0, 0.0},
#define PARAMETER(Id, Name, Width, Factor, Offset, StoringFactor)                                                      \
    {SourceText(Name), Width, Factor, Offset, StoringFactor},
#include "model/parameters.def"
#undef PARAMETER
};
static_assert(std::size(kParameters) == kParameterCount + 1);

const Parameter& parameterOf(std::int32_t id) { return kParameters[id >= 1 && id <= kParameterCount ? id : 0]; }

/// Rounded to nearest: what is in range is above 0, so that cutting off does it.
std::uint16_t rawOf(const Parameter& p, double metric) {
    if (p.factor == 0.0 || !std::isfinite(metric))
        return 0;
    const double raw = std::clamp(metric * p.storingFactor - p.offset + 0.5, 0.0, p.width == 1 ? 255.0 : 65535.0);
    return static_cast<std::uint16_t>(raw);
}

} // namespace

SourceText parameterName(std::int32_t parameter) { return parameterOf(parameter).name; }

ShownText parameterChoiceName(std::int32_t parameter) {
    return text(parameter == kNoParameter                 ? kNoParameterName
                : parameter == kFuelSystemStatusParameter ? kFuelSystemStatusName
                                                          : parameterName(parameter));
}

int parameterWidth(std::int32_t parameter) { return parameterOf(parameter).width; }

double metricFromRaw(std::int32_t parameter, std::uint16_t raw) {
    const Parameter& p = parameterOf(parameter);
    return (raw + p.offset) * p.factor;
}

std::uint16_t rawFromMetric(std::int32_t parameter, double metric) { return rawOf(parameterOf(parameter), metric); }

double baseFromMetric(std::int32_t parameter, double metric) {
    return toBaseFrom(loggerUnitOfParameter(parameter), metric);
}

std::string ParameterColumn::selection(std::int32_t code) const {
    return code == kNoParameter ? std::string() : std::string(parameterChoiceName(code));
}

std::vector<Selection> ParameterColumn::selections() const {
    std::vector<Selection> all;
    for (std::int32_t code = 1; code <= kParameterCount; ++code)
        all.push_back({code, selection(code)});
    return all;
}

SampledSeries::SampledSeries(std::int32_t parameter, std::int32_t interval, bool twoValues,
                             const std::vector<double>& metric)
    : parameter_(parameter), interval_(std::max(interval, 1)), twoValues_(twoValues), raw_(metric.size()),
      present_((metric.size() + 7) / 8) {
    const Parameter& p = parameterOf(parameter);
    for (std::size_t i = 0; i < metric.size(); ++i) {
        const bool has = hasValue(metric[i]);
        raw_[i] = has ? rawOf(p, metric[i]) : 0;
        present_[i / 8] = static_cast<std::uint8_t>(present_[i / 8] | (unsigned{has} << i % 8));
    }
}

double SampledSeries::metric(std::size_t sample) const {
    return has(sample) ? metricFromRaw(parameter_, raw_[sample]) : kNoValue;
}

bool SampledSeries::agreesWith(const SampledSeries& other) const {
    const std::size_t common = std::min(size(), other.size());
    if (common == 0)
        return true;
    if (parameter_ != other.parameter_ || interval_ != other.interval_ || twoValues_ != other.twoValues_ ||
        std::memcmp(raw_.data(), other.raw_.data(), common * sizeof raw_[0]) != 0 ||
        std::memcmp(present_.data(), other.present_.data(), common / 8) != 0)
        return false;
    const unsigned rest = (1u << common % 8) - 1; // bits of the byte in which the shorter one ends
    return rest == 0 || ((present_[common / 8] ^ other.present_[common / 8]) & rest) == 0;
}

void ParameterSeriesColumn::setSeries(SampledSeries series) {
    series_ = std::move(series);
    setModified();
}

double ParameterSeriesColumn::base(std::size_t sample) const {
    return series_.has(sample) ? baseFromMetric(series_.parameter(), series_.metric(sample)) : kNoValue;
}

ShownText ParameterSeriesColumn::name() const {
    const ShownText name = quobrix::text(parameterName(series_.parameter()));
    return series_.twoValues() ? quobrix::text(TextId::SeriesOfTwoValues, name) : name;
}

std::size_t ParameterSeriesColumn::sampleAt(RowIndex row) const {
    const auto* samples = dynamic_cast<const TTripLogSampleTable*>(table());
    const std::uint64_t second = row * (samples ? samples->speed().interval() : 1ull);
    const auto interval = static_cast<std::uint32_t>(series_.interval());
    return second % interval != 0
               ? series_.size()
               : static_cast<std::size_t>(std::min<std::uint64_t>(second / interval, series_.size()));
}

Value ParameterSeriesColumn::sampleValue(std::size_t sample) const {
    return series_.has(sample) ? Value(base(sample)) : Value();
}

std::string_view ParameterSeriesColumn::sampleText(std::size_t sample, const TextContext& context,
                                                   TextBuffer& buffer) const {
    if (series_.parameter() != kFuelSystemStatusParameter) {
        const double shown = series_.has(sample) ? base(sample) : baseFromMetric(series_.parameter(), 0);
        return context.units.formatValueWithUnits(unitTypeOfParameter(series_.parameter()), shown, buffer.figure);
    }
    if (!series_.has(sample))
        return {};
    const std::uint16_t status = series_.raw(sample);
    buffer.words = fuelSystemStatusCode(static_cast<std::uint8_t>(status & 0xFF));
    if (series_.twoValues())
        buffer.words.append(" / ").append(fuelSystemStatusCode(static_cast<std::uint8_t>(status >> 8)));
    return buffer.words;
}

Value ParameterSeriesColumn::value(RowIndex row) const {
    const std::size_t sample = sampleAt(row);
    return sample < series_.size() ? sampleValue(sample) : Value();
}

std::string_view ParameterSeriesColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const std::size_t sample = sampleAt(row);
    return sample < series_.size() ? sampleText(sample, context, buffer) : "";
}

void SampledSeries::write(ByteWriter& out) const {
    out.i32(parameter_);
    out.u8(twoValues_);
    out.i32(interval_);
    out.u32(static_cast<std::uint32_t>(raw_.size()));
    for (const std::uint16_t raw : raw_)
        if (parameterWidth(parameter_) == 1)
            out.u8(static_cast<std::uint8_t>(raw));
        else
            out.u16(raw);
    for (const std::uint8_t bits : present_)
        out.u8(bits);
}

bool SampledSeries::read(ByteReader& in) {
    parameter_ = in.i32();
    twoValues_ = in.u8() != 0;
    interval_ = in.i32();
    const int width = parameterWidth(parameter_);
    const std::uint32_t count = in.count(static_cast<std::size_t>(width));
    if (!in.complete() || interval_ <= 0)
        return false;
    raw_.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i)
        raw_.push_back(width == 1 ? in.u8() : in.u16());
    const ByteView present = in.bytes((count + 7) / 8);
    if (!in.complete())
        return false;
    present_.assign(present.begin(), present.end());
    if (count % 8 != 0)
        present_.back() = static_cast<std::uint8_t>(present_.back() & ((1u << count % 8) - 1));
    return true;
}

std::string_view fuelSystemStatusCode(std::uint8_t status) {
    switch (status) {
    case 2:
        return "C";
    case 4:
        return "O";
    case 8:
        return "O (SF)";
    case 16:
        return "C (OF)";
    default:
        return "O (U)";
    }
}

} // namespace quobrix
