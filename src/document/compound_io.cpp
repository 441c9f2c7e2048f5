#include "document/compound_io.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::size_t kAhead = 128 * 1024; ///< read at once where reading is sequential
constexpr std::size_t kAlone = 4 * 1024;   ///< elsewhere: a disk page
constexpr std::size_t kWriteBuffer = 1024 * 1024;

} // namespace

Result<void> ReadCache::read(File& file, std::uint64_t fileSize, std::uint64_t offset, std::span<std::uint8_t> out) {
    ++clock_;
    if (out.size() >= kAhead)
        return file.readAt(offset, out);
    Window* chosen = &windows_[0];
    bool follows = false;
    for (Window& window : windows_) {
        const std::uint64_t end = window.offset + window.bytes.size();
        if (offset >= window.offset && offset + out.size() <= end) {
            std::copy_n(window.bytes.begin() + static_cast<std::ptrdiff_t>(offset - window.offset), out.size(),
                        out.begin());
            window.lastUse = clock_;
            return {};
        }
        // The window that this read goes on from serves it best; else the one longest unused.
        const bool goesOn = !window.bytes.empty() && offset >= window.offset && offset < end + kAhead;
        if (goesOn ? !follows : !follows && window.lastUse < chosen->lastUse)
            chosen = &window;
        follows = follows || goesOn;
    }
    if (offset + out.size() > fileSize)
        return file.readAt(offset, out); // says itself what is missing
    const std::uint64_t ahead = std::max(out.size(), follows ? kAhead : kAlone);
    Bytes bytes = std::move(chosen->bytes);
    bytes.resize(static_cast<std::size_t>(std::min(ahead, fileSize - offset)));
    if (auto done = file.readAt(offset, bytes); !done) {
        *chosen = {};
        return done;
    }
    std::copy_n(bytes.begin(), out.size(), out.begin());
    *chosen = {offset, std::move(bytes), clock_};
    return {};
}

void ReadCache::clear() { windows_ = {}; }

void WriteBatch::add(std::uint32_t sector, const Sector& content) {
    owned_.push_back(std::make_unique<Sector>(content));
    add(sector, ByteView(*owned_.back()));
}

Result<void> WriteBatch::write(File& file) {
    std::sort(pieces_.begin(), pieces_.end(), [](const Piece& a, const Piece& b) { return a.sector < b.sector; });
    Bytes buffer;
    buffer.reserve(std::min(kWriteBuffer, pieces_.size() * kSectorSize));
    std::uint32_t start = 0;
    const auto sectorsIn = [&] { return static_cast<std::uint32_t>(buffer.size() / kSectorSize); };
    for (const Piece& piece : pieces_) {
        if (!buffer.empty() && (piece.sector != start + sectorsIn() || buffer.size() >= kWriteBuffer)) {
            QUOBRIX_TRY(file.writeAt(sectorOffset(start), buffer));
            buffer.clear();
        }
        if (buffer.empty())
            start = piece.sector;
        buffer.insert(buffer.end(), piece.content.begin(), piece.content.end());
        buffer.resize(unitsOf(buffer.size(), kSectorSize) * kSectorSize);
    }
    if (!buffer.empty())
        QUOBRIX_TRY(file.writeAt(sectorOffset(start), buffer));
    return {};
}

} // namespace quobrix::cfb
