#include "simulator/commands.h"

#include <cmath>
#include <fmt/format.h>
#include <iterator>

namespace quobrix::sim {

namespace {

/// Writes JSON, commas and all. Figures without a value, and those that JSON cannot hold, are null.
class Json {
public:
    void open(char bracket) {
        separate();
        text_ += bracket;
        first_ = true;
    }
    void close(char bracket) {
        text_ += bracket;
        first_ = false;
    }
    void key(std::string_view name) {
        value(name);
        text_ += ':';
        first_ = true;
    }

    void value(bool flag) { raw(flag ? "true" : "false"); }
    void value(double figure) {
        if (hasValue(figure) && std::isfinite(figure))
            raw(fmt::format("{}", figure));
        else
            raw("null");
    }
    template <std::integral T>
    void value(T number) {
        raw(fmt::format("{}", number));
    }
    void value(std::string_view text) {
        separate();
        text_ += '"';
        for (const char c : text) {
            if (c == '"' || c == '\\')
                text_ += '\\';
            text_ += c; // all texts of a logger are printable ASCII
        }
        text_ += '"';
    }
    void value(const std::string& text) { value(std::string_view(text)); }
    void value(const char* text) { value(std::string_view(text)); }
    template <class Range>
    requires std::ranges::range<Range> &&(!std::convertible_to<Range, std::string_view>)void value(const Range& range) {
        open('[');
        for (const auto& element : range)
            value(element);
        close(']');
    }
    void value(const Series& series) {
        open('{');
        field("parameter", series.parameter);
        field("interval", series.interval);
        field("twoValues", series.twoValues);
        field("samples", series.samples);
        close('}');
    }

    template <class T>
    void field(std::string_view name, const T& content) {
        key(name);
        value(content);
    }

    std::string take() { return std::move(text_); }

private:
    void separate() {
        if (!first_)
            text_ += ',';
        first_ = false;
    }
    void raw(std::string_view text) {
        separate();
        text_ += text;
    }

    std::string text_;
    bool first_ = true;
};

/// A status code of the fuel system, or null.
void codeField(Json& json, std::string_view name, std::int32_t code) {
    if (code == kNoCode)
        json.field(name, kNoValue);
    else
        json.field(name, code);
}

void write(Json& json, const Trip& trip) {
    json.field("vin", trip.vin);
    json.field("driver", trip.driver);
    json.field("start", trip.start);
    json.field("end", trip.end);
    json.field("disconnected", trip.disconnected);
    json.field("distance", trip.distance);
    json.field("maximumSpeed", trip.maximumSpeed);
    json.field("thresholds", trip.threshold);
    json.field("bandLimits", trip.bandLimit);
    json.field("idleSeconds", trip.idleSeconds);
    json.field("bandSeconds", trip.bandSeconds);
    json.field("hardBrakes", trip.events[HardBrake]);
    json.field("extremeBrakes", trip.events[ExtremeBrake]);
    json.field("hardAccelerations", trip.events[HardAcceleration]);
    json.field("extremeAccelerations", trip.events[ExtremeAcceleration]);
    json.field("speedInterval", trip.speedInterval);
    json.field("speeds", trip.speeds);
    json.key("series");
    json.open('[');
    for (const Series& series : trip.series)
        if (series.parameter != 0)
            json.value(series);
    json.close(']');
}

void write(Json& json, const Trouble& trouble) {
    json.field("vin", trouble.vin);
    json.field("time", trouble.time);
    json.field("code", trouble.code);
    codeField(json, "fuelSystem1", trouble.fuelSystem[0]);
    codeField(json, "fuelSystem2", trouble.fuelSystem[1]);
    json.field("load", trouble.load);
    json.field("coolant", trouble.coolant);
    json.field("shortTrims", trouble.shortTrim);
    json.field("longTrims", trouble.longTrim);
    json.field("fuelPressure", trouble.fuelPressure);
    json.field("manifoldPressure", trouble.manifoldPressure);
    json.field("engineSpeed", trouble.engineSpeed);
    json.field("vehicleSpeed", trouble.vehicleSpeed);
}

void write(Json& json, const Activity& activity) {
    json.field("vin", activity.vin);
    json.field("time", activity.time);
    codeField(json, "event", activity.event);
}

void write(Json& json, const Stop& stop) {
    json.field("vin", stop.vin);
    json.field("start", stop.start);
    json.field("standstill", stop.standstill);
    json.field("maximumSpeed", stop.maximumSpeed);
    json.field("bandLimits", stop.bandLimit);
    json.field("interval", stop.interval);
    json.field("speeds", stop.speeds);
}

void write(Json& json, const Configuration& configuration) {
    json.field("bandLimitsMph", configuration.bandLimit);
    json.field("thresholds", configuration.threshold);
    json.field("parameterCodes", configuration.parameter);
    json.field("intervalCodes", configuration.interval);
}

template <class Record>
Result<void> writeAll(Json& json, std::string_view name, const std::vector<EncodedRecord>& records) {
    json.key(name);
    json.open('[');
    for (const EncodedRecord& encoded : records) {
        if (encoded.kind != Record::kKind)
            continue;
        const auto record = readRecord(encoded);
        if (!record)
            return record.error();
        json.open('{');
        write(json, std::get<Record>(*record));
        json.close('}');
    }
    json.close(']');
    return {};
}

} // namespace

Result<std::string> dumpJson(const PortStore& store, const std::string& port) {
    const auto opened = store.read(port, Memories::Read);
    if (!opened)
        return opened.error();
    Json json;
    json.open('{');
    json.field("port", port);
    json.field("attached", opened->logger() != nullptr);
    if (const Logger* logger = opened->logger()) {
        json.field("serial", logger->serial);
        json.field("product", logger->product);
        json.field("firmware", logger->firmware);
        json.field("bootware", logger->bootware);
        json.field("hardware", logger->hardware);
        json.key("configuration");
        json.open('{');
        write(json, logger->configuration);
        json.close('}');
        json.field("flags", logger->flags);
        json.field("clockOffset", logger->clockOffset);
        json.field("led", logger->ledEnabled);
        json.field("vinMode", logger->vinModeEnabled);
        json.field("armed", logger->armed);
        json.field("beepVolume", logger->beepVolume);
        json.field("carType", logger->carType);
        json.field("capacity", logger->capacity);
        json.field("used", logger->memory.size());
        const auto records = splitRecords(logger->memory);
        if (!records)
            return records.error();
        QUOBRIX_TRY(writeAll<Trip>(json, "trips", *records));
        QUOBRIX_TRY(writeAll<Trouble>(json, "troubles", *records));
        QUOBRIX_TRY(writeAll<Activity>(json, "activity", *records));
        QUOBRIX_TRY(writeAll<Stop>(json, "stops", *records));
    }
    json.close('}');
    return json.take();
}

} // namespace quobrix::sim
