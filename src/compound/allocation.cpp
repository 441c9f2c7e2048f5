#include "compound/allocation.h"

#include "texts/text.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

/// Larger streams are not scattered over free runs shorter than this: a disk page, and reading stays sequential.
constexpr std::uint32_t kShortestPiece = 8;
/// The share of a file that may be holes too short for that: one in so many sectors.
constexpr std::uint32_t kMostWaste = 3;

} // namespace

void AllocationTable::load(Pages marks, SectorSet claimed, std::set<std::uint32_t> avoided) {
    pages_ = std::move(marks);
    pages_.commit();
    held_ = std::move(claimed);
    heldIsCommitted_ = held_.nextMember(0) == SectorSet::kNone;
    avoided_ = std::move(avoided);
    if (reuse_ == Reuse::AfterCommit)
        for (std::uint32_t sector = 0; sector < pages_.count() * kMarksPerPage; ++sector)
            if (mark(sector) != kFreeSector)
                held_.insert(sector);
    findFree();
}

/// Up to the last sector that is used or held, the others are there to be used.
void AllocationTable::findFree() {
    available_.clear();
    freeCount_ = end_ = cursor_ = 0;
    noRunOf_ = ~0u;
    spareWanted_ = reuse_ == Reuse::AfterCommit && pages_.count() > 0;
    spare_.clear();
    std::vector<std::uint32_t> unused;
    std::uint32_t sector = 0;
    const auto consider = [&](bool used) {
        if (used)
            end_ = sector + 1;
        else
            unused.push_back(sector);
        ++sector;
    };
    for (std::uint32_t page = 0; page < pages_.count(); ++page)
        for (const std::uint8_t *mark = pages_.page(page).data(), *last = mark + kSectorSize; mark != last; mark += 4)
            consider(load32(mark) != kFreeSector || held_.contains(sector));
    for (std::uint32_t held; (held = held_.nextMember(sector)) != SectorSet::kNone;)
        while (sector <= held)
            consider(sector == held);
    for (const std::uint32_t free : unused)
        if (free < end_) {
            available_.insert(free);
            ++freeCount_;
        }
    freeCount_ += static_cast<std::uint32_t>(freed_.size());
}

Run AllocationTable::run(std::uint32_t first, std::uint32_t most) const {
    Run run{first, 1};
    while (run.count < most && next(first + run.count - 1) == first + run.count)
        ++run.count;
    return run;
}

void AllocationTable::setNext(std::uint32_t sector, std::uint32_t next) {
    if (mark(sector) != next)
        store32(pages_.change(std::size_t{4} * sector), next);
}

/// Chains the run behind TAIL, which then is its last sector.
void AllocationTable::use(std::uint32_t first, std::uint32_t count, std::uint32_t& tail) {
    const std::uint32_t after = first + count;
    if (after > pages_.count() * kMarksPerPage)
        pages_.grow(unitsOf(after, kMarksPerPage), 0xFF);
    for (std::uint32_t sector = first; sector < std::min(after, end_); ++sector) {
        available_.erase(sector);
        --freeCount_;
    }
    for (std::uint32_t sector = first; sector < after;) {
        std::uint8_t* at = pages_.change(std::size_t{4} * sector);
        const std::uint32_t pageEnd = std::min(after, (sector / kMarksPerPage + 1) * kMarksPerPage);
        for (; sector < pageEnd; ++sector, at += 4)
            store32(at, sector + 1 < after ? sector + 1 : kEndOfChain);
    }
    if (tail != kEndOfChain)
        setNext(tail, first);
    tail = after - 1;
    end_ = std::max(end_, after);
    cursor_ = after;
    allocated_.push_back({first, count});
}

/// Appended where nothing is free.
void AllocationTable::keepSpare() {
    spareWanted_ = false;
    std::uint32_t sector = 0;
    while (spare_.size() < kSpare) {
        sector = std::min(available_.nextMember(sector), end_);
        if (sector == end_) {
            if (end_ == mostSectors_ || avoided_.contains(end_))
                return;
            ++end_;
            ++freeCount_;
            if (end_ > pages_.count() * kMarksPerPage)
                pages_.grow(unitsOf(end_, kMarksPerPage), 0xFF);
        }
        available_.erase(sector);
        spare_.push_back(sector++);
    }
}

void AllocationTable::giveUpSpare() {
    for (const std::uint32_t sector : spare_)
        available_.insert(sector);
    spare_.clear();
    noRunOf_ = ~0u;
}

