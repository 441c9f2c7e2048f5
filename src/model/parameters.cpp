#include "model/parameters.h"

#include "model/trip_log.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>

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

std::uint16_t rawFromMetric(std::int32_t parameter, double metric) {
    const Parameter& p = parameterOf(parameter);
    if (p.factor == 0.0 || !std::isfinite(metric))
        return 0;
    const double raw = std::trunc(metric * p.storingFactor - p.offset + 0.5);
    return static_cast<std::uint16_t>(std::clamp(raw, 0.0, p.width == 1 ? 255.0 : 65535.0));
}

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

void ParameterSeriesColumn::setSeries(std::int32_t parameter, bool twoValues, std::int32_t interval,
                                      const std::vector<double>& metric) {
    parameter_ = parameter;
    twoValues_ = twoValues;
    interval_ = interval;
    raw_.clear();
    present_.clear();
    for (const double value : metric) {
        raw_.push_back(hasValue(value) ? rawFromMetric(parameter, value) : 0);
        present_.push_back(hasValue(value));
    }
    setModified();
}

bool ParameterSeriesColumn::agreesWith(const ParameterSeriesColumn& other) const {
    const auto common = static_cast<std::ptrdiff_t>(std::min(raw_.size(), other.raw_.size()));
    return common == 0 ||
           (parameter_ == other.parameter_ && twoValues_ == other.twoValues_ && interval_ == other.interval_ &&
            std::equal(raw_.begin(), raw_.begin() + common, other.raw_.begin()) &&
            std::equal(present_.begin(), present_.begin() + common, other.present_.begin()));
}

double ParameterSeriesColumn::metric(std::size_t sample) const {
    return present_[sample] ? metricFromRaw(parameter_, raw_[sample]) : kNoValue;
}

double ParameterSeriesColumn::base(std::size_t sample) const {
    return present_[sample] ? baseFromMetric(parameter_, metricFromRaw(parameter_, raw_[sample])) : kNoValue;
}

ShownText ParameterSeriesColumn::name() const {
    const ShownText name = quobrix::text(parameterName(parameter_));
    return twoValues_ ? quobrix::text(TextId::SeriesOfTwoValues, name) : name;
}

std::size_t ParameterSeriesColumn::sampleAt(RowIndex row) const {
    const auto* samples = dynamic_cast<const TTripLogSampleTable*>(table());
    const std::uint64_t second = row * (samples ? samples->speed().interval() : 1ull);
    if (interval_ <= 0 || second % static_cast<std::uint32_t>(interval_) != 0)
        return raw_.size();
    return static_cast<std::size_t>(
        std::min<std::uint64_t>(second / static_cast<std::uint32_t>(interval_), raw_.size()));
}

Value ParameterSeriesColumn::value(RowIndex row) const {
    const std::size_t sample = sampleAt(row);
    return sample < raw_.size() && present_[sample] ? Value(base(sample)) : Value();
}

std::string_view ParameterSeriesColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const std::size_t sample = sampleAt(row);
    if (sample == raw_.size() || !present_[sample])
        return {};
    if (twoValues_ && parameter_ == kFuelSystemStatusParameter) {
        const std::uint16_t status = raw_[sample];
        buffer.words = fuelSystemStatusCode(static_cast<std::uint8_t>(status & 0xFF));
        buffer.words.append(" / ").append(fuelSystemStatusCode(static_cast<std::uint8_t>(status >> 8)));
        return buffer.words;
    }
    return context.units.formatValueWithUnits(unitTypeOfParameter(parameter_), base(sample), buffer.figure);
}

void ParameterSeriesColumn::write(ByteWriter& out) const {
    out.i32(parameter_);
    out.u8(twoValues_);
    out.i32(interval_);
    out.u32(static_cast<std::uint32_t>(raw_.size()));
    for (const std::uint16_t raw : raw_)
        if (parameterWidth(parameter_) == 1)
            out.u8(static_cast<std::uint8_t>(raw));
        else
            out.u16(raw);
    for (std::size_t i = 0; i < raw_.size(); i += 8) {
        std::uint8_t bits = 0;
        for (std::size_t bit = 0; bit < 8 && i + bit < raw_.size(); ++bit)
            bits = static_cast<std::uint8_t>(bits | (present_[i + bit] ? 1u << bit : 0u));
        out.u8(bits);
    }
}

bool ParameterSeriesColumn::read(ByteReader& in, std::uint8_t) {
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
    const ByteView bits = in.bytes((count + 7) / 8);
    if (!in.complete())
        return false;
    present_.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i)
        present_.push_back((bits[i / 8] >> (i % 8)) & 1);
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
