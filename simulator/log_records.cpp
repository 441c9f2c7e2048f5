#include "simulator/log_records.h"

#include "simulator/fault.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace quobrix::sim {

namespace {

constexpr std::size_t kHeadSize = 1 + 4; // kind, length
constexpr std::size_t kMaximumVin = 17;

Error corrupt(std::string detail) { return fault(ErrorKind::Corrupt, std::move(detail)); }

// Numbers of seven bits a byte, the lowest first; the highest bit says that more follow.
void putVarint(ByteWriter& out, std::uint64_t value) {
    for (; value >= 0x80; value >>= 7)
        out.u8(static_cast<std::uint8_t>(value | 0x80));
    out.u8(static_cast<std::uint8_t>(value));
}

std::uint64_t varint(ByteReader& in) {
    std::uint64_t value = 0;
    for (int shift = 0; shift < 64; shift += 7) {
        const std::uint8_t byte = in.u8();
        value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
        if (byte < 0x80)
            return value;
    }
    in.fail();
    return 0;
}

// Engine figures have few decimals, so most series fit into thousandths: each sample is 0 for no value, else one more
// than the zigzag code of its difference from the sample before. A series that does not fit is kept as doubles.
enum SeriesForm : std::uint8_t { Thousandths = 0, Doubles = 1 };
constexpr double kLargestThousandths = 1e12;

std::optional<std::int64_t> thousandths(double value) {
    if (!(std::fabs(value) < kLargestThousandths / 1000) || (value == 0 && std::signbit(value)))
        return std::nullopt;
    const std::int64_t scaled = std::llround(value * 1000);
    if (static_cast<double>(scaled) / 1000 != value)
        return std::nullopt;
    return scaled;
}

void putSamples(ByteWriter& out, const std::vector<double>& samples) {
    putVarint(out, samples.size());
    const bool small = std::all_of(samples.begin(), samples.end(),
                                   [](double value) { return !hasValue(value) || thousandths(value).has_value(); });
    out.u8(small ? Thousandths : Doubles);
    std::int64_t previous = 0;
    for (const double value : samples) {
        if (!small) {
            out.f64(value);
        } else if (!hasValue(value)) {
            putVarint(out, 0);
        } else {
            const std::int64_t scaled = *thousandths(value);
            const std::int64_t difference = scaled - previous;
            previous = scaled;
            putVarint(out, 1 + ((static_cast<std::uint64_t>(difference) << 1) ^
                                static_cast<std::uint64_t>(difference >> 63)));
        }
    }
}

std::vector<double> samples(ByteReader& in) {
    const std::uint64_t count = varint(in);
    const std::uint8_t form = in.u8();
    if (form > Doubles || count > in.remaining() / (form == Doubles ? 8 : 1)) {
        in.fail();
        return {};
    }
    std::vector<double> values(static_cast<std::size_t>(count));
    std::int64_t previous = 0;
    for (double& value : values) {
        if (form == Doubles) {
            value = in.f64();
            continue;
        }
        const std::uint64_t coded = varint(in);
        if (coded == 0) {
            value = kNoValue;
            continue;
        }
        const std::uint64_t zigzag = coded - 1;
        const std::uint64_t difference = (zigzag >> 1) ^ (0 - (zigzag & 1));
        previous = static_cast<std::int64_t>(static_cast<std::uint64_t>(previous) + difference);
        value = static_cast<double>(previous) / 1000;
    }
    return values;
}

// One description of each record's content serves writing and reading: every field is passed to both in turn.
struct Writer {
    ByteWriter& out;

    void operator()(const std::string& text) {
        out.u8(static_cast<std::uint8_t>(text.size()));
        out.bytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    void operator()(bool value) { out.u8(value ? 1 : 0); }
    void operator()(std::int32_t value) { out.i32(value); }
    void operator()(std::uint32_t value) { out.u32(value); }
    void operator()(double value) { out.f64(value); }
    template <class T, std::size_t N>
    void operator()(const std::array<T, N>& values) {
        for (const T& value : values)
            (*this)(value);
    }
    void operator()(const std::vector<std::uint8_t>& values) {
        putVarint(out, values.size());
        out.bytes(values);
    }
    void operator()(const std::vector<std::uint32_t>& times) {
        putVarint(out, times.size());
        for (const std::uint32_t time : times)
            putVarint(out, time);
    }
    void operator()(const Series& series) {
        out.u8(static_cast<std::uint8_t>(series.parameter));
        if (series.parameter == 0)
            return;
        out.i32(series.interval);
        out.u8(series.twoValues ? 1 : 0);
        putSamples(out, series.samples);
    }
};

struct Reader {
    ByteReader& in;

