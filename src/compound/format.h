#pragma once

#include "base/bytes.h"
#include "base/result.h"

#include <array>
#include <cstdint>

/// The on-disk figures of MS-CFB, major version 3 ([MS-CFB] 2.1 to 2.6). All integers are little-endian.
namespace quobrix::cfb {

inline constexpr std::uint32_t kSectorSize = 512;
inline constexpr std::uint32_t kMiniSectorSize = 64;
inline constexpr std::uint32_t kMiniSectorsPerPage = kSectorSize / kMiniSectorSize;
/// Streams shorter than this lie in the mini stream.
inline constexpr std::uint32_t kMiniCutoff = 4096;
/// How many 32-bit numbers a page of an allocation table or a DIFAT sector holds.
inline constexpr std::uint32_t kMarksPerPage = kSectorSize / 4;
/// The last number of a DIFAT sector leads to the next one.
inline constexpr std::uint32_t kFatPagesPerDifat = kMarksPerPage - 1;
inline constexpr std::uint32_t kFatPagesInHeader = 109;
/// Version 3 addresses 2 GB: the header and this many sectors.
inline constexpr std::uint32_t kMostSectors = (1u << 31) / kSectorSize - 1;
inline constexpr std::uint32_t kMostMiniSectors = kMostSectors * kMiniSectorsPerPage;

/// What stands in an allocation table instead of the next sector's number.
inline constexpr std::uint32_t kDifatSector = 0xFFFFFFFC;
inline constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
inline constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
inline constexpr std::uint32_t kFreeSector = 0xFFFFFFFF;
/// Reserved by the format and never written: how the program marks what it could not read.
inline constexpr std::uint32_t kUnknownSector = 0xFFFFFFFB;

/// A link of a directory entry that leads nowhere.
inline constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

using Sector = std::array<std::uint8_t, kSectorSize>;

inline std::uint16_t load16(const std::uint8_t* from) { return static_cast<std::uint16_t>(from[0] | from[1] << 8); }
inline std::uint32_t load32(const std::uint8_t* from) {
    return from[0] | std::uint32_t{from[1]} << 8 | std::uint32_t{from[2]} << 16 | std::uint32_t{from[3]} << 24;
}
inline void store16(std::uint8_t* to, std::uint16_t value) {
    to[0] = static_cast<std::uint8_t>(value);
    to[1] = static_cast<std::uint8_t>(value >> 8);
}
inline void store32(std::uint8_t* to, std::uint32_t value) {
    store16(to, static_cast<std::uint16_t>(value));
    store16(to + 2, static_cast<std::uint16_t>(value >> 16));
}

/// Where sector NUMBER begins in the file (bytes): the header takes the place of one.
constexpr std::uint64_t sectorOffset(std::uint32_t number) { return (std::uint64_t{number} + 1) * kSectorSize; }
/// Whole units of SIZE that COUNT things fill or begin to fill.
template <class Integer>
constexpr Integer unitsOf(Integer count, std::uint32_t size) {
    return static_cast<Integer>(count / size + (count % size != 0 ? 1 : 0)); // the usual sum could overflow
}

/// The fields of the header that change from save to save; everything else of a foreign header is kept as it was.
struct Header {
    std::uint32_t fatPages = 0;
    std::uint32_t firstDirectorySector = kEndOfChain;
    /// Goes up by one with each commit, as the format wants it of programs with transactions.
    std::uint32_t transaction = 0;
    std::uint32_t firstMiniFatSector = kEndOfChain;
    std::uint32_t miniFatPages = 0;
    std::uint32_t firstDifatSector = kEndOfChain;
    std::uint32_t difatPages = 0;
    std::array<std::uint32_t, kFatPagesInHeader> fatSectors{};

    /// NotADocument without the signature, Unsupported for other sector sizes, Corrupt if cut short.
    static Result<Header> decode(ByteView bytes);
    /// Over BASE, a header of the same file or newHeader().
    Sector encode(const Sector& base) const;
};

/// The constant fields of a header, all others zero.
Sector newHeader();

/// Byte offsets within a directory entry.
inline constexpr std::uint32_t kEntrySize = 128;
inline constexpr std::uint32_t kEntriesPerPage = kSectorSize / kEntrySize;
namespace entry {
inline constexpr std::uint32_t kName = 0;       ///< 32 UTF-16 units, NUL-terminated
inline constexpr std::uint32_t kNameBytes = 64; ///< u16, terminator included
inline constexpr std::uint32_t kType = 66;
inline constexpr std::uint32_t kColour = 67;
inline constexpr std::uint32_t kLeft = 68;
inline constexpr std::uint32_t kRight = 72;
inline constexpr std::uint32_t kChild = 76;
inline constexpr std::uint32_t kAttributes = 80; ///< class id, state bits and times, up to kStart
inline constexpr std::uint32_t kStart = 116;
inline constexpr std::uint32_t kSize = 120; ///< u32; version 3 ignores the upper half that follows
} // namespace entry

enum class EntryType : std::uint8_t { Unused = 0, Storage = 1, Stream = 2, Root = 5 };
enum class Colour : std::uint8_t { Red = 0, Black = 1 };

} // namespace quobrix::cfb
