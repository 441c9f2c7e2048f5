#include "document/compound_mini_pages.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::size_t kMostKept = 4096; ///< pages whose memory waits for the next ones

} // namespace

Sector& MiniPages::add(std::uint32_t page) {
    if (page >= slots_.size())
        slots_.resize(std::max<std::size_t>(page + 1, 2 * slots_.size()), kNone);
    slots_[page] = static_cast<std::uint32_t>(contents_.size());
    pages_.push_back(page);
    return contents_.emplace_back();
}

std::vector<std::uint32_t> MiniPages::pages() const {
    std::vector<std::uint32_t> pages = pages_;
    std::sort(pages.begin(), pages.end());
    return pages;
}

void MiniPages::clear() {
    for (const std::uint32_t page : pages_)
        slots_[page] = kNone;
    pages_.clear();
    contents_.clear();
    if (contents_.capacity() > kMostKept)
        contents_.shrink_to_fit();
}

} // namespace quobrix::cfb
