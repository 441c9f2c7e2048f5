#include "compound/mini_pages.h"

#include <algorithm>

namespace quobrix::cfb {

std::uint8_t* MiniPages::add(std::uint32_t page) {
    if (page >= slots_.size())
        slots_.resize(std::max<std::size_t>(page + 1, 2 * slots_.size()), kNone);
    slots_[page] = contents_.count();
    pages_.push_back(page);
    contents_.grow(contents_.count() + 1, 0);
    return change(page);
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
}

} // namespace quobrix::cfb