    void operator()(std::string& text) {
        const std::size_t size = in.u8();
        if (size > kMaximumVin)
            in.fail();
        const ByteView view = in.bytes(size);
        text.assign(view.begin(), view.end());
        if (!std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; }))
            in.fail();
    }
    void operator()(bool& value) {
        const std::uint8_t byte = in.u8();
        if (byte > 1)
            in.fail();
        value = byte == 1;
    }
    void operator()(std::int32_t& value) { value = in.i32(); }
    void operator()(std::uint32_t& value) { value = in.u32(); }
    void operator()(double& value) { value = in.f64(); }
    template <class T, std::size_t N>
    void operator()(std::array<T, N>& values) {
        for (T& value : values)
            (*this)(value);
    }
    void operator()(std::vector<std::uint8_t>& values) {
        const std::uint64_t count = varint(in);
        // What is more than there is must not become less by being made shorter.
        const ByteView view = in.bytes(static_cast<std::size_t>(std::min<std::uint64_t>(count, in.remaining() + 1)));
        values.assign(view.begin(), view.end());
    }
    void operator()(std::vector<std::uint32_t>& times) {
        const std::uint64_t count = varint(in);
        if (count > in.remaining()) {
            in.fail();
            return;
        }
        times.resize(static_cast<std::size_t>(count));
        for (std::uint32_t& time : times) {
            const std::uint64_t value = varint(in);
            time = static_cast<std::uint32_t>(value);
            if (time != value)
                in.fail();
        }
    }
    void operator()(Series& series) {
        series.parameter = in.u8();
        if (series.parameter == 0)
            return;
        series.interval = in.i32();
        (*this)(series.twoValues);
        series.samples = samples(in);
        if (series.parameter > 24 || series.interval < 1)
            in.fail();
    }
};

template <class Archive>
void fields(Archive archive, auto& record) {
    using Record = std::remove_const_t<std::remove_reference_t<decltype(record)>>;
    const auto all = [&archive](auto&... field) { (archive(field), ...); };
    auto& r = record;
    if constexpr (std::is_same_v<Record, Trip>)
        all(r.vin, r.driver, r.start, r.end, r.disconnected, r.distance, r.maximumSpeed, r.threshold, r.bandLimit,
            r.idleSeconds, r.bandSeconds, r.speedInterval, r.speeds, r.events, r.series);
    else if constexpr (std::is_same_v<Record, Trouble>)
        all(r.vin, r.time, r.code, r.fuelSystem, r.load, r.coolant, r.shortTrim, r.longTrim, r.fuelPressure,
            r.manifoldPressure, r.engineSpeed, r.vehicleSpeed);
    else if constexpr (std::is_same_v<Record, Activity>)
        all(r.vin, r.time, r.event);
    else
        all(r.vin, r.start, r.standstill, r.maximumSpeed, r.bandLimit, r.interval, r.speeds);
}

template <class Record>
Result<LogRecord> readContent(ByteView content) {
    ByteReader in(content);
    Record record;
    fields(Reader{in}, record);
    if constexpr (std::is_same_v<Record, Trouble>) {
        if (record.code.size() != 5)
            in.fail();
    }
    if (!in.finished())
        return corrupt("a record of the logger's memory is damaged");
    return LogRecord(std::move(record));
}

} // namespace

void writeRecord(ByteWriter& out, const LogRecord& record) {
    ByteWriter content;
    std::visit(
        [&](const auto& r) {
            fields(Writer{content}, r);
            out.u8(static_cast<std::uint8_t>(r.kKind));
        },
        record);
    out.u32(static_cast<std::uint32_t>(content.view().size()));
    out.bytes(content.view());
}

Result<std::vector<EncodedRecord>> splitRecords(ByteView memory) {
    std::vector<EncodedRecord> records;
    for (std::size_t position = 0; position < memory.size();) {
        ByteReader in(memory.subspan(position));
        const std::uint8_t kind = in.u8();
        const std::uint32_t size = in.u32();
        in.bytes(size);
        if (!in.complete() || kind < static_cast<std::uint8_t>(RecordKind::Trip) ||
            kind > static_cast<std::uint8_t>(RecordKind::Stop))
            return corrupt("the logger's memory is damaged");
        records.push_back({static_cast<RecordKind>(kind), memory.subspan(position, kHeadSize + size)});
        position += kHeadSize + size;
    }
    return records;
}

Result<LogRecord> readRecord(const EncodedRecord& record) {
    const ByteView content = record.bytes.subspan(kHeadSize);
    switch (record.kind) {
    case RecordKind::Trip:
        return readContent<Trip>(content);
    case RecordKind::Trouble:
        return readContent<Trouble>(content);
    case RecordKind::Activity:
        return readContent<Activity>(content);
    case RecordKind::Stop:
        return readContent<Stop>(content);
    }
    return corrupt("a record of an unknown kind");
}

} // namespace quobrix::sim
