#include "document/compound_file.h"

#include "document/compound_allocation.h"
#include "document/compound_directory.h"
#include "document/compound_io.h"
#include "document/compound_layout.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace quobrix {

namespace {

using namespace cfb;

/// Why a crash cannot hurt: the header sector is the root of everything. It leads to the directory, the mini FAT and,
/// by way of the DIFAT, to the FAT, and these lead to every stream. No sector that the header on disk leads to is ever
/// written (AllocationTable knows them as held). What changes goes to free sectors, together with new copies of all
/// table and directory pages that speak of it, up to the header itself; a flush makes them durable; then one write of
/// 512 bytes, which a disk does wholly or not at all, turns to the new state. Until it has happened the old state is
/// there untouched, whatever became of the other writes and in whatever order they arrived. Sectors of the old state
/// are reused only after the new header is durable.
///
/// In memory the new state is simply the current one: allocation tables, directory and chains are changed at once, and
/// "dirty" marks what the disk does not have yet. Marks and contents are kept until a flush has succeeded, so a failed
/// commit loses nothing and can be repeated.
class CompoundFileEngine final : public CompoundFile {
public:
    /// A new file.
    explicit CompoundFileEngine(std::unique_ptr<File> file)
        : file_(std::move(file)), headerOnDisk_(newHeader()), changed_(true) {}

    CompoundFileEngine(std::unique_ptr<File> file, Layout layout)
        : file_(std::move(file)), fileSize_(layout.fileSize), committedSize_(layout.fileSize),
          headerOnDisk_(layout.header), headerExists_(true), directory_(std::move(layout.directory)),
          damaged_(std::move(layout.damaged)), incomplete_(layout.incomplete),
          fatSectors_(std::move(layout.fatSectors)), difatSectors_(std::move(layout.difatSectors)),
          directoryChain_(std::move(layout.directoryChain)), miniFatChain_(std::move(layout.miniFatChain)),
          miniStreamChain_(std::move(layout.miniStreamChain)) {
        fat_.load(std::move(layout.fat), layout.claimed, std::move(layout.avoided));
        miniFat_.load(std::move(layout.miniFat), layout.claimedMini, std::move(layout.avoidedMini));
        transaction_ = Header::decode(headerOnDisk_)->transaction;
    }

    bool contains(std::string_view name) const override {
        const std::lock_guard lock(mutex_);
        return findStream(name) != kNoEntry;
    }

    std::vector<std::string> names() const override {
        const std::lock_guard lock(mutex_);
        std::vector<std::string> names;
        for (const std::uint32_t index : directory_.members())
            if (directory_.isStream(index))
                names.push_back(directory_.name(index).text());
        return names;
    }

    Result<Bytes> read(std::string_view name) const override {
        const std::lock_guard lock(mutex_);
        const std::uint32_t index = findStream(name);
        if (index == kNoEntry)
            return Error{ErrorKind::NotFound, "stream " + std::string(name)};
        if (const auto pending = pending_.find(index); pending != pending_.end())
            return pending->second.content;
        if (damaged_.contains(index))
            return Error{ErrorKind::Corrupt, "stream " + std::string(name) + ": broken sector chain"};
        Bytes content(directory_.size(index));
        auto done = content.size() < kMiniCutoff ? readMini(directory_.start(index), content)
                                                 : readLarge(directory_.start(index), content);
        if (!done)
            return Error{done.error().kind, "stream " + std::string(name) + ": " + done.error().detail};
        return content;
    }

    void write(std::string_view name, Bytes content) override {
        const std::lock_guard lock(mutex_);
        changed_ = true;
        const auto entryName = EntryName::fromText(name);
        // MS-CFB keeps four characters out of names; and a storage cannot become a stream.
        std::uint32_t index = entryName ? directory_.find(*entryName) : kNoEntry;
        if (!entryName || name.find_first_of("/\\:!") != std::string_view::npos || content.size() > kMostBytes ||
            (index != kNoEntry && !directory_.isStream(index))) {
            refused_ = std::string(name);
            return;
        }
        if (index == kNoEntry)
            index = directory_.insert(*entryName);
        else
            releaseContent(index);
        pending_[index] = {std::move(content), false};
    }

