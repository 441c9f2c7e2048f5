#include "simulator/logger.h"

#include "simulator/fault.h"
#include "simulator/platform.h"
#include "simulator/serial_number.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace quobrix::sim {

namespace {

// Mode 01 identifiers of SAE J1979, but for battery voltage; by parameter identifier, from 1.
constexpr std::uint8_t kParameterCodes[] = {0x0D, 0x0C, 0x11, 0x05, 0x04, 0x0B, 0x10, 0x0F, 0x0E, 0x0A, 0x03, 0x06,
                                            0x08, 0x07, 0x09, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0xE1};

struct Interval {
    std::int32_t seconds;
    std::int32_t code;
};
constexpr Interval kIntervals[] = {{1, 32}, {5, 1}, {10, 2}, {20, 4}, {30, 8}, {60, 16}};

constexpr std::string_view kVinModeProducts[] = {"4731", "4751", "4755", "4771", "4775", "4756", "4776"};

/// Passes every kept value to ARCHIVE in the order of the file.
template <class Archive, class L>
void loggerFields(Archive archive, L& logger) {
    const auto all = [&archive](auto&... field) { (archive(field), ...); };
    auto& configuration = logger.configuration;
    all(logger.serial, logger.product, logger.firmware, logger.bootware, logger.hardware);
    all(configuration.bandLimit, configuration.threshold, configuration.parameter, configuration.interval);
    all(logger.flags, logger.clockOffset, logger.ledEnabled, logger.vinModeEnabled, logger.armed, logger.logsDownloads);
    all(logger.beepVolume, logger.carType, logger.capacity, logger.vin);
}

struct FieldWriter {
    ByteWriter& out;
    void operator()(const std::string& text) { out.text(text); }
    void operator()(bool value) { out.u8(value ? 1 : 0); }
    void operator()(std::uint8_t value) { out.u8(value); }
    void operator()(std::int32_t value) { out.i32(value); }
    void operator()(std::uint32_t value) { out.u32(value); }
    void operator()(std::int64_t value) { out.u64(static_cast<std::uint64_t>(value)); }
    void operator()(double value) { out.f64(value); }
    template <class T, std::size_t N>
    void operator()(const std::array<T, N>& values) {
        for (const T& value : values)
            (*this)(value);
    }
};

struct FieldReader {
    ByteReader& in;
    void operator()(std::string& text) { text = in.text(); }
    void operator()(bool& value) { value = in.u8() != 0; }
    void operator()(std::uint8_t& value) { value = in.u8(); }
    void operator()(std::int32_t& value) { value = in.i32(); }
    void operator()(std::uint32_t& value) { value = in.u32(); }
    void operator()(std::int64_t& value) { value = static_cast<std::int64_t>(in.u64()); }
    void operator()(double& value) { value = in.f64(); }
    template <class T, std::size_t N>
    void operator()(std::array<T, N>& values) {
        for (T& value : values)
            (*this)(value);
    }
};

bool isPlainText(std::string_view text, std::size_t maximumSize) {
    return text.size() <= maximumSize &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

} // namespace

std::array<double, 3> Configuration::bandLimitKmh() const {
    return {bandLimit[0] * kKilometresPerMile, bandLimit[1] * kKilometresPerMile, bandLimit[2] * kKilometresPerMile};
}

std::int32_t parameterOfCode(std::int32_t code) {
    const auto found = std::find(std::begin(kParameterCodes), std::end(kParameterCodes), code);
    return found == std::end(kParameterCodes) ? 0 : static_cast<std::int32_t>(found - std::begin(kParameterCodes)) + 1;
}

std::int32_t codeOfParameter(std::int32_t parameter) {
    return parameter < 1 || parameter > std::ssize(kParameterCodes) ? kNotSelected : kParameterCodes[parameter - 1];
}

std::int32_t secondsOfIntervalCode(std::int32_t code) {
    const auto found = std::find_if(std::begin(kIntervals), std::end(kIntervals),
                                    [code](const Interval& interval) { return interval.code == code; });
    return found == std::end(kIntervals) ? 60 : found->seconds;
}

std::int32_t intervalCodeOfSeconds(std::int32_t seconds) {
    const auto found = std::find_if(std::begin(kIntervals), std::end(kIntervals),
                                    [seconds](const Interval& interval) { return interval.seconds == seconds; });
    return found == std::end(kIntervals) ? 16 : found->code;
}

std::int32_t Logger::time() const {
    const std::int64_t now = computerTime() + clockOffset;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(now, 0, std::numeric_limits<std::int32_t>::max()));
}

bool Logger::hasVinMode() const {
    return std::any_of(std::begin(kVinModeProducts), std::end(kVinModeProducts),
                       [this](std::string_view family) { return product.find(family) != std::string::npos; });
}

Result<void> Logger::remember(const LogRecord& record) {
    ByteWriter out;
    writeRecord(out, record);
    if (memory.size() + out.view().size() > capacity)
        return fault(ErrorKind::DiskFull, "the logger's memory is full");
    memory.insert(memory.end(), out.view().begin(), out.view().end());
    return {};
}

void Logger::rememberEvent(std::int32_t event) { (void)remember(Activity{vin, time(), event}); }

Result<void> Logger::forget(bool stopsOnly) {
    if (!stopsOnly) {
        memory.clear();
        return {};
    }
    const auto records = splitRecords(memory);
    if (!records)
        return records.error();
    Bytes kept;
    for (const EncodedRecord& record : *records)
        if (record.kind != RecordKind::Stop)
            kept.insert(kept.end(), record.bytes.begin(), record.bytes.end());
    memory = std::move(kept);
    return {};
}

void Logger::configure(const Configuration& wanted) {
    const Configuration before = std::exchange(configuration, wanted);
    const auto& was = before.threshold;
    const auto& is = wanted.threshold;
    const std::pair<bool, ActivityEvent> changes[] = {
        {before.bandLimit != wanted.bandLimit, kSpeedBandsAltered},
        {was[HardBrake] != is[HardBrake] || was[ExtremeBrake] != is[ExtremeBrake], kBrakingAltered},
        {was[HardAcceleration] != is[HardAcceleration] || was[ExtremeAcceleration] != is[ExtremeAcceleration],
         kAccelerationAltered},
        {before.parameter != wanted.parameter, kParametersAltered},
        {before.interval != wanted.interval, kIntervalsAltered},
    };
    for (const auto& [changed, event] : changes)
        if (changed)
            rememberEvent(event);
}

void writeLogger(ByteWriter& out, const Logger& logger) { loggerFields(FieldWriter{out}, logger); }

Logger readLogger(ByteReader& in) {
    Logger logger;
    loggerFields(FieldReader{in}, logger);
    const auto finite = [](double value) { return std::isfinite(value); };
    const Configuration& configuration = logger.configuration;
    if (!serialToNumber(logger.serial) || !isPlainText(logger.product, 63) || !isPlainText(logger.vin, 17) ||
        !std::all_of(configuration.bandLimit.begin(), configuration.bandLimit.end(), finite) ||
        !std::all_of(configuration.threshold.begin(), configuration.threshold.end(), finite))
        in.fail();
    return logger;
}

} // namespace quobrix::sim
