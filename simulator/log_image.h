#pragma once

#include "simulator/log_records.h"

#include <string>

namespace quobrix::sim {

/// CRC-32 as in ISO 3309 (reflected polynomial 0xEDB88320), of BYTES.
std::uint32_t checksum(ByteView bytes);

/// The image of a logger's logs that a download hands over and an export keeps in a file:
///   8 bytes  "QBXLOG" and the format's version in two digits
///   u32      bytes of the payload
///   u32      checksum of the payload
///   payload  8 bytes serial number, then the records as the memory holds them
struct LogImage {
    std::string serial;
    ByteView records;
};

inline constexpr std::size_t kImageHeadSize = 8 + 4 + 4;

/// The whole image's size by its head, or 0 if these are not the first kImageHeadSize bytes of an image.
std::size_t imageSize(ByteView head);
/// The image of RECORDS, each encoded, in their order; SERIAL is a valid serial number.
Bytes makeImage(const std::string& serial, const std::vector<ByteView>& records);
/// Views into BYTES. ErrorKind::NotADocument if it is no image, Corrupt if it is damaged or cut off.
Result<LogImage> openImage(ByteView bytes);

} // namespace quobrix::sim
