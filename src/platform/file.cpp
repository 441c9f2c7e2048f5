#include "platform/file.h"

namespace quobrix {

Result<void> File::gatherAt(std::uint64_t offset, std::span<const ByteView> pieces) {
    constexpr std::size_t kBuffer = 256 * 1024; // stays in the processor's cache
    Bytes buffer;
    const auto empty = [&]() -> Result<void> {
        if (!buffer.empty())
            QUOBRIX_TRY(writeAt(offset, buffer));
        offset += buffer.size();
        buffer.clear();
        return {};
    };
    for (const ByteView piece : pieces) {
        if (buffer.size() + piece.size() > kBuffer)
            QUOBRIX_TRY(empty());
        if (piece.size() >= kBuffer) {
            QUOBRIX_TRY(writeAt(offset, piece));
            offset += piece.size();
        } else {
            buffer.insert(buffer.end(), piece.begin(), piece.end());
        }
    }
    return empty();
}

} // namespace quobrix
