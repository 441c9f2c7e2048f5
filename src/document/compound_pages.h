#pragma once

#include "document/compound_format.h"
#include "document/compound_sector_set.h"

#include <utility>
#include <vector>

namespace quobrix::cfb {

/// A table of the file in memory, in its form on disk. It knows which of its pages, of a sector each, differ from the
/// last committed state, and how they were.
class Pages {
public:
    /// A table that no file has yet.
    Pages() = default;
    /// A table as it stands on disk, whole pages of it.
    explicit Pages(Bytes bytes) : bytes_(std::move(bytes)), committed_(count()) {}

    std::uint32_t count() const { return static_cast<std::uint32_t>(bytes_.size() / kSectorSize); }
    const std::uint8_t* data() const { return bytes_.data(); }
    ByteView page(std::uint32_t index) const {
        return ByteView(bytes_).subspan(std::size_t{index} * kSectorSize, kSectorSize);
    }

    /// The byte at OFFSET and what follows it in its page, to be changed.
    std::uint8_t* change(std::size_t offset) {
        const auto page = static_cast<std::uint32_t>(offset / kSectorSize);
        if (page < committed_ && !changed_.contains(page))
            keep(page);
        return bytes_.data() + offset;
    }
    /// New pages, full of FILLING, so that there are COUNT.
    void grow(std::uint32_t count, std::uint8_t filling) { bytes_.resize(std::size_t{count} * kSectorSize, filling); }

    /// The pages that differ from the committed state, new ones included, in ascending order.
    std::vector<std::uint32_t> changed() const;
    /// The pages as they are now are the committed state.
    void commit();
    /// The pages are as they were committed, and no more than there were.
    void rollBack();

private:
    void keep(std::uint32_t page);

    Bytes bytes_;
    std::uint32_t committed_ = 0; ///< count of pages; the later ones are new
    SectorSet changed_;           ///< of the committed pages
    std::vector<std::pair<std::uint32_t, Sector>> before_;
};

} // namespace quobrix::cfb
