#include "document/compound_pages.h"

#include <algorithm>

namespace quobrix::cfb {

void Pages::keep(std::uint32_t page) {
    changed_.insert(page);
    auto& kept = before_.emplace_back(page, Sector());
    std::copy_n(this->page(page).begin(), kSectorSize, kept.second.begin());
}

std::vector<std::uint32_t> Pages::changed() const {
    std::vector<std::uint32_t> pages = changed_.members();
    for (std::uint32_t page = committed_; page < count(); ++page)
        pages.push_back(page);
    return pages;
}

void Pages::commit() {
    committed_ = count();
    changed_.clear();
    before_.clear();
}

void Pages::rollBack() {
    bytes_.resize(std::size_t{committed_} * kSectorSize);
    for (const auto& [page, content] : before_)
        std::copy(content.begin(), content.end(), bytes_.begin() + std::ptrdiff_t{page} * kSectorSize);
    commit();
}

} // namespace quobrix::cfb
