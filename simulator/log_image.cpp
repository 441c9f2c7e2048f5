#include "simulator/log_image.h"

#include "simulator/fault.h"
#include "simulator/serial_number.h"

#include <algorithm>
#include <string_view>

namespace quobrix::sim {

namespace {

constexpr std::string_view kImageMagic = "QBXLOG01";
constexpr std::size_t kSerialSize = 8;

constexpr std::array<std::uint32_t, 256> kCrcTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ (value & 1 ? 0xEDB88320u : 0u);
        table[i] = value;
    }
    return table;
}();

std::string textOf(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

ByteView bytesOf(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

} // namespace

std::uint32_t checksum(ByteView bytes) {
    std::uint32_t crc = 0xFFFFFFFFu;
    for (const std::uint8_t byte : bytes)
        crc = (crc >> 8) ^ kCrcTable[(crc ^ byte) & 0xFF];
    return ~crc;
}

std::size_t imageSize(ByteView head) {
    ByteReader in(head);
    const bool known = textOf(in.bytes(kImageMagic.size())) == kImageMagic;
    const std::size_t payload = in.u32();
    return known && in.complete() ? kImageHeadSize + payload : 0;
}

Bytes makeImage(const std::string& serial, const std::vector<ByteView>& records) {
    Bytes payload(serial.begin(), serial.end());
    std::size_t size = payload.size();
    for (const ByteView record : records)
        size += record.size();
    payload.reserve(size);
    for (const ByteView record : records)
        payload.insert(payload.end(), record.begin(), record.end());
    ByteWriter out;
    out.bytes(bytesOf(kImageMagic));
    out.u32(static_cast<std::uint32_t>(payload.size()));
    out.u32(checksum(payload));
    out.bytes(payload);
    return out.take();
}

Result<LogImage> openImage(ByteView bytes) {
    const std::size_t size = imageSize(bytes);
    if (size == 0)
        return fault(ErrorKind::NotADocument, "not a log image");
    ByteReader in(bytes);
    in.bytes(kImageMagic.size());
    in.u32();
    const std::uint32_t sum = in.u32();
    const ByteView payload = in.bytes(in.remaining());
    if (size != bytes.size() || checksum(payload) != sum || payload.size() < kSerialSize)
        return fault(ErrorKind::Corrupt, "the log image is damaged");
    LogImage image{textOf(payload.first(kSerialSize)), payload.subspan(kSerialSize)};
    if (!serialToNumber(image.serial))
        return fault(ErrorKind::Corrupt, "the log image's serial number is damaged");
    return image;
}

} // namespace quobrix::sim