    void remove(std::string_view name) override {
        const std::lock_guard lock(mutex_);
        if (refused_ == name)
            refused_.reset();
        const std::uint32_t index = findStream(name);
        if (index == kNoEntry)
            return;
        changed_ = true;
        releaseContent(index);
        directory_.erase(index);
    }

    Result<void> spill() override {
        const std::lock_guard lock(mutex_);
        QUOBRIX_TRY(mayWrite());
        QUOBRIX_TRY(placeContents());
        WriteBatch batch;
        addContents(batch);
        if (batch.empty())
            return {};
        QUOBRIX_TRY(writeDurably(batch));
        forgetContents();
        return {};
    }

    Result<void> commit() override {
        const std::lock_guard lock(mutex_);
        if (!changed_)
            return {};
        QUOBRIX_TRY(mayWrite());
        QUOBRIX_TRY(placeContents());
        QUOBRIX_TRY(movePages(miniFatChain_, miniFat_.dirtyPages(), miniFat_.pageCount()));
        directory_.setContent(0, miniStreamChain_.empty() ? kEndOfChain : miniStreamChain_.front(),
                              static_cast<std::uint32_t>(miniStreamChain_.size() * kSectorSize));
        QUOBRIX_TRY(movePages(directoryChain_, directory_.dirtyPages(), directory_.pageCount()));
        QUOBRIX_TRY(settleFat());

        WriteBatch batch;
        addContents(batch);
        for (const std::uint32_t page : miniFat_.dirtyPages())
            batch.add(miniFatChain_[page], miniFat_.page(page));
        for (const std::uint32_t page : directory_.dirtyPages())
            batch.add(directoryChain_[page], directory_.page(page));
        for (const std::uint32_t page : fat_.dirtyPages())
            batch.add(fatSectors_[page], fat_.page(page));
        if (difatDirty_)
            for (std::uint32_t page = 0; page < difatSectors_.size(); ++page)
                batch.add(difatSectors_[page], difatPage(page));
        QUOBRIX_TRY(writeDurably(batch));
        forgetContents();
        miniFat_.clearDirty();
        directory_.clearDirty();
        fat_.clearDirty();
        difatDirty_ = false;

        return turnHeader();
    }

    Result<void> writable() const override {
        if (incomplete_)
            return Error{ErrorKind::Corrupt, "allocation tables or directory are damaged; the file can only be read"};
        return {};
    }

    Result<void> copyTo(File& target) const override {
        Snapshot source(*this);
        Bytes block(1 << 20);
        for (std::uint64_t offset = 0; offset < *source.size(); offset += block.size()) {
            const auto size = std::min<std::uint64_t>(block.size(), *source.size() - offset);
            const auto part = std::span(block).first(static_cast<std::size_t>(size));
            QUOBRIX_TRY(source.readAt(offset, part));
            QUOBRIX_TRY(target.writeAt(offset, part));
        }
        return target.flush(); // a later commit flushes only what it changes
    }

    Result<void> compactTo(File& target) const override {
        constexpr std::size_t kSpillBytes = 4 << 20;
        auto snapshot = std::make_unique<Snapshot>(*this);
        auto layout = readLayout(*snapshot);
        if (!layout)
            return layout.error();
        const CompoundFileEngine source(std::move(snapshot), *std::move(layout));
        QUOBRIX_TRY(source.writable());
        QUOBRIX_TRY(source.directory_.onlyStreams());
        auto created = create(std::make_unique<BorrowedFile>(target));
        if (!created)
            return created.error();
        auto& compact = static_cast<CompoundFileEngine&>(**created);
        compact.directory_.copyAttributes(0, source.directory_, 0);
        const std::vector<std::uint32_t> members = source.directory_.members();
        std::size_t inMemory = 0;
        for (const bool mini : {true, false})
            for (const std::uint32_t index : members) {
                if ((source.directory_.size(index) < kMiniCutoff) != mini)
                    continue;
                const std::string name = source.directory_.name(index).text();
                auto content = source.read(name);
                if (!content)
                    return content.error();
                inMemory += content->size();
                compact.write(name, *std::move(content));
                if (const std::uint32_t copied = compact.findStream(name); copied != kNoEntry)
                    compact.directory_.copyAttributes(copied, source.directory_, index);
                if (inMemory >= kSpillBytes) {
                    QUOBRIX_TRY(compact.spill());
                    inMemory = 0;
                }
            }
        return compact.commit();
    }

