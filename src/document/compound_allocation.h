#pragma once

#include "document/compound_format.h"

#include <cstdint>
#include <set>
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

/// COUNT sectors side by side.
struct Run {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// An allocation table of the file, the FAT or the mini FAT: for each sector the next one of its chain, or a mark.
///
/// A sector is held while a header on disk may lead to it. A held sector that is released counts as free in the table
/// but is not allocated again before releaseFreed(), that is before a header that does without it is durable.
class AllocationTable {
public:
    explicit AllocationTable(std::uint32_t mostSectors) : mostSectors_(mostSectors) {}

    /// The table as it stands on disk, whole pages of it. Every sector that is not free becomes held, and those in
    /// CLAIMED too: a damaged table may call them free though a chain leads to them. AVOIDED sectors do not exist yet,
    /// but a damaged chain leads to them: given out, they would become part of it.
    void load(std::vector<std::uint32_t> marks, const SectorSet& claimed, std::set<std::uint32_t> avoided);

    /// The next sector in the chain, or a mark; kUnknownSector outside the table.
    std::uint32_t next(std::uint32_t sector) const { return sector < marks_.size() ? marks_[sector] : kUnknownSector; }
    void setNext(std::uint32_t sector, std::uint32_t next);
    /// One past the last sector ever used.
    std::uint32_t end() const { return end_; }
    std::uint32_t freeCount() const { return freeCount_; }

    /// COUNT (at least 1) sectors, chained in order: side by side where that is possible without much waste, else in
    /// pieces, else at the end. Unsupported when the file would pass 2 GB.
    Result<std::vector<Run>> allocate(std::uint32_t count);
    void release(std::uint32_t sector);
    /// Releases a whole chain, which must be sound.
    void releaseChain(std::uint32_t first);

    bool held(std::uint32_t sector) const { return held_.contains(sector); }
    /// From now on a header on disk may lead to everything allocated so far.
    void holdAllocated();
    /// Only the state as it is now is reachable: what was released may be used again.
    void releaseFreed();

    /// The pages (of kMarksPerPage marks) that cover every sector used.
    std::uint32_t pageCount() const { return static_cast<std::uint32_t>(marks_.size() / kMarksPerPage); }
    std::vector<std::uint32_t> dirtyPages() const { return dirty_.members(); }
    void clearDirty() { dirty_.clear(); }
    Sector page(std::uint32_t index) const;

private:
    void use(std::uint32_t first, std::uint32_t count, std::uint32_t& tail);

    std::uint32_t mostSectors_;
    std::vector<std::uint32_t> marks_;
    std::uint32_t end_ = 0;
    std::uint32_t freeCount_ = 0; ///< free marks below end_
    SectorSet available_;         ///< below end_, and may be allocated
    SectorSet held_;
    std::set<std::uint32_t> avoided_;
    SectorSet dirty_;                  ///< page indexes
    std::vector<Run> allocated_;       ///< since holdAllocated()
    std::vector<std::uint32_t> freed_; ///< held, but free in the table
    std::uint32_t cursor_ = 0;         ///< where the next search begins, so that a commit's sectors lie together
    std::uint32_t noRunOf_ = ~0u;      ///< a search for so many side by side has failed
};

} // namespace quobrix::cfb
