#pragma once

#include "compound/pages.h"

#include <vector>

namespace quobrix::cfb {

/// Pages of the mini stream that have changed, in memory until they are written.
class MiniPages {
public:
    std::size_t bytes() const { return pages_.size() * std::size_t{kSectorSize}; }
    bool contains(std::uint32_t page) const { return page < slots_.size() && slots_[page] != kNone; }
    /// The content of one of them.
    ByteView at(std::uint32_t page) const { return contents_.page(slots_[page]); }
    std::uint8_t* change(std::uint32_t page) { return contents_.change(std::size_t{slots_[page]} * kSectorSize); }
    /// A page of zeros for one that is not there yet; pages added in a row lie in a row.
    std::uint8_t* add(std::uint32_t page);
    /// In ascending order.
    std::vector<std::uint32_t> pages() const;
    void clear();

private:
    static constexpr std::uint32_t kNone = ~0u;

    Pages contents_;
    std::vector<std::uint32_t> pages_; ///< which page each of them is
    std::vector<std::uint32_t> slots_; ///< by page: its place in contents_, or kNone
};

} // namespace quobrix::cfb