    Space space() const override {
        const std::lock_guard lock(mutex_);
        const std::uint64_t sectors = unitsOf(fileSize_ - std::min<std::uint64_t>(fileSize_, kSectorSize), kSectorSize);
        const std::uint64_t beyond = sectors - std::min<std::uint64_t>(sectors, fat_.end());
        return {fileSize_,
                (fat_.freeCount() + beyond) * kSectorSize + std::uint64_t{miniFat_.freeCount()} * kMiniSectorSize};
    }

private:
    static constexpr std::uint32_t kMostBytes = 0x7FFFFFFF; // of a stream, by version 3 of the format
    static constexpr std::uint32_t kNowhere = kFreeSector;  // the place of a page that has none yet

    /// The committed state as a file of its own, whatever happens to the engine's meanwhile: while one lives, no
    /// sector of it is used for anything else.
    class Snapshot final : public File {
    public:
        explicit Snapshot(const CompoundFileEngine& engine) : engine_(engine) {
            const std::lock_guard lock(engine_.mutex_);
            header_ = engine_.headerOnDisk_;
            size_ = engine_.committedSize_;
            ++engine_.snapshots_;
        }
        ~Snapshot() override {
            const std::lock_guard lock(engine_.mutex_);
            --engine_.snapshots_;
        }
        Snapshot(const Snapshot&) = delete;
        Snapshot& operator=(const Snapshot&) = delete;

        Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
            if (offset > size_ || out.size() > size_ - offset)
                return Error{ErrorKind::Corrupt, "the file ends at byte " + std::to_string(size_)};
            const std::lock_guard lock(engine_.mutex_); // for each part, so that others need not wait for a whole copy
            QUOBRIX_TRY(engine_.file_->readAt(offset, out));
            if (offset < header_.size())
                std::copy_n(header_.begin() + static_cast<std::ptrdiff_t>(offset),
                            std::min<std::size_t>(out.size(), header_.size() - offset), out.begin());
            return {};
        }
        Result<std::uint64_t> size() override { return size_; }
        Result<void> writeAt(std::uint64_t, ByteView) override { return refused(); }
        Result<void> resize(std::uint64_t) override { return refused(); }
        Result<void> flush() override { return refused(); }

    private:
        static Error refused() { return {ErrorKind::ReadOnly, "a past state of a file"}; }

        const CompoundFileEngine& engine_;
        Sector header_{};
        std::uint64_t size_ = 0;
    };

    struct Pending {
        Bytes content;
        bool placed = false; ///< has its sectors, but they may not be durable yet
    };

    std::uint32_t findStream(std::string_view name) const {
        const auto entryName = EntryName::fromText(name);
        const std::uint32_t index = entryName ? directory_.find(*entryName) : kNoEntry;
        return index != kNoEntry && directory_.isStream(index) ? index : kNoEntry;
    }

    Result<void> mayWrite() const {
        QUOBRIX_TRY(writable());
        if (refused_)
            return Error{ErrorKind::Unsupported, "stream " + *refused_ + " cannot be written"};
        return {};
    }

    // Reading

    Result<void> readFile(std::uint64_t offset, std::span<std::uint8_t> out) const {
        return cache_.read(*file_, fileSize_, offset, out);
    }

    /// The content of one mini-stream page from byte WITHIN on.
    Result<void> readMiniPage(std::uint32_t page, std::uint32_t within, std::span<std::uint8_t> out) const {
        if (const auto changed = miniPages_.find(page); changed != miniPages_.end()) {
            std::copy_n(changed->second->begin() + within, out.size(), out.begin());
            return {};
        }
        return readFile(sectorOffset(miniStreamChain_[page]) + within, out);
    }

    Result<void> readMini(std::uint32_t sector, std::span<std::uint8_t> out) const {
        while (!out.empty()) {
            // As many neighbours as lie in one page.
            const std::uint32_t first = sector;
            std::uint32_t count = 1;
            while ((sector = miniFat_.next(sector)) == first + count && sector % kMiniSectorsPerPage != 0)
                ++count;
            const std::size_t size = std::min<std::size_t>(out.size(), std::size_t{count} * kMiniSectorSize);
            QUOBRIX_TRY(readMiniPage(first / kMiniSectorsPerPage, first % kMiniSectorsPerPage * kMiniSectorSize,
                                     out.first(size)));
            out = out.subspan(size);
        }
        return {};
    }

