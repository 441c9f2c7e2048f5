#include "compound/compound_file.h"

#include "compound/engine.h"
#include "compound/previous_state.h"
#include "texts/text.h"

#include <algorithm>

namespace quobrix {

namespace cfb {

namespace {

constexpr std::uint32_t kMostBytes = 0x7FFFFFFF; // of a stream, by version 3 of the format
/// Contents (bytes) that wait in memory: enough for calls worth making, and still in the processor's cache.
constexpr std::size_t kMostInMemory = 512 * 1024;

/// MS-CFB keeps four characters out of names. NUL would end one, and half a surrogate pair, which a garbled entry may
/// hold, is no text: other programs refuse the whole file for either.
bool hasForbidden(std::string_view name) {
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool surrogate = static_cast<unsigned char>(name[i]) == 0xED && i + 1 < name.size() &&
                               static_cast<unsigned char>(name[i + 1]) >= 0xA0;
        if (surrogate || name[i] == '\0' || std::string_view("/\\:!").find(name[i]) != std::string_view::npos)
            return true;
    }
    return false;
}

} // namespace

CompoundFileEngine::CompoundFileEngine(std::unique_ptr<File> file, Layout layout)
    : file_(std::move(file)), fileSize_(layout.fileSize), committedSize_(layout.fileSize), tables_(std::move(layout)),
      changed_(false) {}

bool CompoundFileEngine::contains(std::string_view name) const {
    const MutexLock lock(mutex_);
    return findStream(name) != kNoEntry;
}

std::vector<std::string> CompoundFileEngine::names() const {
    const MutexLock lock(mutex_);
    std::vector<std::string> names;
    for (const std::uint32_t index : tables_.directory.members())
        if (tables_.directory.isStream(index))
            names.push_back(tables_.directory.name(index).text());
    return names;
}

std::uint32_t CompoundFileEngine::findStream(std::string_view name) const {
    const auto field = NameField::fromText(name);
    const std::uint32_t index = field ? tables_.directory.find(field->name()) : kNoEntry;
    return index != kNoEntry && tables_.directory.isStream(index) ? index : kNoEntry;
}

CompoundFile::Space CompoundFileEngine::space() const {
    const MutexLock lock(mutex_);
    const std::uint64_t sectors = unitsOf(fileSize_ - std::min<std::uint64_t>(fileSize_, kSectorSize), kSectorSize);
    const std::uint64_t beyond = sectors - std::min<std::uint64_t>(sectors, tables_.fat.end());
    return {fileSize_, (tables_.fat.freeCount() + beyond) * kSectorSize +
                           std::uint64_t{tables_.miniFat.freeCount()} * kMiniSectorSize};
}

// Reading

Result<void> CompoundFileEngine::read(std::string_view name, Bytes& content) const {
    const MutexLock lock(mutex_);
    return readStream(name, content);
}

Result<void> CompoundFileEngine::readStream(std::string_view name, Bytes& content) const {
    const std::uint32_t index = findStream(name);
    if (index == kNoEntry)
        return Error{ErrorKind::NotFound, text(TextId::StreamNamed, name)};
    if (const auto pending = pending_.find(index); pending != pending_.end()) {
        content = pending->second;
        return {};
    }
    if (tables_.damaged(index))
        return Error{ErrorKind::Corrupt, text(TextId::StreamBrokenSectorChain, name)};
    const std::size_t size = tables_.directory.size(index);
    content.clear();
    content.reserve(size);
    auto done = size < kMiniCutoff ? readMini(tables_.directory.start(index), size, content)
                                   : readLarge(tables_.directory.start(index), size, content);
    if (!done)
        return Error{done.error().kind, text(TextId::StreamFault, name, done.error().detail)};
    return {};
}

Result<void> CompoundFileEngine::readMini(std::uint32_t sector, std::size_t size, Bytes& out) const {
    while (size > 0) {
        const std::uint32_t page = sector / kMiniSectorsPerPage, within = sector % kMiniSectorsPerPage;
        const Run run = tables_.miniFat.run(sector, kMiniSectorsPerPage - within);
        const std::size_t part = std::min<std::size_t>(size, std::size_t{run.count} * kMiniSectorSize);
        if (miniPages_.contains(page)) {
            const std::uint8_t* const first = miniPages_.at(page).data() + within * kMiniSectorSize;
            out.insert(out.end(), first, first + part);
        } else {
            const std::uint64_t offset = sectorOffset(tables_.miniStream()[page]) + within * kMiniSectorSize;
            QUOBRIX_TRY(cache_.read(*file_, fileSize_, offset, part, out));
        }
        size -= part;
        sector = tables_.miniFat.next(run.last());
    }
    return {};
}

Result<void> CompoundFileEngine::readLarge(std::uint32_t sector, std::size_t size, Bytes& out) const {
    while (size > 0) {
        const Run run = tables_.fat.run(sector);
        const std::size_t part = std::min<std::size_t>(size, std::size_t{run.count} * kSectorSize);
        QUOBRIX_TRY(cache_.read(*file_, fileSize_, sectorOffset(sector), part, out));
        size -= part;
        sector = tables_.fat.next(run.last());
    }
    return {};
}

// Changing

void CompoundFileEngine::write(std::string_view name, Bytes content) {
    const MutexLock changing(changing_);
    const MutexLock lock(mutex_);
    failed_.reset();
    changed_ = true;
    if (takenBack_ || tables_.incomplete())
        return; // the commit will say so
    auto taken = take(name, std::move(content));
    if (taken && pendingBytes_ + miniPages_.bytes() >= kMostInMemory)
        taken = writeContents();
    if (!taken) {
        rollBack(true);
        takenBack_ = taken.error();
    }
}

Result<void> CompoundFileEngine::take(std::string_view name, Bytes content) {
    const auto field = NameField::fromText(name);
    std::uint32_t index = field ? tables_.directory.find(field->name()) : kNoEntry;
    // A storage cannot become a stream.
    if (!field || hasForbidden(name) || content.size() > kMostBytes ||
        (index != kNoEntry && !tables_.directory.isStream(index)))
        return Error{ErrorKind::Unsupported, text(TextId::StreamCannotBeWritten, name)};
    if (index == kNoEntry)
        index = tables_.directory.insert(*field);
    dropPending(index);
    if (content.size() >= kMiniCutoff) {
        tables_.releaseContent(index);
        pendingBytes_ += content.size();
        pending_.emplace(index, std::move(content));
        return {};
    }
    QUOBRIX_TRY(tables_.resize(index, static_cast<std::uint32_t>(content.size())));
    return placeMini(tables_.directory.start(index), content);
}

void CompoundFileEngine::remove(std::string_view name) {
    const MutexLock changing(changing_);
    const MutexLock lock(mutex_);
    failed_.reset();
    if (findStream(name) == kNoEntry)
        return;
    changed_ = true;
    if (takenBack_ || tables_.incomplete())
        return;
    // In a damaged directory there may be several: none of them must come back.
    for (std::uint32_t index; (index = findStream(name)) != kNoEntry;) {
        dropPending(index);
        tables_.releaseContent(index);
        tables_.directory.erase(index);
    }
}

void CompoundFileEngine::dropPending(std::uint32_t index) {
    if (const auto pending = pending_.find(index); pending != pending_.end()) {
        pendingBytes_ -= pending->second.size();
        pending_.erase(pending);
    }
}

/// Copies CONTENT into the pages that hold the chain from SECTOR on; what it does not fill of the last one is zero.
Result<void> CompoundFileEngine::placeMini(std::uint32_t sector, ByteView content) {
    while (!content.empty()) {
        const std::uint32_t index = sector / kMiniSectorsPerPage;
        const auto page = miniPage(index);
        if (!page)
            return page.error();
        for (; !content.empty() && sector / kMiniSectorsPerPage == index; sector = tables_.miniFat.next(sector)) {
            const std::size_t size = std::min<std::size_t>(content.size(), kMiniSectorSize);
            std::uint8_t* const to = *page + sector % kMiniSectorsPerPage * kMiniSectorSize;
            std::fill(std::copy_n(content.begin(), size, to), to + kMiniSectorSize, std::uint8_t{0});
            content = content.subspan(size);
        }
    }
    return {};
}

/// A page of the mini stream in memory, to be changed: with its other streams' content if it had any.
Result<std::uint8_t*> CompoundFileEngine::miniPage(std::uint32_t index) {
    if (miniPages_.contains(index))
        return miniPages_.change(index);
    Bytes content;
    if (index < tables_.miniStream().size()) {
        // Another program's file may end with what is used of its last page.
        const std::uint64_t offset = sectorOffset(tables_.miniStream()[index]);
        const auto there =
            static_cast<std::size_t>(std::min<std::uint64_t>(kSectorSize, fileSize_ - std::min(fileSize_, offset)));
        QUOBRIX_TRY(cache_.read(*file_, fileSize_, offset, there, content));
    }
    std::uint8_t* const page = miniPages_.add(index);
    std::copy(content.begin(), content.end(), page);
    return page;
}

// Writing

Result<void> CompoundFileEngine::writable() const {
    const MutexLock lock(mutex_);
    return complete();
}

/// What a file must be that is written to.
Result<void> CompoundFileEngine::complete() const {
    if (tables_.incomplete())
        return Error{ErrorKind::Corrupt, text(TextId::AllocationTablesOrDirectoryAreDamaged)};
    return {};
}

/// Finds sectors for everything pending, and for the mini-stream pages that changed, and adds them to BATCH.
Result<void> CompoundFileEngine::placeContents(WriteBatch& batch) {
    for (const auto& [index, content] : pending_) {
        QUOBRIX_TRY(tables_.resize(index, static_cast<std::uint32_t>(content.size())));
        ByteView rest = content;
        for (std::uint32_t sector = tables_.directory.start(index); !rest.empty();) {
            const Run run = tables_.fat.run(sector);
            const std::size_t size = std::min<std::size_t>(rest.size(), std::size_t{run.count} * kSectorSize);
            batch.add(sector, rest.first(size));
            rest = rest.subspan(size);
            sector = tables_.fat.next(run.last());
        }
    }
    const std::vector<std::uint32_t> pages = miniPages_.pages();
    QUOBRIX_TRY(tables_.settleMiniStream(pages));
    for (const std::uint32_t page : pages)
        batch.add(tables_.miniStream()[page], miniPages_.at(page));
    return {};
}

/// Everything pending goes from memory to the file.
Result<void> CompoundFileEngine::writeContents() {
    WriteBatch batch;
    QUOBRIX_TRY(placeContents(batch));
    QUOBRIX_TRY(writeBatch(batch));
    file_->startFlush(batch.end()); // the disk works while the next contents are made
    return {};
}

/// Writes BATCH, contents included, which from then on are read from the file.
Result<void> CompoundFileEngine::writeBatch(WriteBatch& batch) {
    cache_.clear();
    QUOBRIX_TRY(batch.write(*file_));
    fileSize_ = std::max(fileSize_, batch.end());
    pending_.clear();
    pendingBytes_ = 0;
    miniPages_.clear();
    return {};
}

/// Readers need not wait for it.
Result<void> CompoundFileEngine::flush() {
    const MutexUnlock unlocked(mutex_);
    return file_->flush();
}

Result<void> CompoundFileEngine::spill() {
    const MutexLock changing(changing_);
    const MutexLock lock(mutex_);
    QUOBRIX_TRY(ready());
    return unlessFailed(writeContents(), true);
}

Result<void> CompoundFileEngine::commit() {
    const MutexLock changing(changing_);
    const MutexLock lock(mutex_);
    QUOBRIX_TRY(ready());
    if (!changed_)
        return {};
    bool certain = true;
    auto done = writeEverything();
    if (done)
        done = turnHeader(certain);
    return unlessFailed(std::move(done), certain);
}

/// What has been written since the last commit can be committed, as far as is known.
Result<void> CompoundFileEngine::ready() {
    if (takenBack_)
        failed_ = std::exchange(takenBack_, {});
    if (failed_)
        return *failed_;
    return changed_ ? complete() : Result<void>();
}

/// DONE, and if that is a failure the transaction is taken back.
Result<void> CompoundFileEngine::unlessFailed(Result<void> done, bool certain) {
    if (!done) {
        rollBack(certain);
        failed_ = done.error();
    }
    return done;
}

/// Everything but the header, durably, with all that was spilled before.
Result<void> CompoundFileEngine::writeEverything() {
    WriteBatch batch;
    QUOBRIX_TRY(placeContents(batch));
    QUOBRIX_TRY(tables_.settle());
    tables_.addChanged(batch);
    if (const auto& spare = tables_.fat.spare(); spare.size() == AllocationTable::kSpare) {
        const PreviousStateNote note =
            tables_.anyDamaged() ? PreviousStateNote{}
                                 : notePreviousState(*file_, tables_.header(), tables_.nextHeader(), tables_.fat);
        batch.add(spare[0], note.about);
        batch.add(spare[1], note.header);
    }
    QUOBRIX_TRY(writeBatch(batch));
    return flush();
}

/// The moment of the commit. If it fails the old header is put back; unless that is durable it is not CERTAIN which
/// one the disk has in the end.
Result<void> CompoundFileEngine::turnHeader(bool& certain) {
    const Sector header = tables_.nextHeader();
    cache_.clear();
    auto done = file_->writeAt(0, header);
    if (done)
        done = flush();
    if (!done) {
        certain = file_->writeAt(0, tables_.header()) && file_->flush();
        return done;
    }
    tables_.commit(header, snapshots_ > 0);
    committedSize_ = fileSize_;
    changed_ = false;
    removeLeftovers();
    return {};
}

/// Sectors behind the end of the allocation table are what a save that was killed has left: no state leads to them.
/// They stay while somebody may be reading them, and in a damaged file, where they may be what is missing.
void CompoundFileEngine::removeLeftovers() {
    const std::uint64_t end = sectorOffset(tables_.fat.end());
    if (snapshots_ == 0 && !tables_.anyDamaged() && end < fileSize_ && file_->resize(end))
        fileSize_ = committedSize_ = end;
}

/// Everything pending is dropped, and the file loses what it has grown by, as far as no state needs it.
void CompoundFileEngine::rollBack(bool certain) {
    pending_.clear();
    pendingBytes_ = 0;
    miniPages_.clear();
    cache_.clear();
    tables_.rollBack(certain);
    changed_ = !tables_.onDisk();
    const std::uint32_t sectors = tables_.fat.end();
    const std::uint64_t needed = std::max(committedSize_, sectors > 0 ? sectorOffset(sectors) : 0);
    if (const auto size = file_->size()) {
        fileSize_ = *size;
        if (needed < fileSize_ && file_->resize(needed))
            fileSize_ = needed;
    }
}

} // namespace cfb

Result<Bytes> StreamReader::read(std::string_view name) const {
    Bytes content;
    QUOBRIX_TRY(read(name, content));
    return content;
}

Result<std::unique_ptr<CompoundFile>> CompoundFile::open(std::unique_ptr<File> file) {
    auto layout = cfb::readLayout(*file);
    if (!layout)
        return layout.error();
    return std::unique_ptr<CompoundFile>(
        std::make_unique<cfb::CompoundFileEngine>(std::move(file), *std::move(layout)));
}

bool CompoundFile::nameAllowed(std::string_view name) {
    return cfb::NameField::fromText(name) && !cfb::hasForbidden(name);
}

Result<std::unique_ptr<CompoundFile>> CompoundFile::create(std::unique_ptr<File> file) {
    const auto size = file->size();
    if (!size)
        return size.error();
    if (*size != 0)
        return Error{ErrorKind::Io, text(TextId::NewFileMustBeEmpty)};
    return std::unique_ptr<CompoundFile>(std::make_unique<cfb::CompoundFileEngine>(std::move(file)));
}

} // namespace quobrix
