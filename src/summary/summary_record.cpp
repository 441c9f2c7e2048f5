#include "summary/summary_record.h"

#include <algorithm>
#include <bit>
#include <type_traits>

namespace quobrix {
namespace {

/// Where each value lies: VISIT(offset, value). All other bytes are 0.
template <class Record, class Visit>
void forEachField(Record& r, const Visit& visit) {
    visit(0, r.loggerName);
    visit(20, r.vin);
    visit(40, r.vehicleName);
    visit(60, r.logger);
    visit(80, r.driverName);
    visit(100, r.driver);
    visit(120, r.start);
    visit(124, r.end);
    visit(128, r.fuel);
    visit(132, r.topBandTime);
    visit(136, r.idleTime);
    for (std::size_t i = 0; i < r.bandTimes.size(); ++i)
        visit(140 + 4 * i, r.bandTimes[i]);
    visit(152, r.largestDeceleration);
    visit(156, r.largestAcceleration);
    visit(160, r.distance);
    visit(164, r.averageSpeed);
    visit(168, r.topSpeed);
    for (std::size_t i = 0; i < r.events.size(); ++i) {
        visit(172 + 8 * i, r.events[i].count);
        visit(176 + 8 * i, r.events[i].last);
    }
    for (std::size_t i = 0; i < r.parameters.size(); ++i) {
        auto& slot = r.parameters[i];
        visit(204 + i, slot.used);
        visit(209 + i, slot.parameter);
        visit(216 + 8 * i, slot.threshold);
        visit(256 + 8 * i, slot.highest);
        visit(296 + 4 * i, slot.timeOver);
        visit(320 + 8 * i, slot.lowest);
        visit(360 + 4 * i, slot.timeUnder);
    }
    visit(214, r.mark);
    visit(316, r.samplesSum);
    visit(380, r.trips);
    visit(384, r.troubles);
    visit(388, r.accidents);
    visit(392, r.samples);
    visit(404, r.recordedStart);
}

/// The unsigned number of as many bytes.
template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 1, std::uint8_t,
                                  std::conditional_t<sizeof(T) == 2, std::uint16_t,
                                                     std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;

template <class T>
void readField(ByteView bytes, T& value) {
    BitsOf<T> bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bits = static_cast<BitsOf<T>>(bits | BitsOf<T>(bytes[i]) << (8 * i));
    value = std::bit_cast<T>(bits);
}
void readField(ByteView bytes, SummaryText& text) { text = SummaryText::fromBytes(bytes.first(SummaryText::kWidth)); }

template <class T>
void writeField(std::uint8_t* to, const T& value) {
    const auto bits = std::bit_cast<BitsOf<T>>(value);
    for (std::size_t i = 0; i < sizeof(T); ++i)
        to[i] = static_cast<std::uint8_t>(bits >> (8 * i));
}
void writeField(std::uint8_t* to, const SummaryText& text) { std::ranges::copy(text.view(), to); }

} // namespace

SummaryText::SummaryText(std::string_view text) {
    if (text.empty())
        text = kUnknown;
    std::size_t length = std::min(text.size(), kWidth - 1);
    if (length < text.size())
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0u) == 0x80u)
            --length;
    std::ranges::copy(text.substr(0, length), bytes_.begin());
}

SummaryText SummaryText::fromBytes(ByteView bytes) {
    SummaryText text;
    text.bytes_.fill(0);
    for (std::size_t i = 0; i + 1 < kWidth && bytes[i] != 0; ++i)
        text.bytes_[i] = static_cast<char>(bytes[i]);
    return text;
}

SummaryRecord readSummaryRecord(ByteView bytes) {
    SummaryRecord record;
    forEachField(record, [&](std::size_t offset, auto& value) { readField(bytes.subspan(offset), value); });
    return record;
}

Bytes summaryBytes(const SummaryRecord& record) {
    Bytes bytes(SummaryRecord::kSize);
    forEachField(record, [&](std::size_t offset, const auto& value) { writeField(&bytes[offset], value); });
    return bytes;
}

Bytes upgradedSummary(ByteView bytes) {
    constexpr std::size_t kDefined = 380; // both layouts lie alike up to there
    Bytes upgraded(bytes.begin(), bytes.begin() + kDefined);
    upgraded.resize(SummaryRecord::kSize);
    std::fill_n(upgraded.begin() + 214, 2, std::uint8_t(0)); // whatever lies there is not our mark
    std::fill_n(upgraded.begin() + 316, 4, std::uint8_t(0));
    return upgraded;
}

} // namespace quobrix