    Result<void> readLarge(std::uint32_t sector, std::span<std::uint8_t> out) const {
        while (!out.empty()) {
            const std::uint32_t first = sector;
            std::uint32_t count = 1;
            while ((sector = fat_.next(sector)) == first + count)
                ++count;
            const std::size_t size = std::min<std::size_t>(out.size(), std::size_t{count} * kSectorSize);
            QUOBRIX_TRY(readFile(sectorOffset(first), out.first(size)));
            out = out.subspan(size);
        }
        return {};
    }

    // Changing

    /// Gives back the sectors of a stream. Those of a damaged one are nobody's from now on: they may be another's too.
    void releaseContent(std::uint32_t index) {
        const auto pending = pending_.find(index);
        const bool unplaced = pending != pending_.end() && !pending->second.placed;
        if (damaged_.erase(index) == 0 && !unplaced && directory_.size(index) > 0)
            (directory_.size(index) < kMiniCutoff ? miniFat_ : fat_).releaseChain(directory_.start(index));
        directory_.setContent(index, kEndOfChain, 0);
        if (pending != pending_.end())
            pending_.erase(pending);
    }

    /// Finds sectors for everything pending, and for the mini-stream pages that changed.
    Result<void> placeContents() {
        for (auto next = pending_.begin(); next != pending_.end();) {
            const auto pending = next++;
            const std::uint32_t index = pending->first;
            const Bytes& content = pending->second.content;
            if (pending->second.placed)
                continue;
            const auto size = static_cast<std::uint32_t>(content.size());
            if (size > 0 && size < kMiniCutoff) {
                const auto start = placeMini(content);
                if (!start)
                    return start.error();
                directory_.setContent(index, *start, size);
            } else if (size > 0) {
                const auto runs = fat_.allocate(unitsOf(size, kSectorSize));
                if (!runs)
                    return runs.error();
                directory_.setContent(index, runs->front().first, size);
                pending->second.placed = true;
                continue;
            }
            pending_.erase(pending);
        }
        std::vector<std::uint32_t> changed;
        for (const auto& [page, content] : miniPages_)
            changed.push_back(page);
        std::sort(changed.begin(), changed.end());
        return movePages(miniStreamChain_, changed, unitsOf(miniFat_.end(), kMiniSectorsPerPage));
    }

    /// Copies CONTENT into mini-stream pages in memory; returns its first mini sector.
    Result<std::uint32_t> placeMini(ByteView content) {
        const std::uint32_t pagesBefore = unitsOf(miniFat_.end(), kMiniSectorsPerPage);
        const auto runs = miniFat_.allocate(unitsOf(static_cast<std::uint32_t>(content.size()), kMiniSectorSize));
        if (!runs)
            return runs.error();
        const std::uint32_t start = runs->front().first;
        for (const Run& run : *runs)
            for (std::uint32_t sector = run.first; sector < run.first + run.count; ++sector) {
                const auto page = miniPage(sector / kMiniSectorsPerPage, pagesBefore);
                if (!page) {
                    miniFat_.releaseChain(start);
                    return page.error();
                }
                const std::size_t size = std::min<std::size_t>(content.size(), kMiniSectorSize);
                std::copy_n(content.begin(), size, (*page)->begin() + sector % kMiniSectorsPerPage * kMiniSectorSize);
                content = content.subspan(size);
            }
        return start;
    }

    /// A page of the mini stream in memory, to be changed: with its other streams' content if it had any.
    Result<Sector*> miniPage(std::uint32_t index, std::uint32_t pagesBefore) {
        std::unique_ptr<Sector>& page = miniPages_[index];
        if (!page) {
            auto fresh = std::make_unique<Sector>();
            if (index < pagesBefore && index < miniStreamChain_.size())
                if (auto done = readFile(sectorOffset(miniStreamChain_[index]), *fresh); !done) {
                    miniPages_.erase(index);
                    return done.error();
                }
            page = std::move(fresh);
        }
        return page.get();
    }

