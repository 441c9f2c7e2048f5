#include "compound/io.h"

#include "texts/text.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::size_t kAhead = 32 * 1024; ///< read in one call where reading is sequential
constexpr std::size_t kAlone = 4 * 1024;  ///< elsewhere: a disk page

} // namespace

Result<void> ReadCache::read(File& file, std::uint64_t fileSize, std::uint64_t offset, std::size_t size, Bytes& out) {
    ++clock_;
    Window* chosen = &windows_[0];
    bool follows = false;
    for (Window& window : windows_) {
        const std::uint64_t end = window.offset + window.bytes.size();
        if (offset >= window.offset && offset + size <= end) {
            const std::uint8_t* first = window.bytes.data() + (offset - window.offset);
            out.insert(out.end(), first, first + size);
            window.lastUse = clock_;
            return {};
        }
        // The window that this read goes on from serves it best; else the one longest unused.
        const bool goesOn = !window.bytes.empty() && offset >= window.offset && offset < end + kAhead;
        if (goesOn ? !follows : !follows && window.lastUse < chosen->lastUse)
            chosen = &window;
        follows = follows || goesOn;
    }
    if (size >= kAhead || offset + size > fileSize) {
        // Longer than a window, or past the end, which the file tells itself.
        out.resize(out.size() + size);
        return file.readAt(offset, std::span(out).last(size));
    }
    Bytes bytes = std::move(chosen->bytes);
    bytes.resize(static_cast<std::size_t>(
        std::min<std::uint64_t>(std::max(size, follows ? kAhead : kAlone), fileSize - offset)));
    if (auto done = file.readAt(offset, bytes); !done) {
        *chosen = {};
        return done;
    }
    out.insert(out.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    *chosen = {offset, std::move(bytes), clock_};
    return {};
}

void ReadCache::clear() { windows_ = {}; }

Result<void> WatchedFile::readAt(std::uint64_t offset, std::span<std::uint8_t> out) {
    const auto changed = [] { return Error{ErrorKind::Changed, text(TextId::AnotherProgramHasChangedTheFile)}; };
    if (changed_)
        return changed();
    const Result<void> done = file_.readAt(offset, out);
    Bytes header(header_.size());
    const Result<void> compared = file_.readAt(0, header);
    if (!compared && compared.error().kind != ErrorKind::Corrupt) // which would be a file that has become shorter
        return compared;
    if (!compared || header != header_)
        changed_ = true;
    return changed_ ? changed() : done;
}

Error WatchedFile::refused() { return {ErrorKind::ReadOnly, text(TextId::AFileThatIsOnlyRead)}; }

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
    static constexpr Sector kZeros{};
    std::vector<ByteView> row;
    for (auto piece = pieces_.begin(); piece != pieces_.end();) {
        const std::uint32_t start = piece->sector;
        std::uint32_t end = start;
        for (row.clear(); piece != pieces_.end() && piece->sector == end; end = piece++->end()) {
            row.push_back(piece->content);
            if (const std::size_t unfilled =
                    (piece->end() - piece->sector) * std::size_t{kSectorSize} - piece->content.size();
                unfilled > 0)
                row.push_back(ByteView(kZeros).first(unfilled));
        }
        QUOBRIX_TRY(file.gatherAt(sectorOffset(start), row));
        end_ = sectorOffset(end);
    }
    return {};
}

} // namespace quobrix::cfb
