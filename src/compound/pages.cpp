#include "compound/pages.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::size_t kMostKept = 16; ///< blocks

} // namespace

void Pages::grow(std::uint32_t count, std::uint8_t filling) {
    while (count_ < count) {
        const std::span<std::uint8_t> pages = append(std::min(count - count_, room()));
        std::fill(pages.begin(), pages.end(), filling);
    }
}

std::span<std::uint8_t> Pages::append(std::uint32_t count) {
    if (count_ / kBlockPages == blocks_.size())
        blocks_.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(kBlock));
    std::uint8_t* const first = blocks_[count_ / kBlockPages].get() + std::size_t{count_ % kBlockPages} * kSectorSize;
    count_ += count;
    return {first, std::size_t{count} * kSectorSize};
}

void Pages::keep(std::uint32_t page) {
    changed_.insert(page);
    auto& kept = before_.emplace_back(page, Sector());
    std::copy_n(this->page(page).begin(), kSectorSize, kept.second.begin());
}

std::vector<std::uint32_t> Pages::changed() const {
    std::vector<std::uint32_t> pages = changed_.members();
    for (std::uint32_t page = committed_; page < count_; ++page)
        pages.push_back(page);
    return pages;
}

void Pages::commit() {
    committed_ = count_;
    changed_.clear();
    before_.clear();
}

void Pages::rollBack() {
    count_ = committed_;
    blocks_.resize(unitsOf(count_, kBlockPages));
    for (const auto& [page, content] : before_)
        std::copy(content.begin(), content.end(), change(std::size_t{page} * kSectorSize));
    commit();
}

void Pages::clear() {
    count_ = 0;
    commit();
    if (blocks_.size() > kMostKept)
        blocks_.resize(kMostKept);
}

} // namespace quobrix::cfb
