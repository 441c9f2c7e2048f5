#include "document/compound_allocation.h"

#include <algorithm>
#include <bit>

namespace quobrix::cfb {

namespace {

/// Larger streams are not scattered over free runs shorter than this: a disk page, and reading stays sequential.
constexpr std::uint32_t kShortestPiece = 8;

} // namespace

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

void AllocationTable::load(std::vector<std::uint32_t> marks, const SectorSet& claimed,
                           std::set<std::uint32_t> avoided) {
    marks_ = std::move(marks);
    avoided_ = std::move(avoided);
    for (std::uint32_t sector = 0; sector < marks_.size(); ++sector)
        if (marks_[sector] != kFreeSector || claimed.contains(sector)) {
            held_.insert(sector);
            end_ = sector + 1;
        }
    for (std::uint32_t sector = held_.nextGap(0); sector < end_; sector = held_.nextGap(sector + 1)) {
        available_.insert(sector);
        ++freeCount_;
    }
}

void AllocationTable::setNext(std::uint32_t sector, std::uint32_t next) {
    if (marks_[sector] == next)
        return;
    marks_[sector] = next;
    dirty_.insert(sector / kMarksPerPage);
}

void AllocationTable::use(std::uint32_t first, std::uint32_t count, std::uint32_t& tail) {
    if (first + count > marks_.size())
        marks_.resize(unitsOf(first + count, kMarksPerPage) * std::size_t{kMarksPerPage}, kFreeSector);
    for (std::uint32_t sector = first; sector < first + count; ++sector) {
        if (sector < end_) {
            available_.erase(sector);
            --freeCount_;
        }
        if (tail != kEndOfChain)
            setNext(tail, sector);
        setNext(sector, kEndOfChain);
        tail = sector;
    }
    end_ = std::max(end_, first + count);
    cursor_ = first + count;
    allocated_.push_back({first, count});
}

Result<std::vector<Run>> AllocationTable::allocate(std::uint32_t count) {
    const std::uint32_t atEnd = mostSectors_ - std::min(mostSectors_, end_);
    if (count > atEnd + std::uint64_t{freeCount_})
        return Error{ErrorKind::Unsupported, "the file would pass 2 GB"};
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
    // Near the limit of the file every free sector counts.
    while (count > atEnd && take(1)) {
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
        return Error{ErrorKind::Unsupported, "the file would pass 2 GB"};
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
    while (first < marks_.size()) {
        const std::uint32_t following = marks_[first];
        release(first);
        first = following;
    }
}

void AllocationTable::holdAllocated() {
    for (const Run& run : allocated_)
        for (std::uint32_t sector = run.first; sector < run.first + run.count; ++sector)
            if (marks_[sector] != kFreeSector)
                held_.insert(sector);
    allocated_.clear();
}

void AllocationTable::releaseFreed() {
    for (const std::uint32_t sector : freed_) {
        held_.erase(sector);
        available_.insert(sector);
    }
    freed_.clear();
    noRunOf_ = ~0u;
    cursor_ = 0;
}

Sector AllocationTable::page(std::uint32_t index) const {
    Sector sector;
    for (std::uint32_t i = 0; i < kMarksPerPage; ++i)
        store32(sector.data() + 4 * i, marks_[std::size_t{index} * kMarksPerPage + i]);
    return sector;
}

} // namespace quobrix::cfb
