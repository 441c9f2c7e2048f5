#include "device/recovery_file.h"

#include "model/serial_number.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace quobrix {
namespace {

constexpr std::string_view kMagic = "Quobrix download";
constexpr std::uint32_t kVersion = 1;

/// FNV-1a of 64 bits.
std::uint64_t checkSum(ByteView bytes) {
    std::uint64_t hash = 0xcbf29ce484222325u;
    for (const std::uint8_t byte : bytes)
        hash = (hash ^ byte) * 0x100000001b3u;
    return hash;
}

template <class Blocks, class Visit>
void forEachSet(Blocks& blocks, Visit visit) {
    visit(blocks.trips);
    visit(blocks.troublesAndActivity);
    for (auto& log : blocks.accidents) {
        visit(log.stops);
        visit(log.samples);
    }
}

/// A set of SIZE bytes; its own head must say the same size.
RecordBlock readSet(ByteReader& in) {
    const ByteView bytes = in.bytes(in.count(1));
    if (bytes.empty())
        return nullptr;
    QuobrixRecordSet head{};
    if (bytes.size() >= sizeof head)
        std::memcpy(&head, bytes.data(), sizeof head);
    if (std::max<std::size_t>(head.size, sizeof head) != bytes.size()) {
        in.fail();
        return nullptr;
    }
    void* block = std::malloc(bytes.size());
    if (!block)
        throw std::bad_alloc();
    std::memcpy(block, bytes.data(), bytes.size());
    return RecordBlock(static_cast<QuobrixRecordSet*>(block));
}

} // namespace

Bytes recoveryBytes(const KeptDownload& download) {
    ByteWriter out;
    out.bytes({reinterpret_cast<const std::uint8_t*>(kMagic.data()), kMagic.size()});
    out.u32(kVersion);
    out.text(download.serialText);
    out.u64(static_cast<std::uint64_t>(download.time));
    out.i32(download.shift);
    forEachSet(download.blocks, [&](const RecordBlock& set) {
        const ByteView bytes = bytesOf(set);
        out.u32(static_cast<std::uint32_t>(bytes.size()));
        out.bytes(bytes);
    });
    out.u64(checkSum(out.view()));
    return out.take();
}

namespace {

/// Up to the serial number.
Result<std::string> readHead(ByteReader& in) {
    const ByteView magic = in.bytes(kMagic.size());
    if (!std::equal(magic.begin(), magic.end(), kMagic.begin(), kMagic.end()))
        return Error{ErrorKind::NotADocument, {}};
    if (in.u32() > kVersion)
        return Error{ErrorKind::Unsupported, {}};
    std::string serialText = in.text();
    if (!isSerialNumber(serialText))
        return Error{ErrorKind::Corrupt, {}};
    return serialText;
}

} // namespace

std::string recoverySerialText(ByteView head) {
    ByteReader in(head);
    const Result<std::string> serialText = readHead(in);
    return serialText ? *serialText : std::string();
}

Result<KeptDownload> readRecovery(ByteView bytes) {
    ByteReader in(bytes);
    Result<std::string> serialText = readHead(in);
    if (!serialText)
        return serialText.error();
    KeptDownload download;
    download.serialText = *std::move(serialText);
    download.time = static_cast<std::int64_t>(in.u64());
    download.shift = in.i32();
    forEachSet(download.blocks, [&](RecordBlock& set) { set = readSet(in); });
    const std::size_t summed = bytes.size() - in.remaining();
    const std::uint64_t sum = in.u64();
    if (!in.finished() || sum != checkSum(bytes.first(summed)))
        return Error{ErrorKind::Corrupt, {}};
    return download;
}

} // namespace quobrix
