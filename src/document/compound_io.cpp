#include "document/compound_io.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::size_t kAhead = 128 * 1024;       ///< read at once where reading is sequential
constexpr std::size_t kAlone = 4 * 1024;         ///< elsewhere: a disk page
constexpr std::size_t kWriteBuffer = 256 * 1024; ///< gathers small pieces; stays in the processor's cache

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

void WriteBatch::add(std::uint32_t sector, ByteView content) {
    if (!pieces_.empty()) {
        // What lies side by side in memory and in the file is one piece.
        Piece& last = pieces_.back();
        if (last.end() == sector && last.content.size() % kSectorSize == 0 &&
            last.content.data() + last.content.size() == content.data()) {
            last.content = {last.content.data(), last.content.size() + content.size()};
            return;
        }
    }
    pieces_.push_back({sector, content});
}

void WriteBatch::add(std::uint32_t sector, const Sector& content) {
    owned_.push_back(std::make_unique<Sector>(content));
    pieces_.push_back({sector, ByteView(*owned_.back())});
}

Result<void> WriteBatch::write(File& file) {
    std::sort(pieces_.begin(), pieces_.end(), [](const Piece& a, const Piece& b) { return a.sector < b.sector; });
    Bytes buffer;
    buffer.reserve(std::min(kWriteBuffer, pieces_.size() * kSectorSize));
    std::uint32_t start = 0, end = 0;
    const auto empty = [&]() -> Result<void> {
        Result<void> done;
        if (!buffer.empty())
            done = file.writeAt(sectorOffset(start), buffer);
        buffer.clear();
        return done;
    };
    for (const Piece& piece : pieces_) {
        ByteView rest = piece.content;
        if (piece.sector != end || buffer.size() + rest.size() > kWriteBuffer)
            QUOBRIX_TRY(empty());
        if (buffer.empty())
            start = piece.sector;
        end = piece.end();
        end_ = sectorOffset(end);
        if (const std::size_t whole = rest.size() / kSectorSize; rest.size() > kWriteBuffer) {
            QUOBRIX_TRY(file.writeAt(sectorOffset(start), rest.first(whole * kSectorSize)));
            rest = rest.subspan(whole * kSectorSize);
            start += static_cast<std::uint32_t>(whole);
        }
        buffer.insert(buffer.end(), rest.begin(), rest.end());
        buffer.resize((end - start) * std::size_t{kSectorSize});
    }
    return empty();
}

} // namespace quobrix::cfb