    /// Sees to it that CHAIN has COUNT pages and that none of the changed pages lies in a held sector.
    Result<void> movePages(std::vector<std::uint32_t>& chain, const std::vector<std::uint32_t>& changed,
                           std::uint32_t count) {
        if (chain.size() < count)
            chain.resize(count, kNowhere);
        std::vector<std::uint32_t> moving;
        for (const std::uint32_t page : changed)
            if (chain[page] != kNowhere && fat_.held(chain[page]))
                moving.push_back(page);
        for (std::uint32_t page = count; page-- > 0 && chain[page] == kNowhere;)
            moving.push_back(page);
        if (moving.empty())
            return {};
        std::sort(moving.begin(), moving.end());
        const auto runs = fat_.allocate(static_cast<std::uint32_t>(moving.size()));
        if (!runs) {
            while (!chain.empty() && chain.back() == kNowhere)
                chain.pop_back();
            return runs.error();
        }
        auto page = moving.begin();
        for (const Run& run : *runs)
            for (std::uint32_t i = 0; i < run.count; ++i, ++page) {
                if (chain[*page] != kNowhere)
                    fat_.release(chain[*page]);
                chain[*page] = run.first + i;
            }
        for (const std::uint32_t moved : moving) {
            fat_.setNext(chain[moved], moved + 1 < chain.size() ? chain[moved + 1] : kEndOfChain);
            if (moved > 0)
                fat_.setNext(chain[moved - 1], chain[moved]);
        }
        return {};
    }

    /// Finds new places for the pages of the FAT that changed, and for the list of them. Moving a page changes the
    /// FAT again; each page moves at most once, so this comes to an end.
    Result<void> settleFat() {
        for (;;) {
            fatSectors_.resize(std::max<std::size_t>(fatSectors_.size(), fat_.pageCount()), kNowhere);
            const auto listed = static_cast<std::uint32_t>(fatSectors_.size());
            const std::uint32_t lists =
                listed > kFatPagesInHeader ? unitsOf(listed - kFatPagesInHeader, kFatPagesPerDifat) : 0;
            difatDirty_ = difatDirty_ || lists > difatSectors_.size();
            difatSectors_.resize(std::max<std::size_t>(difatSectors_.size(), lists), kNowhere);

            std::vector<std::uint32_t*> moving;
            const auto consider = [&](std::uint32_t& place) {
                if (place == kNowhere || fat_.held(place))
                    moving.push_back(&place);
            };
            for (const std::uint32_t page : fat_.dirtyPages())
                consider(fatSectors_[page]);
            const std::size_t fatPagesMoving = moving.size();
            for (std::size_t i = 0; i < fatPagesMoving; ++i)
                difatDirty_ = difatDirty_ || moving[i] >= fatSectors_.data() + kFatPagesInHeader;
            if (difatDirty_)
                for (std::uint32_t& place : difatSectors_)
                    consider(place);
            if (moving.empty())
                return {};
            const auto runs = fat_.allocate(static_cast<std::uint32_t>(moving.size()));
            if (!runs)
                return runs.error();
            std::size_t moved = 0;
            for (const Run& run : *runs)
                for (std::uint32_t i = 0; i < run.count; ++i, ++moved) {
                    std::uint32_t& place = *moving[moved];
                    if (place != kNowhere)
                        fat_.release(place);
                    place = run.first + i;
                    fat_.setNext(place, moved < fatPagesMoving ? kFatSector : kDifatSector);
                }
        }
    }

    Sector difatPage(std::uint32_t index) const {
        Sector sector;
        for (std::uint32_t i = 0; i < kFatPagesPerDifat; ++i) {
            const std::size_t page = kFatPagesInHeader + std::size_t{index} * kFatPagesPerDifat + i;
            store32(sector.data() + 4 * i, page < fatSectors_.size() ? fatSectors_[page] : kFreeSector);
        }
        store32(sector.data() + 4 * kFatPagesPerDifat,
                index + 1 < difatSectors_.size() ? difatSectors_[index + 1] : kEndOfChain);
        return sector;
    }

    // Writing

    void addContents(WriteBatch& batch) const {
        for (const auto& [page, content] : miniPages_)
            batch.add(miniStreamChain_[page], ByteView(*content));
        for (const auto& [index, pending] : pending_) {
            ByteView rest = pending.content;
            std::uint32_t sector = directory_.start(index);
            while (pending.placed && !rest.empty()) {
                const std::uint32_t first = sector;
                std::uint32_t count = 1;
                while ((sector = fat_.next(sector)) == first + count)
                    ++count;
                const std::size_t size = std::min<std::size_t>(rest.size(), std::size_t{count} * kSectorSize);
                batch.add(first, rest.first(size));
                rest = rest.subspan(size);
            }
        }
    }

