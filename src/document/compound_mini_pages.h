#pragma once

#include "document/compound_format.h"

#include <vector>

namespace quobrix::cfb {

/// Pages of the mini stream that have changed, in memory until they are written.
class MiniPages {
public:
    bool empty() const { return pages_.empty(); }
    const Sector* find(std::uint32_t page) const {
        return page < slots_.size() && slots_[page] != kNone ? &contents_[slots_[page]] : nullptr;
    }
    Sector* find(std::uint32_t page) { return const_cast<Sector*>(std::as_const(*this).find(page)); }
    /// A page of zeros for one that is not there yet. Pages added in a row lie in a row; adding moves them.
    Sector& add(std::uint32_t page);
    /// In ascending order.
    std::vector<std::uint32_t> pages() const;
    void clear();

private:
    static constexpr std::uint32_t kNone = ~0u;

    std::vector<Sector> contents_;
    std::vector<std::uint32_t> pages_; ///< which page each of them is
    std::vector<std::uint32_t> slots_; ///< by page: its place in contents_, or kNone
};

} // namespace quobrix::cfb
