#pragma once

#include "compound/format.h"

#include <vector>

namespace quobrix::cfb {

/// Entries by the hash of their names: an open-addressing table that knows hashes and indexes, but no names.
class NameIndex {
public:
    explicit NameIndex(std::size_t expected = 0) { resize(expected); }

    /// The entry with this HASH for which SAME(index) holds, or kNoEntry.
    template <class Same>
    std::uint32_t find(std::uint32_t hash, Same same) const {
        for (std::size_t at = hash & mask(); slots_[at].index != kNoEntry; at = (at + 1) & mask())
            if (slots_[at].hash == hash && slots_[at].index != kErased && same(slots_[at].index))
                return slots_[at].index;
        return kNoEntry;
    }
    /// A hint that the entry with this HASH will be looked for.
    void prefetch([[maybe_unused]] std::uint32_t hash) const {
#if defined(__GNUC__)
        __builtin_prefetch(&slots_[hash & mask()]);
#endif
    }
    void insert(std::uint32_t hash, std::uint32_t index);
    /// The entry must be there.
    void erase(std::uint32_t hash, std::uint32_t index);
    /// Puts the entry OTHER of the same name in the place of INDEX, which must be there.
    void replace(std::uint32_t hash, std::uint32_t index, std::uint32_t other);

private:
    struct Slot {
        std::uint32_t index = kNoEntry;
        std::uint32_t hash = 0;
    };
    static constexpr std::uint32_t kErased = kNoEntry - 1;

    std::size_t mask() const { return slots_.size() - 1; }
    void resize(std::size_t expected);

    std::vector<Slot> slots_; ///< a power of two
    std::size_t count_ = 0;
    std::size_t used_ = 0; ///< erased ones included
};

} // namespace quobrix::cfb
