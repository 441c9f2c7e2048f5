#pragma once

#include "compound/pages.h"

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace quobrix::cfb {

/// COUNT sectors side by side.
struct Run {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    std::uint32_t last() const { return first + count - 1; }
};

/// When a released sector may be allocated again.
enum class Reuse {
    Immediately, ///< a mini sector: its page goes elsewhere when it changes, so nothing is written over
    AfterCommit  ///< when no header on disk leads to it any more
};

/// An allocation table of the file, the FAT or the mini FAT: for each sector the next one of its chain, or a mark.
///
/// A sector is held while a header on disk, or a copy in the making, may lead to it. A held sector that is released
/// counts as free in the table but is not allocated again before a commit().
class AllocationTable {
public:
    AllocationTable(std::uint32_t mostSectors, Reuse reuse) : mostSectors_(mostSectors), reuse_(reuse) {}

    /// The table as it stands on disk, whole pages of it. Sectors in CLAIMED are kept from use for good: the damaged
    /// table calls them free though a chain leads to them. AVOIDED sectors do not exist yet, but a damaged chain leads
    /// to them: given out, they would become part of it.
    void load(Pages marks, SectorSet claimed, std::set<std::uint32_t> avoided);

    /// The next sector in the chain, or a mark; kUnknownSector outside the table.
    std::uint32_t next(std::uint32_t sector) const {
        return sector < pages_.count() * kMarksPerPage ? mark(sector) : kUnknownSector;
    }
    void setNext(std::uint32_t sector, std::uint32_t next);
    /// FIRST and those that follow it in its chain side by side, at most MOST.
    Run run(std::uint32_t first, std::uint32_t most = ~0u) const;
    /// One past the last sector ever used.
    std::uint32_t end() const { return end_; }
    std::uint32_t freeCount() const { return freeCount_; }

    /// COUNT (at least 1) sectors, chained in order: side by side where there is room, else in pieces that are not too
    /// short, else at the end; in any pieces when much of the file is free. Unsupported when the file would pass 2 GB.
    Result<std::vector<Run>> allocate(std::uint32_t count);
    void release(std::uint32_t sector);
    /// Releases a whole chain, which must be sound.
    void releaseChain(std::uint32_t first);

    bool held(std::uint32_t sector) const { return held_.contains(sector); }

    /// How many sectors each transaction that replaces a committed state keeps free for a note of it.
    static constexpr std::uint32_t kSpare = 2;
    /// These sectors, once something has been allocated: the lowest ones that the committed state does not use, so that
    /// they are the same in every attempt to replace it. None where a damaged chain may lead to them, or in a new file.
    const std::vector<std::uint32_t>& spare() const { return spare_; }
    /// Sectors that the committed state uses and this one does not, in ascending order; nothing when sectors of other
    /// states are held, too. held() then tells what the committed state uses.
    std::optional<std::vector<std::uint32_t>> replaced() const;

    /// The table as it is now is the one that the header on disk leads to, and no other. What was released may be used
    /// again, unless a copy in the making may need it (COPYING): then the next commit sees to it.
    void commit(bool copying);
    /// The table is as it was committed. Unless CERTAIN, the header on disk may still lead to the other state,
    /// whose sectors are then held until the next commit.
    void rollBack(bool certain);

    /// The pages cover every sector used.
    const Pages& pages() const { return pages_; }

private:
    std::uint32_t mark(std::uint32_t sector) const { return load32(pages_.at(std::size_t{4} * sector)); }
    void use(std::uint32_t first, std::uint32_t count, std::uint32_t& tail);
    void findFree();
    void keepSpare();
    void giveUpSpare();

    std::uint32_t mostSectors_;
    Reuse reuse_;
    Pages pages_;
    std::uint32_t end_ = 0;
    std::uint32_t freeCount_ = 0; ///< free marks below end_
    SectorSet available_;         ///< below end_, and may be allocated
    SectorSet held_;
    std::set<std::uint32_t> avoided_;
    std::vector<Run> allocated_;       ///< since the last commit
    std::vector<std::uint32_t> freed_; ///< held, but free in the table
    std::uint32_t cursor_ = 0;         ///< where the next search begins, so that a commit's sectors lie together
    std::uint32_t noRunOf_ = ~0u;      ///< a search for so many side by side has failed
    bool spareWanted_ = false;         ///< there is a committed state, and nothing is kept yet
    std::vector<std::uint32_t> spare_;
    bool heldIsCommitted_ = true; ///< but for what this transaction has released
};

} // namespace quobrix::cfb