    /// What addContents() listed is durable: the disk has it.
    void forgetContents() {
        miniPages_.clear();
        std::erase_if(pending_, [](const auto& pending) { return pending.second.placed; });
    }

    Result<void> writeDurably(WriteBatch& batch) {
        cache_.clear();
        auto done = batch.write(*file_);
        if (const auto size = file_->size())
            fileSize_ = *size;
        if (!done)
            return done;
        return file_->flush();
    }

    Header currentHeader() const {
        Header header;
        header.fatPages = static_cast<std::uint32_t>(fatSectors_.size());
        header.firstDirectorySector = directoryChain_.front();
        header.transaction = transaction_ + 1;
        header.firstMiniFatSector = miniFatChain_.empty() ? kEndOfChain : miniFatChain_.front();
        header.miniFatPages = static_cast<std::uint32_t>(miniFatChain_.size());
        header.firstDifatSector = difatSectors_.empty() ? kEndOfChain : difatSectors_.front();
        header.difatPages = static_cast<std::uint32_t>(difatSectors_.size());
        for (std::uint32_t i = 0; i < kFatPagesInHeader; ++i)
            header.fatSectors[i] = i < fatSectors_.size() ? fatSectors_[i] : kFreeSector;
        return header;
    }

    /// The moment of the commit. If it fails nobody knows which header the disk has in the end, so the sectors of
    /// both stay held; the old one is put back as well as may be.
    Result<void> turnHeader() {
        const Sector header = currentHeader().encode(headerOnDisk_);
        fat_.holdAllocated();
        miniFat_.holdAllocated();
        cache_.clear();
        auto done = file_->writeAt(0, header);
        if (done)
            done = file_->flush();
        if (!done) {
            if (headerExists_ && file_->writeAt(0, headerOnDisk_))
                static_cast<void>(file_->flush());
            return done;
        }
        headerOnDisk_ = header;
        committedSize_ = fileSize_;
        headerExists_ = true;
        ++transaction_;
        if (snapshots_ == 0) // else the next commit without one does it
            fat_.releaseFreed();
        miniFat_.releaseFreed();
        changed_ = false;
        return {};
    }

    mutable std::mutex mutex_;
    std::unique_ptr<File> file_;
    std::uint64_t fileSize_ = 0;      ///< bytes
    std::uint64_t committedSize_ = 0; ///< bytes; what spills have appended does not count
    mutable std::uint32_t snapshots_ = 0;
    mutable ReadCache cache_;

    Sector headerOnDisk_;
    bool headerExists_ = false;
    std::uint32_t transaction_ = 0;

    Directory directory_;
    std::unordered_set<std::uint32_t> damaged_; ///< streams (by entry) that cannot be read
    bool incomplete_ = false;
    bool changed_ = false;                     ///< something is not committed
    std::optional<std::string> refused_;       ///< a stream that could not be taken
    std::map<std::uint32_t, Pending> pending_; ///< by entry: contents that are not durable

    AllocationTable fat_{kMostSectors};
    AllocationTable miniFat_{kMostMiniSectors};
    std::vector<std::uint32_t> fatSectors_;
    std::vector<std::uint32_t> difatSectors_;
    bool difatDirty_ = false;
    std::vector<std::uint32_t> directoryChain_;
    std::vector<std::uint32_t> miniFatChain_;
    std::vector<std::uint32_t> miniStreamChain_;
    std::unordered_map<std::uint32_t, std::unique_ptr<Sector>> miniPages_; ///< changed, not durable
};

} // namespace

Result<std::unique_ptr<CompoundFile>> CompoundFile::open(std::unique_ptr<File> file) {
    auto layout = readLayout(*file);
    if (!layout)
        return layout.error();
    return std::unique_ptr<CompoundFile>(std::make_unique<CompoundFileEngine>(std::move(file), *std::move(layout)));
}

Result<std::unique_ptr<CompoundFile>> CompoundFile::create(std::unique_ptr<File> file) {
    const auto size = file->size();
    if (!size)
        return size.error();
    if (*size != 0)
        return Error{ErrorKind::Io, "a new compound file needs an empty file"};
    return std::unique_ptr<CompoundFile>(std::make_unique<CompoundFileEngine>(std::move(file)));
}

} // namespace quobrix
