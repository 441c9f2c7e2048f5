#include "compound/layout.h"

#include "texts/text.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

/// Who owns a sector: an entry's index, or one of these.
constexpr std::uint32_t kNobody = 0xFFFFFFFF;
constexpr std::uint32_t kStructure = 0xFFFFFFFE;

std::uint32_t marksIn(const Pages& table) { return table.count() * kMarksPerPage; }

/// Follows chains and notices when two of them, or two turns of one, meet in a sector, so that every walk ends.
class Claims {
public:
    /// MARKS: the table; COUNT: how many sectors there really are; MOST_SECTORS: how many there can ever be.
    Claims(const Pages& marks, std::uint32_t count, std::uint32_t mostSectors)
        : marks_(marks), owners_(count, kNobody), mostSectors_(mostSectors) {}

    /// False if the sector does not exist or has an owner; OTHER is then that owner, or kNobody.
    bool claim(std::uint32_t sector, std::uint32_t owner, std::uint32_t& other) {
        other = sector < owners_.size() ? owners_[sector] : kNobody;
        if (sector >= owners_.size() || other != kNobody)
            return false;
        owners_[sector] = owner;
        return true;
    }

    /// Claims the chain from FIRST and passes each sector to VISIT; false if it does not end where a chain should.
    template <class Visit>
    bool follow(std::uint32_t first, std::uint32_t owner, std::uint32_t& other, Visit visit) {
        other = kNobody;
        const std::uint32_t marks = marksIn(marks_);
        for (std::uint32_t sector = first; sector != kEndOfChain;) {
            if (!claim(sector, owner, other)) {
                if (sector >= owners_.size() && sector < mostSectors_)
                    astray_.insert(sector);
                return false;
            }
            const std::uint32_t next = sector < marks ? load32(marks_.at(std::size_t{4} * sector)) : kFreeSector;
            if (next == kFreeSector)
                claimedFree_.insert(sector);
            if (sector >= marks)
                return false;
            visit(sector);
            sector = next;
        }
        return true;
    }

    /// A damaged table may call a claimed sector free, or not reach it: it must not be given out even so.
    void keepIfFree(std::uint32_t sector) {
        if (sector >= marksIn(marks_) || load32(marks_.at(std::size_t{4} * sector)) == kFreeSector)
            claimedFree_.insert(sector);
    }

    /// Where chains lead that run past the end of the file.
    const std::set<std::uint32_t>& astray() const { return astray_; }
    const SectorSet& claimedFree() const { return claimedFree_; }

private:
    const Pages& marks_;
    std::vector<std::uint32_t> owners_;
    std::uint32_t mostSectors_;
    std::set<std::uint32_t> astray_;
    SectorSet claimedFree_;
};

class Loader {
public:
    explicit Loader(File& file) : file_(file) {}

    Result<Layout> load() {
        const auto size = file_.size();
        if (!size)
            return size.error();
        layout_.fileSize = *size;
        Bytes start(static_cast<std::size_t>(std::min<std::uint64_t>(*size, kSectorSize)));
        QUOBRIX_TRY(file_.readAt(0, start));
        auto header = Header::decode(start);
        if (!header)
            return header.error();
        header_ = *header;
        std::copy(start.begin(), start.end(), layout_.header.begin());
        // A last sector that is not all there counts: a stream may end within it.
        sectors_ = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(unitsOf(*size - kSectorSize, kSectorSize), kMostSectors));

        QUOBRIX_TRY(readFat());
        QUOBRIX_TRY(readDirectory());
        QUOBRIX_TRY(readMiniFat());
        checkStreams();
        layout_.claimed = claims_->claimedFree();
        layout_.claimedMini = miniClaims_->claimedFree();
        layout_.avoided = claims_->astray();
        layout_.avoidedMini = miniClaims_->astray();
        return std::move(layout_);
    }

