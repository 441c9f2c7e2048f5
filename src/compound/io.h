#pragma once

#include "compound/format.h"
#include "platform/file.h"

#include <atomic>
#include <memory>
#include <vector>

namespace quobrix::cfb {

/// Reads a file's bytes through a few windows that run ahead of sequential reading. Streams that were written in a row
/// lie in a row (the mini stream's and the large ones separately), so reading them all needs few calls.
class ReadCache {
public:
    /// Adds SIZE bytes from OFFSET on to OUT. FILE_SIZE (bytes) bounds the reading ahead.
    Result<void> read(File& file, std::uint64_t fileSize, std::uint64_t offset, std::size_t size, Bytes& out);
    /// To be called when the file is written to.
    void clear();

private:
    struct Window {
        std::uint64_t offset = 0;
        Bytes bytes;
        std::uint64_t lastUse = 0;
    };

    std::array<Window, 4> windows_;
    std::uint64_t clock_ = 0;
};

/// A file that other programs may write to meanwhile, read as it was when it began with HEADER, its first sector. What
/// a later save may have written is Changed, and so is everything from then on.
///
/// The header is compared after each read: sectors that it leads to are reused only once the next one is durable
/// (see CompoundFileEngine), so while it is unchanged, nothing newer has been read. It counts the commits and so
/// never repeats.
class WatchedFile final : public ForwardingFile {
public:
    WatchedFile(File& file, Bytes header) : ForwardingFile(file), header_(std::move(header)) {}
    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override;
    Result<void> writeAt(std::uint64_t, ByteView) override { return refused(); }
    Result<void> resize(std::uint64_t) override { return refused(); }
    Result<void> flush() override { return refused(); }
    /// A read has failed with Changed. May be asked by any thread.
    bool changed() const { return changed_; }

private:
    static Error refused();

    const Bytes header_;
    std::atomic<bool> changed_ = false;
};

/// Collects pieces of whole sectors, then writes them in the order of the file, neighbours in one call.
class WriteBatch {
public:
    /// CONTENT must stay where it is until write(); a last sector that it does not fill is filled up with zeros.
    void add(std::uint32_t sector, ByteView content);
    /// The same for content made on the spot.
    void add(std::uint32_t sector, const Sector& content);
    Result<void> write(File& file);
    /// Where the last of it ends in the file (bytes).
    std::uint64_t end() const { return end_; }

private:
    struct Piece {
        std::uint32_t sector;
        ByteView content;
        std::uint32_t end() const { return sector + static_cast<std::uint32_t>(unitsOf(content.size(), kSectorSize)); }
    };

    std::vector<Piece> pieces_;
    std::vector<std::unique_ptr<Sector>> owned_;
    std::uint64_t end_ = 0;
};

} // namespace quobrix::cfb