std::optional<std::vector<std::uint32_t>> AllocationTable::replaced() const {
    if (!heldIsCommitted_)
        return std::nullopt;
    std::vector<std::uint32_t> sectors = freed_;
    std::ranges::sort(sectors);
    return sectors;
}

Result<std::vector<Run>> AllocationTable::allocate(std::uint32_t count) {
    if (spareWanted_)
        keepSpare();
    const std::uint32_t atEnd = mostSectors_ - std::min(mostSectors_, end_);
    if (count + freed_.size() + spare_.size() > atEnd + std::uint64_t{freeCount_})
        giveUpSpare();
    if (count > atEnd + std::uint64_t{freeCount_})
        return Error{ErrorKind::Unsupported, text(TextId::TheFileWouldPass2GB)};
    std::vector<Run> runs;
    std::uint32_t tail = kEndOfChain;
    const auto take = [&](std::uint32_t shortest) {
        // From the cursor to the end, then from the beginning.
        if (shortest >= noRunOf_)
            return false;
        for (int round = 0; round < 2; ++round) {
            std::uint32_t first = available_.nextMember(round == 0 ? cursor_ : 0);
            while (first < end_) {
                const std::uint32_t after = std::min(available_.nextGap(first), end_);
                if (after - first >= shortest) {
                    runs.push_back({first, std::min(after - first, count)});
                    use(first, runs.back().count, tail);
                    count -= runs.back().count;
                    return true;
                }
                first = available_.nextMember(after);
            }
        }
        noRunOf_ = shortest;
        return false;
    };
    if (take(count))
        return runs;
    while (count > kShortestPiece && take(kShortestPiece)) {
    }
    // Every free sector counts near the limit of the file, and when holes have come to be a third of it.
    const auto wasteful = [&] { return freeCount_ - freed_.size() > end_ / kMostWaste; };
    while (count > 0 && (count > atEnd || wasteful()) && take(1)) {
    }
    while (count > 0 && end_ < mostSectors_) {
        const auto obstacle = avoided_.lower_bound(end_);
        const std::uint32_t room = (obstacle == avoided_.end() ? mostSectors_ : *obstacle) - end_;
        if (room == 0) {
            held_.insert(end_++);
            ++freeCount_;
            continue;
        }
        runs.push_back({end_, std::min(room, count)});
        use(end_, runs.back().count, tail);
        count -= runs.back().count;
    }
    if (count > 0) {
        for (const Run& run : runs)
            for (std::uint32_t i = 0; i < run.count; ++i)
                release(run.first + i);
        return Error{ErrorKind::Unsupported, text(TextId::TheFileWouldPass2GB)};
    }
    return runs;
}

void AllocationTable::release(std::uint32_t sector) {
    setNext(sector, kFreeSector);
    ++freeCount_;
    if (held(sector)) {
        freed_.push_back(sector);
    } else {
        available_.insert(sector);
        noRunOf_ = ~0u;
    }
}

void AllocationTable::releaseChain(std::uint32_t first) {
    while (first < pages_.count() * kMarksPerPage) {
        const std::uint32_t following = mark(first);
        release(first);
        first = following;
    }
}

void AllocationTable::commit(bool copying) {
    if (reuse_ == Reuse::AfterCommit)
        for (const Run& run : allocated_)
            for (std::uint32_t sector = run.first; sector < run.first + run.count; ++sector)
                if (mark(sector) != kFreeSector)
                    held_.insert(sector);
    allocated_.clear();
    pages_.commit();
    giveUpSpare();
    spareWanted_ = reuse_ == Reuse::AfterCommit;
    heldIsCommitted_ = !copying;
    if (copying)
        return;
    for (const std::uint32_t sector : freed_) {
        held_.erase(sector);
        available_.insert(sector);
    }
    freed_.clear();
    noRunOf_ = ~0u;
    cursor_ = 0;
}

void AllocationTable::rollBack(bool certain) {
    pages_.rollBack();
    // What earlier commits have released stays so.
    std::erase_if(freed_,
                  [&](std::uint32_t sector) { return next(sector) != kFreeSector && next(sector) != kUnknownSector; });
    heldIsCommitted_ = heldIsCommitted_ && certain;
    if (!certain && reuse_ == Reuse::AfterCommit)
        for (const Run& run : allocated_)
            for (std::uint32_t sector = run.first; sector < run.first + run.count; ++sector)
                if (!held(sector)) {
                    held_.insert(sector);
                    freed_.push_back(sector);
                }
    allocated_.clear();
    findFree();
}

} // namespace quobrix::cfb
