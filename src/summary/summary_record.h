#pragma once

#include "base/bytes.h"
#include "base/no_value.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace quobrix {

/// A text of a summary record: at most 19 bytes; "---" where nothing is known.
class SummaryText {
public:
    static constexpr std::size_t kWidth = 20; ///< in the file, with a zero byte at its end

    SummaryText() : SummaryText(std::string_view()) {}
    /// Cut before the character (UTF-8) that has no room.
    explicit SummaryText(std::string_view text);
    /// As it lies in a file, whose bytes may be any.
    static SummaryText fromBytes(ByteView bytes);

    /// As it was written; not UTF-8, perhaps, if by another program.
    std::string_view view() const { return bytes_.data(); }
    bool known() const { return view() != kUnknown && !view().empty(); }
    bool operator==(const SummaryText& other) const { return view() == other.view(); }

private:
    static constexpr std::string_view kUnknown = "---";
    std::array<char, kWidth> bytes_{};
};

/// What the summary database keeps of a trip. Base units; how it lies in the file is the table in summary_record.cpp.
struct SummaryRecord {
    static constexpr std::size_t kSize = 408;    ///< bytes in the file
    static constexpr std::size_t kOldSize = 384; ///< in files of version 1

    /// Events of one kind.
    struct Events {
        std::uint16_t count = 0;
        std::uint32_t last = 0; ///< s from the start of the trip to the last one
    };
    /// Hard and extreme brakes, hard and extreme accelerations.
    enum EventKind { HardBrakes, ExtremeBrakes, HardAccelerations, ExtremeAccelerations, kEventKinds };

    /// A parameter that is compared with a threshold.
    struct Slot {
        std::uint8_t used = 0;
        std::uint8_t parameter = 0; ///< 1 to 24
        double threshold = kNoValue;
        double highest = kNoValue;                 ///< above the threshold
        double lowest = kNoValue;                  ///< below it
        std::uint32_t timeOver = 0, timeUnder = 0; ///< s
    };
    static constexpr std::size_t kSlots = 5;
    static constexpr std::size_t kSpeedSlot = 4; ///< vehicle speed; those before are the trip's series

    /// Says that this program made the record, so that its fields mean what they mean here, and the trip is known
    /// again.
    static constexpr std::uint16_t kOurs = 0x5142;

    SummaryText loggerName, vin, vehicleName, logger, driverName, driver;
    std::int32_t start = 0, end = 0; ///< as shown, s since 1970-01-01 00:00 UTC
    float fuel = 0;                  ///< US gallons; 0: not known
    float topBandTime = 0, idleTime = 0;
    std::array<float, 3> bandTimes{};                       ///< s in the bands between
    float largestDeceleration = 0, largestAcceleration = 0; ///< m/s²
    float distance = 0;                                     ///< m
    float averageSpeed = 0, topSpeed = 0;                   ///< m/s
    std::array<Events, kEventKinds> events{};
    std::array<Slot, kSlots> parameters{};
    std::uint16_t mark = 0; ///< kOurs, or anything
    // Of our records only:
    std::uint32_t samplesSum = 0;              ///< CRC-32 of how the recorded speeds begin; 0: too few of them
    std::uint32_t trips = 0;                   ///< 1
    std::uint32_t troubles = 0, accidents = 0; ///< of the logger, within the trip
    std::uint32_t samples = 0;                 ///< of speed
    std::int32_t recordedStart = 0;            ///< by the logger's clock

    bool ours() const { return mark == kOurs; }
    std::int64_t duration() const { return std::int64_t(end) - start; } ///< s
};

/// BYTES: kSize. What a record is made of, and nothing else, comes back from writing it.
SummaryRecord readSummaryRecord(ByteView bytes);
Bytes summaryBytes(const SummaryRecord& record);

/// A record of version 1 (BYTES: kOldSize) as it lies in files of today: without what those did not define.
Bytes upgradedSummary(ByteView bytes);

} // namespace quobrix
