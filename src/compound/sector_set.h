#pragma once

#include <cstdint>
#include <vector>

namespace quobrix::cfb {

/// A set of sector numbers, quick at finding runs of them.
class SectorSet {
public:
    bool contains(std::uint32_t sector) const {
        return sector / 64 < words_.size() && (words_[sector / 64] >> (sector % 64) & 1) != 0;
    }
    void insert(std::uint32_t sector) {
        if (sector / 64 >= words_.size())
            words_.resize(sector / 64 + 1);
        words_[sector / 64] |= std::uint64_t{1} << (sector % 64);
    }
    void erase(std::uint32_t sector) {
        if (sector / 64 < words_.size())
            words_[sector / 64] &= ~(std::uint64_t{1} << (sector % 64));
    }
    void clear() { words_.clear(); }

    static constexpr std::uint32_t kNone = ~0u;
    /// The first member at or after FROM, or kNone.
    std::uint32_t nextMember(std::uint32_t from) const;
    /// The first number at or after FROM that is no member.
    std::uint32_t nextGap(std::uint32_t from) const;
    std::vector<std::uint32_t> members() const;

private:
    template <bool kMember>
    std::uint32_t next(std::uint32_t from) const;

    std::vector<std::uint64_t> words_;
};

} // namespace quobrix::cfb
