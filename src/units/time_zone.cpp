#include "units/time_zone.h"

#include "texts/text.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <string>

namespace quobrix {
namespace {

constexpr int kMaxOffset = 26 * 3600; // RFC 8536 wants -25 to 26 hours

/// A big-endian number of WIDTH bytes, sign-extended.
std::int64_t bigEndian(ByteReader& in, std::size_t width) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : in.bytes(width))
        value = value << 8 | byte;
    return width == 4 ? static_cast<std::int32_t>(value) : static_cast<std::int64_t>(value);
}

/// The counts of a TZif header (RFC 8536, section 3.1).
struct ZoneHeader {
    int version = 0;
    std::size_t utcMarks = 0, standardMarks = 0, leaps = 0, times = 0, types = 0, characters = 0;

    /// Bytes of the data block that follows, with times of WIDTH bytes.
    std::size_t blockSize(std::size_t width) const {
        return times * (width + 1) + types * 6 + characters + leaps * (width + 4) + standardMarks + utcMarks;
    }
};

std::optional<ZoneHeader> readHeader(ByteReader& in) {
    const ByteView magic = in.bytes(4);
    if (!std::ranges::equal(magic, std::string_view("TZif")))
        return {};
    ZoneHeader header;
    const int version = in.u8();
    header.version = version == 0 ? 1 : version - '0';
    in.bytes(15);
    for (std::size_t* count :
         {&header.utcMarks, &header.standardMarks, &header.leaps, &header.times, &header.types, &header.characters})
        *count = static_cast<std::uint32_t>(bigEndian(in, 4));
    return header;
}

} // namespace

Result<TimeZone> TimeZone::parse(ByteView bytes) {
    ByteReader in(bytes);
    std::optional<ZoneHeader> header = readHeader(in);
    if (!header)
        return Error{ErrorKind::NotADocument, text(TextId::NotATimeZoneFile)};
    std::size_t width = 4;
    if (header->version >= 2) { // the first block is for old readers only; a second one has 64-bit times
        in.bytes(header->blockSize(4));
        header = readHeader(in);
        width = 8;
    }
    const Error corrupt{ErrorKind::Corrupt, text(TextId::DamagedTimeZoneFile)};
    if (!header || !in.complete() || header->blockSize(width) > in.remaining() || header->types == 0)
        return corrupt;
    if (header->leaps != 0)
        return Error{ErrorKind::Unsupported, text(TextId::TimeZoneFileWithLeapSeconds)};

    TimeZone zone;
    std::vector<std::int64_t> times(header->times);
    for (std::int64_t& time : times)
        time = bigEndian(in, width);
    const ByteView typeOfTime = in.bytes(header->times);
    std::vector<int> offsets;
    for (std::size_t i = 0; i < header->types; ++i) {
        offsets.push_back(static_cast<int>(bigEndian(in, 4)));
        in.bytes(2); // daylight mark and abbreviation
        if (offsets.back() < -kMaxOffset || offsets.back() > kMaxOffset)
            return corrupt;
    }
    zone.firstOffset_ = offsets.front();
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (typeOfTime[i] >= offsets.size() || (i > 0 && times[i] <= times[i - 1]))
            return corrupt;
        zone.transitions_.push_back({times[i], offsets[typeOfTime[i]]});
    }
    in.bytes(header->characters + header->standardMarks + header->utcMarks);

    if (header->version >= 2 && in.u8() == '\n') { // the footer: a rule between two line ends, possibly empty
        const ByteView rest = in.bytes(in.remaining());
        const auto end = std::ranges::find(rest, '\n');
        if (end == rest.end())
            return corrupt;
        const std::string text(rest.begin(), end);
        zone.rule_ = ZoneRule::parse(text);
        if (!zone.rule_ && !text.empty())
            return corrupt;
    }
    if (!in.complete())
        return corrupt;
    return zone;
}

Result<TimeZone> TimeZone::named(std::string_view name) {
    if (Result<TimeZone> zone = ofSystem(name))
        return zone;
    if (std::optional<ZoneRule> rule = ZoneRule::parse(name)) {
        TimeZone zone;
        zone.firstOffset_ = rule->standardOffset;
        zone.rule_ = *rule;
        return zone;
    }
    return Error{ErrorKind::NotFound, text(TextId::TimeZoneNamed, name)};
}

int TimeZone::offsetAt(std::int64_t utc) const {
    const auto after = std::ranges::upper_bound(transitions_, utc, {}, &Transition::at);
    if (after == transitions_.end() && rule_)
        return rule_->offsetAt(utc);
    return after == transitions_.begin() ? firstOffset_ : std::prev(after)->offset;
}

DateTime TimeZone::toLocal(std::int32_t utc) const { return fieldsFromSeconds(std::int64_t{utc} + offsetAt(utc)); }

std::int32_t TimeZone::toUtc(const DateTime& local) const {
    const std::int64_t wall = secondsFromFields(local);
    // A zone changes at most once within any two days, so one of the offsets a day before and after is in force.
    const int before = offsetAt(wall - kSecondsPerDay);
    const int after = offsetAt(wall + kSecondsPerDay);
    std::int64_t utc = wall - before;
    if (offsetAt(utc) != before && offsetAt(wall - after) == after)
        utc = wall - after;
    constexpr std::int64_t low = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t high = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(utc, low, high));
}

std::int32_t currentTime() {
    using namespace std::chrono;
    return static_cast<std::int32_t>(duration_cast<seconds>(system_clock::now().time_since_epoch()).count());
}

} // namespace quobrix
