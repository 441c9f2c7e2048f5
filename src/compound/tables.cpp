#include "compound/tables.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::uint32_t kNowhere = kFreeSector; // the place of a page that has none yet

} // namespace

Tables::Tables() = default;

Tables::Tables(Layout layout)
    : directory(std::move(layout.directory)), header_(layout.header), onDisk_(true), incomplete_(layout.incomplete),
      damaged_(std::move(layout.damaged)), fatPlaces_{std::move(layout.fatSectors), std::move(layout.difatSectors)},
      committedFatPlaces_(fatPlaces_), directoryChain_(std::move(layout.directoryChain)),
      miniFatChain_(std::move(layout.miniFatChain)), miniStreamChain_(std::move(layout.miniStreamChain)) {
    fat.load(std::move(layout.fat), std::move(layout.claimed), std::move(layout.avoided));
    miniFat.load(std::move(layout.miniFat), std::move(layout.claimedMini), std::move(layout.avoidedMini));
}

Result<void> Tables::resize(std::uint32_t index, std::uint32_t size) {
    const bool mini = size < kMiniCutoff;
    const std::uint32_t before = directory.size(index);
    if (mini && size > 0 && before > 0 && before < kMiniCutoff && !damaged(index) &&
        unitsOf(before, kMiniSectorSize) == unitsOf(size, kMiniSectorSize)) {
        directory.setContent(index, directory.start(index), size);
        return {};
    }
    releaseContent(index);
    if (size == 0)
        return {};
    const auto runs =
        mini ? miniFat.allocate(unitsOf(size, kMiniSectorSize)) : fat.allocate(unitsOf(size, kSectorSize));
    if (!runs)
        return runs.error();
    directory.setContent(index, runs->front().first, size);
    return {};
}

void Tables::releaseContent(std::uint32_t index) {
    if (damaged_.erase(index) != 0)
        replaced_.push_back(index);
    else if (directory.size(index) > 0)
        (directory.size(index) < kMiniCutoff ? miniFat : fat).releaseChain(directory.start(index));
    directory.setContent(index, kEndOfChain, 0);
}

/// Makes sure that CHAIN has COUNT pages and that none of the changed pages lies in a held sector.
Result<void> Tables::movePages(std::vector<std::uint32_t>& chain, const std::vector<std::uint32_t>& changed,
                               std::uint32_t count) {
    std::vector<std::uint32_t> moving;
    for (const std::uint32_t page : changed)
        if (page < chain.size() && fat.held(chain[page]))
            moving.push_back(page);
    for (auto page = static_cast<std::uint32_t>(chain.size()); page < count; ++page)
        moving.push_back(page);
    if (moving.empty())
        return {};
    const auto runs = fat.allocate(static_cast<std::uint32_t>(moving.size()));
    if (!runs)
        return runs.error();
    chain.resize(std::max<std::size_t>(chain.size(), count), kNowhere);
    auto page = moving.begin();
    for (const Run& run : *runs)
        for (std::uint32_t i = 0; i < run.count; ++i, ++page) {
            if (chain[*page] != kNowhere)
                fat.release(chain[*page]);
            chain[*page] = run.first + i;
        }
    for (const std::uint32_t moved : moving) {
        fat.setNext(chain[moved], moved + 1 < chain.size() ? chain[moved + 1] : kEndOfChain);
        if (moved > 0)
            fat.setNext(chain[moved - 1], chain[moved]);
    }
    return {};
}

Result<void> Tables::settleMiniStream(const std::vector<std::uint32_t>& changed) {
    return movePages(miniStreamChain_, changed, unitsOf(miniFat.end(), kMiniSectorsPerPage));
}

Result<void> Tables::settle() {
    QUOBRIX_TRY(movePages(miniFatChain_, miniFat.pages().changed(), miniFat.pages().count()));
    directory.setContent(0, miniStreamChain_.empty() ? kEndOfChain : miniStreamChain_.front(),
                         static_cast<std::uint32_t>(miniStreamChain_.size() * kSectorSize));
    directory.settle();
    QUOBRIX_TRY(movePages(directoryChain_, directory.pages().changed(), directory.pages().count()));
    return settleFat();
}

