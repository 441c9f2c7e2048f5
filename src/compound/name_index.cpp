#include "compound/name_index.h"

namespace quobrix::cfb {

void NameIndex::insert(std::uint32_t hash, std::uint32_t index) {
    if (2 * (used_ + 1) > slots_.size())
        resize(count_ + 1);
    std::size_t at = hash & mask();
    while (slots_[at].index != kNoEntry)
        at = (at + 1) & mask();
    slots_[at] = {index, hash};
    ++count_;
    ++used_;
}

void NameIndex::erase(std::uint32_t hash, std::uint32_t index) {
    replace(hash, index, kErased);
    --count_;
}

void NameIndex::replace(std::uint32_t hash, std::uint32_t index, std::uint32_t other) {
    std::size_t at = hash & mask();
    while (slots_[at].index != index)
        at = (at + 1) & mask();
    slots_[at].index = other;
}

void NameIndex::resize(std::size_t expected) {
    std::size_t size = 64;
    while (size < 2 * expected)
        size *= 2;
    std::vector<Slot> slots(size);
    slots.swap(slots_);
    count_ = used_ = 0;
    for (const Slot& slot : slots)
        if (slot.index < kErased)
            insert(slot.hash, slot.index);
}

} // namespace quobrix::cfb
