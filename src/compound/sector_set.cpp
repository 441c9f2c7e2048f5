#include "compound/sector_set.h"

#include <algorithm>
#include <bit>

namespace quobrix::cfb {

/// Beyond the words there are only gaps: kNone stands for "after all words".
template <bool kMember>
std::uint32_t SectorSet::next(std::uint32_t from) const {
    std::size_t index = from / 64;
    std::uint64_t mask = ~std::uint64_t{0} << (from % 64);
    for (; index < words_.size(); ++index, mask = ~std::uint64_t{0})
        if (const std::uint64_t word = (kMember ? words_[index] : ~words_[index]) & mask; word != 0)
            return static_cast<std::uint32_t>(index * 64 + static_cast<std::size_t>(std::countr_zero(word)));
    return kNone;
}

std::uint32_t SectorSet::nextMember(std::uint32_t from) const { return next<true>(from); }

std::uint32_t SectorSet::nextGap(std::uint32_t from) const {
    const std::uint32_t gap = next<false>(from);
    return gap != kNone ? gap : std::max(from, static_cast<std::uint32_t>(words_.size() * 64));
}

std::vector<std::uint32_t> SectorSet::members() const {
    std::vector<std::uint32_t> members;
    for (std::uint32_t sector = nextMember(0); sector != kNone; sector = nextMember(sector + 1))
        members.push_back(sector);
    return members;
}

} // namespace quobrix::cfb