/// Finds new places for the pages of the FAT that changed, and for the list of them. Moving a page changes the FAT
/// again; each page moves at most once, so this comes to an end.
Result<void> Tables::settleFat() {
    auto& [pages, lists] = fatPlaces_;
    for (;;) {
        pages.resize(std::max<std::size_t>(pages.size(), fat.pages().count()), kNowhere);
        const auto listed = static_cast<std::uint32_t>(pages.size());
        const std::uint32_t wanted =
            listed > kFatPagesInHeader ? unitsOf(listed - kFatPagesInHeader, kFatPagesPerDifat) : 0;
        listsChanged_ = listsChanged_ || wanted > lists.size();
        lists.resize(std::max<std::size_t>(lists.size(), wanted), kNowhere);

        std::vector<std::uint32_t*> moving;
        const auto consider = [&](std::uint32_t& place) {
            if (place == kNowhere || fat.held(place))
                moving.push_back(&place);
        };
        for (const std::uint32_t page : fat.pages().changed())
            consider(pages[page]);
        const std::size_t fatPagesMoving = moving.size();
        for (std::size_t i = 0; i < fatPagesMoving; ++i)
            listsChanged_ = listsChanged_ || moving[i] >= pages.data() + kFatPagesInHeader;
        if (listsChanged_)
            for (std::uint32_t& place : lists)
                consider(place);
        if (moving.empty())
            return {};
        const auto runs = fat.allocate(static_cast<std::uint32_t>(moving.size()));
        if (!runs)
            return runs.error();
        std::size_t moved = 0;
        for (const Run& run : *runs)
            for (std::uint32_t i = 0; i < run.count; ++i, ++moved) {
                std::uint32_t& place = *moving[moved];
                if (place != kNowhere)
                    fat.release(place);
                place = run.first + i;
                fat.setNext(place, moved < fatPagesMoving ? kFatSector : kDifatSector);
            }
    }
}

Sector Tables::difatPage(std::uint32_t index) const {
    const auto& [pages, lists] = fatPlaces_;
    Sector sector;
    for (std::uint32_t i = 0; i < kFatPagesPerDifat; ++i) {
        const std::size_t page = kFatPagesInHeader + std::size_t{index} * kFatPagesPerDifat + i;
        store32(sector.data() + 4 * i, page < pages.size() ? pages[page] : kFreeSector);
    }
    store32(sector.data() + 4 * kFatPagesPerDifat, index + 1 < lists.size() ? lists[index + 1] : kEndOfChain);
    return sector;
}

void Tables::addChanged(WriteBatch& batch) const {
    const auto add = [&batch](const Pages& pages, const std::vector<std::uint32_t>& places) {
        for (const std::uint32_t page : pages.changed())
            batch.add(places[page], pages.page(page));
    };
    add(miniFat.pages(), miniFatChain_);
    add(directory.pages(), directoryChain_);
    add(fat.pages(), fatPlaces_.pages);
    if (listsChanged_)
        for (std::uint32_t page = 0; page < fatPlaces_.lists.size(); ++page)
            batch.add(fatPlaces_.lists[page], difatPage(page));
}

Sector Tables::nextHeader() const {
    const auto& [pages, lists] = fatPlaces_;
    Header header;
    header.fatPages = static_cast<std::uint32_t>(pages.size());
    header.firstDirectorySector = directoryChain_.front();
    header.transaction = (onDisk_ ? Header::decode(header_)->transaction : 0) + 1;
    header.firstMiniFatSector = miniFatChain_.empty() ? kEndOfChain : miniFatChain_.front();
    header.miniFatPages = static_cast<std::uint32_t>(miniFatChain_.size());
    header.firstDifatSector = lists.empty() ? kEndOfChain : lists.front();
    header.difatPages = static_cast<std::uint32_t>(lists.size());
    for (std::uint32_t i = 0; i < kFatPagesInHeader; ++i)
        header.fatSectors[i] = i < pages.size() ? pages[i] : kFreeSector;
    return header.encode(onDisk_ ? header_ : newHeader());
}

void Tables::commit(const Sector& header, bool copying) {
    header_ = header;
    onDisk_ = true;
    directory.commit();
    fat.commit(copying);
    miniFat.commit(false); // its pages are copied, so their sectors tell
    committedFatPlaces_ = fatPlaces_;
    listsChanged_ = false;
    replaced_.clear();
}

void Tables::rollBack(bool certain) {
    directory.rollBack();
    fat.rollBack(certain);
    miniFat.rollBack(certain);
    fatPlaces_ = committedFatPlaces_;
    listsChanged_ = false;
    damaged_.insert(replaced_.begin(), replaced_.end());
    replaced_.clear();
    directoryChain_.clear();
    miniFatChain_.clear();
    miniStreamChain_.clear();
    if (onDisk_) {
        const auto header = Header::decode(header_);
        directoryChain_ = chainFrom(header->firstDirectorySector);
        if (header->miniFatPages > 0)
            miniFatChain_ = chainFrom(header->firstMiniFatSector);
        if (directory.size(0) > 0)
            miniStreamChain_ = chainFrom(directory.start(0));
    }
}

/// Of the tables' own chains, which are sound in a file that is written to.
std::vector<std::uint32_t> Tables::chainFrom(std::uint32_t first) const {
    std::vector<std::uint32_t> chain;
    for (std::uint32_t sector = first; sector != kEndOfChain; sector = fat.next(sector))
        chain.push_back(sector);
    return chain;
}

} // namespace quobrix::cfb
