#include "compound/format.h"

#include "texts/text.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::array<std::uint8_t, 8> kSignature = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

// Byte offsets within the header.
constexpr std::uint32_t kMinorVersion = 24;
constexpr std::uint32_t kMajorVersion = 26;
constexpr std::uint32_t kByteOrder = 28;
constexpr std::uint32_t kSectorShift = 30;
constexpr std::uint32_t kMiniSectorShift = 32;
constexpr std::uint32_t kFatPages = 44;
constexpr std::uint32_t kFirstDirectory = 48;
constexpr std::uint32_t kTransaction = 52;
constexpr std::uint32_t kCutoff = 56;
constexpr std::uint32_t kFirstMiniFat = 60;
constexpr std::uint32_t kMiniFatPages = 64;
constexpr std::uint32_t kFirstDifat = 68;
constexpr std::uint32_t kDifatPages = 72;
constexpr std::uint32_t kDifat = 76;
static_assert(kDifat + kFatPagesInHeader * 4 == kSectorSize);

} // namespace

Result<Header> Header::decode(ByteView bytes) {
    if (bytes.size() < kSignature.size() || !std::equal(kSignature.begin(), kSignature.end(), bytes.begin()))
        return Error{ErrorKind::NotADocument, text(TextId::NoCompoundFileSignature)};
    if (bytes.size() < kSectorSize)
        return Error{ErrorKind::Corrupt, text(TextId::TheHeaderIsCutShort)};
    const std::uint8_t* at = bytes.data();
    if (load16(at + kByteOrder) != 0xFFFE)
        return Error{ErrorKind::Corrupt, text(TextId::HeaderByteOrder)};
    if (load16(at + kMajorVersion) != 3 || load16(at + kSectorShift) != 9)
        return Error{ErrorKind::Unsupported, text(TextId::CompoundFileVersion, load16(at + kMajorVersion))};
    if (load16(at + kMiniSectorShift) != 6 || load32(at + kCutoff) != kMiniCutoff)
        return Error{ErrorKind::Corrupt, text(TextId::HeaderMiniStreamFigures)};
    Header header;
    header.fatPages = load32(at + kFatPages);
    header.firstDirectorySector = load32(at + kFirstDirectory);
    header.transaction = load32(at + kTransaction);
    header.firstMiniFatSector = load32(at + kFirstMiniFat);
    header.miniFatPages = load32(at + kMiniFatPages);
    header.firstDifatSector = load32(at + kFirstDifat);
    header.difatPages = load32(at + kDifatPages);
    for (std::uint32_t i = 0; i < kFatPagesInHeader; ++i)
        header.fatSectors[i] = load32(at + kDifat + 4 * i);
    return header;
}

Sector Header::encode(const Sector& base) const {
    Sector sector = base;
    std::uint8_t* at = sector.data();
    store32(at + kFatPages, fatPages);
    store32(at + kFirstDirectory, firstDirectorySector);
    store32(at + kTransaction, transaction);
    store32(at + kFirstMiniFat, firstMiniFatSector);
    store32(at + kMiniFatPages, miniFatPages);
    store32(at + kFirstDifat, firstDifatSector);
    store32(at + kDifatPages, difatPages);
    for (std::uint32_t i = 0; i < kFatPagesInHeader; ++i)
        store32(at + kDifat + 4 * i, fatSectors[i]);
    return sector;
}

Sector newHeader() {
    Sector sector{};
    std::copy(kSignature.begin(), kSignature.end(), sector.begin());
    std::uint8_t* at = sector.data();
    store16(at + kMinorVersion, 0x3E);
    store16(at + kMajorVersion, 3);
    store16(at + kByteOrder, 0xFFFE);
    store16(at + kSectorShift, 9);
    store16(at + kMiniSectorShift, 6);
    store32(at + kCutoff, kMiniCutoff);
    return sector;
}

} // namespace quobrix::cfb