private:
    /// The sectors' content in that order, read in as few calls as their neighbourhood allows; a page of marks that
    /// say so for those that are lost.
    Result<Pages> readSectors(const std::vector<std::uint32_t>& sectors) {
        Pages pages;
        for (std::size_t i = 0; i < sectors.size();) {
            std::uint32_t count = 1;
            while (count < pages.room() && i + count < sectors.size() && sectors[i] != kUnknownSector &&
                   sectors[i + count] == sectors[i] + count)
                ++count;
            const std::span<std::uint8_t> part = pages.append(count);
            if (sectors[i] != kUnknownSector)
                QUOBRIX_TRY(file_.readAt(sectorOffset(sectors[i]), part));
            else
                for (std::size_t at = 0; at < part.size(); at += 4)
                    store32(part.data() + at, kUnknownSector);
            i += count;
        }
        return pages;
    }

    /// Where a table speaks of sectors that do not exist, the file has been cut short. What it grows by later must not
    /// pass for what has been lost.
    void expectFreeFrom(const Pages& table, std::uint32_t first) {
        for (std::uint32_t sector = first; sector < marksIn(table) && !layout_.incomplete; ++sector)
            layout_.incomplete = load32(table.at(std::size_t{4} * sector)) != kFreeSector;
    }

    /// The same where the POSITION-th sector of a content of SIZE bytes is not there as far as it belongs to it.
    void expectThere(std::uint32_t sector, std::uint64_t position, std::uint64_t size) {
        const std::uint64_t before = std::min(size, position * kSectorSize);
        if (sectorOffset(sector) + std::min<std::uint64_t>(size - before, kSectorSize) > layout_.fileSize)
            layout_.incomplete = true;
    }

    bool wholeSector(std::uint32_t sector) const {
        return sector < sectors_ && sectorOffset(sector) + kSectorSize <= layout_.fileSize;
    }

    Result<void> readFat() {
        // The list of the FAT's pages: the header's part, then a chain of sectors that carries its own links.
        claims_ = std::make_unique<Claims>(layout_.fat, sectors_, kMostSectors);
        std::vector<std::uint32_t> list(header_.fatSectors.begin(), header_.fatSectors.end());
        std::uint32_t other = kNobody;
        for (std::uint32_t next = header_.firstDifatSector;
             next != kEndOfChain && next != kFreeSector && list.size() < header_.fatPages;) {
            if (!wholeSector(next) || !claims_->claim(next, kStructure, other)) {
                layout_.incomplete = true;
                break;
            }
            layout_.difatSectors.push_back(next);
            const auto page = readSectors({next});
            if (!page)
                return page.error();
            for (std::size_t i = 0; i < kSectorSize; i += 4)
                list.push_back(load32(page->at(i)));
            next = list.back();
            list.pop_back();
        }
        if (list.size() > header_.fatPages)
            list.resize(header_.fatPages);
        // A page that cannot be where the list says is lost. Lost pages count only as far as the file reaches, so
        // that a list of nonsense costs no memory.
        std::vector<std::uint32_t> present;
        const std::uint32_t useful = unitsOf(sectors_, kMarksPerPage);
        for (const std::uint32_t sector : list) {
            const bool there = wholeSector(sector) && claims_->claim(sector, kStructure, other);
            if (there)
                present.push_back(sector);
            else
                layout_.incomplete = true;
            if (there || layout_.fatSectors.size() < useful)
                layout_.fatSectors.push_back(there ? sector : kUnknownSector);
        }
        if (present.empty())
            return Error{ErrorKind::Corrupt, text(TextId::NoSectorAllocationTable)};
        if (list.size() < header_.fatPages)
            layout_.incomplete = true;
        auto content = readSectors(layout_.fatSectors);
        if (!content)
            return content.error();
        layout_.fat = *std::move(content);
        expectFreeFrom(layout_.fat, sectors_);
        for (const std::uint32_t sector : present)
            claims_->keepIfFree(sector);
        for (const std::uint32_t sector : layout_.difatSectors)
            claims_->keepIfFree(sector);
        return {};
    }

    /// The sectors of one of the file's own chains, as far as it is sound.
    std::vector<std::uint32_t> structureChain(std::uint32_t first) {
        std::vector<std::uint32_t> chain;
        std::uint32_t other = kNobody;
        if (!claims_->follow(first, kStructure, other, [&](std::uint32_t sector) { chain.push_back(sector); }))
            layout_.incomplete = true;
        return chain;
    }

    /// The same for a chain that is read whole.
    Result<Pages> readChain(std::uint32_t first, std::vector<std::uint32_t>& chain) {
        chain = structureChain(first);
        while (!chain.empty() && !wholeSector(chain.back())) {
            chain.pop_back();
            layout_.incomplete = true;
        }
        return readSectors(chain);
    }

    Result<void> readDirectory() {
        auto content = readChain(header_.firstDirectorySector, layout_.directoryChain);
        if (!content)
            return content.error();
        layout_.directory = *std::move(content);
        if (layout_.directory.count() == 0)
            return Error{ErrorKind::Corrupt, text(TextId::NoDirectory)};
        rootLost_ = *layout_.directory.at(entry::kType) != static_cast<std::uint8_t>(EntryType::Root);
        if (rootLost_) {
            layout_.incomplete = true;
            std::uint8_t* root = layout_.directory.change(0);
            std::fill_n(root, kEntrySize, std::uint8_t{0});
            root[entry::kType] = static_cast<std::uint8_t>(EntryType::Root);
            for (const std::uint32_t link : {entry::kLeft, entry::kRight, entry::kChild})
                store32(root + link, kNoEntry); // so that the directory lists what it finds
        }
        return {};
    }

    /// Where the mini stream begins, whose only witness is the root entry, if that is lost: the one chain that nothing
    /// leads to and that has room for the mini sectors in USE. Nowhere if there are several.
    std::uint32_t lostMiniStream(std::uint32_t used) {
        const std::uint32_t count = std::min(marksIn(layout_.fat), sectors_);
        const auto next = [&](std::uint32_t sector) { return load32(layout_.fat.at(std::size_t{4} * sector)); };
        std::vector<bool> led(count);
        const auto lead = [&](std::uint32_t to) {
            if (to < count)
                led[to] = true;
        };
        for (std::uint32_t sector = 0; sector < count; ++sector)
            lead(next(sector));
        lead(header_.firstDirectorySector);
        lead(header_.firstMiniFatSector);
        for (std::uint32_t index = 1; index < layout_.directory.count() * kEntriesPerPage; ++index) {
            const std::uint8_t* at = layout_.directory.at(std::size_t{index} * kEntrySize);
            if (at[entry::kType] == static_cast<std::uint8_t>(EntryType::Stream) &&
                load32(at + entry::kSize) >= kMiniCutoff)
                lead(load32(at + entry::kStart));
        }
        std::uint32_t found = kEndOfChain;
        std::vector<bool> seen(count);
        for (std::uint32_t first = 0; first < count; ++first) {
            std::uint32_t length = 0, sector = first;
            for (; !led[first] && sector < count && !seen[sector]; sector = next(sector), ++length)
                seen[sector] = true;
            if (length == 0 || sector != kEndOfChain || length < unitsOf(used, kMiniSectorsPerPage))
                continue;
            if (found != kEndOfChain)
                return kEndOfChain;
            found = first;
        }
        return found;
    }

    Result<void> readMiniFat() {
        std::uint8_t* root = layout_.directory.change(0);
        if (load32(root + entry::kSize) > 0)
            layout_.miniStreamChain = structureChain(load32(root + entry::kStart));
        if (header_.miniFatPages > 0) {
            auto content = readChain(header_.firstMiniFatSector, layout_.miniFatChain);
            if (!content)
                return content.error();
            layout_.miniFat = *std::move(content);
        }
        std::uint32_t used = marksIn(layout_.miniFat);
        while (used > 0 && load32(layout_.miniFat.at(std::size_t{4} * (used - 1))) == kFreeSector)
            --used;
        if (rootLost_ && used > 0) {
            layout_.miniStreamChain = structureChain(lostMiniStream(used));
            store32(root + entry::kSize, static_cast<std::uint32_t>(layout_.miniStreamChain.size() * kSectorSize));
        }
        const auto there = static_cast<std::uint32_t>(layout_.miniStreamChain.size()) * kMiniSectorsPerPage;
        expectFreeFrom(layout_.miniFat, there);
        // Whatever the root entry says: a page whose end is missing may only lack what is not used.
        used = std::min(used, there);
        const std::uint64_t size =
            std::max<std::uint64_t>(load32(root + entry::kSize), std::uint64_t{used} * kMiniSectorSize);
        for (std::size_t i = 0; i < layout_.miniStreamChain.size(); ++i)
            expectThere(layout_.miniStreamChain[i], i, size);
        miniClaims_ =
            std::make_unique<Claims>(layout_.miniFat, std::min(marksIn(layout_.miniFat), there), kMostMiniSectors);
        return {};
    }

    void checkStreams() {
        for (std::uint32_t index = 1; index < layout_.directory.count() * kEntriesPerPage; ++index) {
            const std::uint8_t* at = layout_.directory.at(std::size_t{index} * kEntrySize);
            const std::uint32_t size = load32(at + entry::kSize);
            if (at[entry::kType] != static_cast<std::uint8_t>(EntryType::Stream) || size == 0)
                continue;
            const bool mini = size < kMiniCutoff;
            std::uint32_t found = 0;
            std::uint32_t other = kNobody;
            const bool sound = (mini ? *miniClaims_ : *claims_)
                                   .follow(load32(at + entry::kStart), index, other, [&](std::uint32_t sector) {
                                       if (!mini)
                                           expectThere(sector, found, size);
                                       ++found;
                                   });
            if (!sound || found < unitsOf(size, mini ? kMiniSectorSize : kSectorSize))
                layout_.damaged.insert(index);
            if (!sound && other < kStructure)
                layout_.damaged.insert(other);
        }
    }

    File& file_;
    Layout layout_;
    Header header_;
    std::uint32_t sectors_ = 0; ///< in the file
    bool rootLost_ = false;     ///< the first entry of the directory
    std::unique_ptr<Claims> claims_;
    std::unique_ptr<Claims> miniClaims_;
};

} // namespace

Result<Layout> readLayout(File& file) { return Loader(file).load(); }

} // namespace quobrix::cfb
