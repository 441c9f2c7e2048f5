#include "model/sample_columns.h"

#include "units/date_time.h"
#include "units/unit_system.h"

#include <optional>

namespace quobrix {
namespace {

/// Which of COUNT samples, INTERVAL s apart, was taken at TIME (s).
std::optional<std::size_t> sampleAt(std::int64_t time, std::int64_t interval, std::size_t count) {
    const auto sample = static_cast<std::size_t>(time / interval);
    return time % interval == 0 && sample < count ? std::optional(sample) : std::nullopt;
}

} // namespace

std::string_view SampleNumberColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return context.units.formatInteger(static_cast<std::int64_t>(row) + 1, buffer.figure);
}

std::string_view SampleTimeColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return durationText(timeAt(row), buffer.figure);
}

Value SpeedAtTimesColumn::value(RowIndex row) const {
    const auto sample = sampleAt(timeAt(row), speeds_.interval(), speeds_.values().size());
    return sample ? speeds_.value(*sample) : Value();
}

std::string_view SpeedAtTimesColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const auto sample = sampleAt(timeAt(row), speeds_.interval(), speeds_.values().size());
    return sample ? speeds_.textView(*sample, context, buffer) : "";
}

Value SeriesAtTimesColumn::value(RowIndex row) const {
    const auto sample = sampleAt(timeAt(row), series_.interval(), series_.sampleCount());
    return sample ? series_.sampleValue(*sample) : Value();
}

std::string_view SeriesAtTimesColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const auto sample = sampleAt(timeAt(row), series_.interval(), series_.sampleCount());
    return sample ? series_.sampleText(*sample, context, buffer) : "";
}

} // namespace quobrix
