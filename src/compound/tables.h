#pragma once

#include "compound/allocation.h"
#include "compound/directory.h"
#include "compound/io.h"
#include "compound/layout.h"

#include <unordered_set>
#include <vector>

namespace quobrix::cfb {

/// Directory, FAT and mini FAT in memory, and the sectors in which their pages and those of the mini stream lie: what
/// the header leads to. They change immediately; commit() and rollBack() end a transaction.
class Tables {
public:
    /// Those of a file that has no header yet.
    Tables();
    explicit Tables(Layout layout);

    Directory directory;
    AllocationTable fat{kMostSectors, Reuse::AfterCommit};
    AllocationTable miniFat{kMostMiniSectors, Reuse::Immediately};

    /// Tables or directory are damaged, or the file's end is missing: what is left can be read, but nothing can be
    /// written safely.
    bool incomplete() const { return incomplete_; }
    /// A stream (by entry) that cannot be read.
    bool damaged(std::uint32_t index) const { return damaged_.contains(index); }
    bool anyDamaged() const { return !damaged_.empty() || incomplete_; }

    /// Gives a stream COUNT sectors, or mini sectors (by SIZE, in bytes), and notes its size; mini sectors that are as
    /// many as it had stay. Errors as AllocationTable::allocate.
    Result<void> resize(std::uint32_t index, std::uint32_t size);
    /// Takes a stream's sectors away. Those of a damaged one belong to no stream from now on: they may be another's
    /// too.
    void releaseContent(std::uint32_t index);

    /// Where the pages of the mini stream lie, as far as it has been settled.
    const std::vector<std::uint32_t>& miniStream() const { return miniStreamChain_; }
    /// Makes sure that every page of the mini stream has a sector, and those in CHANGED, in ascending order, one that
    /// no state on disk leads to.
    Result<void> settleMiniStream(const std::vector<std::uint32_t>& changed);
    /// The same for the pages of the tables. Nothing may change between this and commit().
    Result<void> settle();
    /// Adds the changed pages of all tables, which must not change before the batch is written.
    void addChanged(WriteBatch& batch) const;

    bool onDisk() const { return onDisk_; }
    /// As it was committed; all zero in a new file.
    const Sector& header() const { return header_; }
    /// What makes the settled state current.
    Sector nextHeader() const;
    /// HEADER is durable. COPYING: somebody may still read the state that it replaces.
    void commit(const Sector& header, bool copying);
    /// Everything is as it was committed. Unless CERTAIN, the file may still be in the other state.
    void rollBack(bool certain);

private:
    Result<void> movePages(std::vector<std::uint32_t>& chain, const std::vector<std::uint32_t>& changed,
                           std::uint32_t count);
    Result<void> settleFat();
    Sector difatPage(std::uint32_t index) const;
    std::vector<std::uint32_t> chainFrom(std::uint32_t first) const;

    /// Where the FAT lies: its pages, and the pages that list them.
    struct FatPlaces {
        std::vector<std::uint32_t> pages;
        std::vector<std::uint32_t> lists;
    };

    Sector header_{};
    bool onDisk_ = false;
    bool incomplete_ = false;
    std::unordered_set<std::uint32_t> damaged_;
    std::vector<std::uint32_t> replaced_; ///< damaged streams, before they were written anew
    FatPlaces fatPlaces_;
    FatPlaces committedFatPlaces_;
    bool listsChanged_ = false;
    std::vector<std::uint32_t> directoryChain_;
    std::vector<std::uint32_t> miniFatChain_;
    std::vector<std::uint32_t> miniStreamChain_;
};

} // namespace quobrix::cfb
