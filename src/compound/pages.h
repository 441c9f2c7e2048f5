#pragma once

#include "compound/format.h"
#include "compound/sector_set.h"

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace quobrix::cfb {

/// A table of the file in memory, in its form on disk. It knows which of its pages, of a sector each, differ from the
/// last committed state, and how they were. Growing moves nothing.
class Pages {
public:
    std::uint32_t count() const { return count_; }
    /// The byte at OFFSET and what follows it in its page.
    const std::uint8_t* at(std::size_t offset) const { return blocks_[offset / kBlock].get() + offset % kBlock; }
    ByteView page(std::uint32_t index) const { return {at(std::size_t{index} * kSectorSize), kSectorSize}; }

    /// The same, to be changed.
    std::uint8_t* change(std::size_t offset) {
        const auto page = static_cast<std::uint32_t>(offset / kSectorSize);
        if (page < committed_ && !changed_.contains(page))
            keep(page);
        return blocks_[offset / kBlock].get() + offset % kBlock;
    }
    /// New pages, full of FILLING, so that there are COUNT.
    void grow(std::uint32_t count, std::uint8_t filling);
    /// How many new pages can lie side by side in memory, at least one.
    std::uint32_t room() const { return kBlockPages - count_ % kBlockPages; }
    /// COUNT new pages, at most room(), to be filled before more are added.
    std::span<std::uint8_t> append(std::uint32_t count);

    /// The pages that differ from the committed state, new ones included, in ascending order.
    std::vector<std::uint32_t> changed() const;
    /// The pages as they are now are the committed state.
    void commit();
    /// The pages are as they were committed, and no more than there were.
    void rollBack();
    /// There are no pages; some of their memory is kept for the next ones.
    void clear();

private:
    /// Large enough for few calls when a table is read or written, small enough to come from the heap's middle.
    static constexpr std::size_t kBlock = 64 * 1024;
    static constexpr std::uint32_t kBlockPages = kBlock / kSectorSize;

    void keep(std::uint32_t page);

    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
    std::uint32_t count_ = 0;
    std::uint32_t committed_ = 0; ///< count of pages; the later ones are new
    SectorSet changed_;           ///< of the committed pages
    std::vector<std::pair<std::uint32_t, Sector>> before_;
};

} // namespace quobrix::cfb
