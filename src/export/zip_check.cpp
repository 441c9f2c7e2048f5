#include "export/zip_check.h"

#include "platform/file_system.h"

#include <zlib.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace quobrix {
namespace {

// Of the archive's directory, as PKWARE's APPNOTE has it.
constexpr std::size_t kEndSize = 22, kEntrySize = 46, kHeaderSize = 30;
constexpr std::uint32_t kEndMark = 0x06054B50, kEntryMark = 0x02014B50, kHeaderMark = 0x04034B50;
constexpr std::uint16_t kDeflated = 8;

/// The beginning and the end of what a member holds.
struct Edges {
    std::string first, last;

    void add(std::string_view text) {
        constexpr std::size_t kEdge = 512;
        first += text.substr(0, kEdge - std::min(first.size(), kEdge));
        last += text.substr(text.size() - std::min(text.size(), kEdge));
        last.erase(0, last.size() - std::min(last.size(), kEdge));
    }
    /// "<?xml …?><name …> … </name>"
    bool wholeXml() const {
        const std::size_t root = first.find('<', first.find("?>"));
        if (root == std::string::npos)
            return false;
        const std::string name = first.substr(root + 1, first.find_first_of(" \n\t/>", root) - root - 1);
        return last.substr(0, last.find_last_not_of(" \r\n") + 1).ends_with("</" + name + ">");
    }
};

/// The member that begins at HEADER, of SIZE bytes as they are compressed.
bool isWhole(ByteView archive, std::size_t header, std::size_t size) {
    if (header + kHeaderSize > archive.size())
        return false;
    ByteReader in(archive.subspan(header, kHeaderSize));
    const std::uint32_t mark = in.u32();
    in.bytes(4);
    const std::uint16_t method = in.u16();
    in.bytes(16);
    const std::size_t begin = header + kHeaderSize + in.u16() + in.u16();
    if (mark != kHeaderMark || method != kDeflated || begin > archive.size() || size > archive.size() - begin ||
        size > std::numeric_limits<uInt>::max())
        return false;
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return false;
    stream.next_in = const_cast<Bytef*>(archive.data() + begin);
    stream.avail_in = static_cast<uInt>(size);
    Edges edges;
    std::array<char, 1 << 16> out;
    int state = Z_OK;
    while (state == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        state = inflate(&stream, Z_NO_FLUSH);
        edges.add({out.data(), out.size() - stream.avail_out});
    }
    inflateEnd(&stream);
    return state == Z_STREAM_END && edges.wholeXml();
}

} // namespace

bool zipOfWholeXml(const std::filesystem::path& file) {
    const Result<Bytes> read = readFile(file, std::numeric_limits<std::uint32_t>::max());
    if (!read || read->size() < kEndSize)
        return false;
    const ByteView archive(*read);
    ByteReader end(archive.last(kEndSize)); // without a comment
    if (end.u32() != kEndMark)
        return false;
    end.bytes(6);
    const std::uint16_t count = end.u16();
    end.u32();
    std::size_t at = end.u32();
    for (std::uint16_t i = 0; i < count; ++i) {
        if (at + kEntrySize > archive.size())
            return false;
        ByteReader entry(archive.subspan(at, kEntrySize));
        const std::uint32_t mark = entry.u32();
        entry.bytes(16);
        const std::uint32_t size = entry.u32();
        entry.u32();
        const std::size_t more = std::size_t{entry.u16()} + entry.u16() + entry.u16();
        entry.bytes(8);
        if (mark != kEntryMark || !isWhole(archive, entry.u32(), size))
            return false;
        at += kEntrySize + more;
    }
    return count > 0;
}

} // namespace quobrix
