#include "document/document.h"

#include "base/path_text.h"
#include "compound/io.h"
#include "texts/text.h"

#include <algorithm>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kDocumentFormat = 2;

} // namespace

Bytes documentStream() {
    ByteWriter out;
    out.u32(kDocumentFormat);
    return out.take();
}

void writeDocumentStream(CompoundFile& file) { file.write(kDocumentStream, documentStream()); }

Result<TDocument::OpenFile> TDocument::OpenFile::open(std::unique_ptr<File> disk) {
    auto compound = CompoundFile::open(std::make_unique<BorrowedFile>(*disk));
    if (!compound)
        return compound.error();
    return OpenFile{std::move(disk), *std::move(compound)};
}

Result<TDocument::OpenFile> TDocument::OpenFile::watch(std::unique_ptr<File> disk, const Bytes& header) {
    auto watched = std::make_unique<cfb::WatchedFile>(*disk, header);
    cfb::WatchedFile* const watch = watched.get();
    auto compound = CompoundFile::open(std::move(watched));
    if (!compound)
        return compound.error();
    return OpenFile{std::move(disk), *std::move(compound), watch};
}

// Content

TDocument::TDocument(const TypeRegistry& types, FileSystem& files) : types_(types), files_(files) {
    state_.store = std::make_unique<ObjectStore>(types);
}

TDocument::~TDocument() = default;

Result<void> TDocument::take(State next) {
    std::swap(state_, next);
    Result<void> bound;
    try {
        bound = bind();
        if (bound)
            state_.damage = damage();
    } catch (...) {
        std::swap(state_, next);
        throw;
    }
    if (!bound) {
        std::swap(state_, next);
        return bound;
    }
    backupProblem_.reset();
    store().whenFileChanged([this] {
        if (whenOutdated_)
            whenOutdated_();
    });
    store().whenDamaged([this] {
        if (whenDamaged_)
            whenDamaged_();
    });
    return {};
}

void TDocument::newDocument() {
    State next;
    next.store = std::make_unique<ObjectStore>(types_);
    static_cast<void>(take(std::move(next))); // it has no file that could change
}

std::optional<Error> TDocument::readOnlyReason() const {
    if (outdated())
        return Error{ErrorKind::Changed, text(TextId::AnotherProgramHasChangedIt)};
    if (const auto later = store().ofLaterVersion())
        return later;
    return state_.damage ? state_.damage : state_.readOnlyReason;
}

bool TDocument::outdated() const { return state_.file.watched && state_.file.watched->changed(); }

void TDocument::whenOutdated(std::function<void()> tell) { whenOutdated_ = std::move(tell); }

CompoundFile::Space TDocument::space() const {
    return hasFile() ? state_.file.compound->space() : CompoundFile::Space{};
}

std::uint32_t TDocument::format() const {
    const Result<Bytes> content = hasFile() ? state_.file.compound->read(kDocumentStream) : Error{};
    return content ? ByteReader(*content).u32() : kDocumentFormat;
}

Result<void> TDocument::writeTo(CompoundFile& file) {
    if (!file.contains(kDocumentStream))
        writeDocumentStream(file);
    return store().save(file);
}

fs::path TDocument::lockFile() const { return state_.lock ? LockFile::pathFor(state_.lock->document()) : fs::path(); }

// Opening

/// Takes the lock file of TARGET if FILE, which is or is to become TARGET, is not locked by the system and the document
/// has not got it. If another copy has it that is OWNER.
Result<void> TDocument::takeLock(const fs::path& target, const File& file, std::unique_ptr<LockFile>& lock,
                                 std::optional<LockOwner>& owner) const {
    if (lock || file.locked() || (state_.lock && state_.lock->document() == target))
        return {};
    Result<std::unique_ptr<LockFile>> taken = LockFile::take(files_, target, owner);
    if (!taken)
        return taken.error();
    lock = *std::move(taken);
    return {};
}

Result<TDocument::State> TDocument::load(const fs::path& path, const fs::path& target, FileMode mode,
                                         std::optional<LockOwner>& lockedBy) const {
    const Result<FileSnapshot> before = FileSnapshot::of(files_, target);
    if (!before)
        return before.error();
    Result<std::unique_ptr<File>> opened = files_.open(target, mode);
    if (!opened)
        return opened.error();
    std::unique_ptr<LockFile> lock;
    if (mode != FileMode::Read && !(*opened)->locked()) {
        Result<std::unique_ptr<LockFile>> taken = LockFile::take(files_, target, lockedBy);
        if (!taken)
            return taken.error();
        lock = *std::move(taken);
    }
    Result<OpenFile> file = mode == FileMode::Read ? OpenFile::watch(std::move(*opened), before->header)
                                                   : OpenFile::open(std::move(*opened));
    if (!file)
        return file.error();
    State state{.lock = std::move(lock),
                .file = std::move(*file),
                .store = std::make_unique<ObjectStore>(types_),
                .path = path,
                .snapshot = *before,
                .readOnlyReason = {},
                .lockedBy = {},
                .damage = {}};
    state.store->load(*state.file.compound);
    if (state.file.watched && state.file.watched->changed())
        return Error{ErrorKind::Changed, text(TextId::IsBeingChangedByAnotherProgram, utf8(path))};
    if (mode == FileMode::Read)
        state.readOnlyReason = Error{ErrorKind::ReadOnly, text(TextId::OpenedForReading)};
    // What was opened must be what the path leads to, or a save would go to a file that has lost its name.
    if (mode != FileMode::Read)
        if (const auto now = FileSnapshot::of(files_, target, state.file.disk.get()); !now || *now != *before)
            return Error{ErrorKind::InUse, text(TextId::IsBeingChangedByAnotherProgram, utf8(path))};
    return state;
}

Result<void> TDocument::open(const fs::path& path, Access access) {
    // Another copy that saves just then changes the file once; what is read next is the new state.
    constexpr int kAttempts = 10;
    Result<void> done;
    for (int attempt = 0; attempt < kAttempts; ++attempt)
        if (done = openOnce(path, access); done || done.error().kind != ErrorKind::Changed)
            return done;
    return Error{ErrorKind::InUse, done.error().detail};
}

Result<void> TDocument::openOnce(const fs::path& path, Access access) {
    const Result<fs::path> target = resolveLinks(path);
    if (!target)
        return target.error();
    std::optional<Error> refused;
    std::optional<LockOwner> lockedBy;
    Result<State> next = load(path, *target, access == Access::Edit ? FileMode::ReadWrite : FileMode::Read, lockedBy);
    if (const auto later = next ? next->store->ofLaterVersion() : std::nullopt; later && access == Access::Edit)
        next = *later; // which shall be able to write to it
    if (!next && (next.error().kind == ErrorKind::AccessDenied || next.error().kind == ErrorKind::InUse ||
                  next.error().kind == ErrorKind::Unsupported || next.error().kind == ErrorKind::DiskFull)) {
        refused = next.error(); // a full disk has no room for a lock file
        next = load(path, *target, FileMode::Read, lockedBy);
    }
    if (!next)
        return next.error();
    if (refused) {
        next->readOnlyReason = refused;
        next->lockedBy = lockedBy;
    }
    const bool ownLock = refused && refused->kind == ErrorKind::InUse && isFile(*target);
    QUOBRIX_TRY(take(std::move(*next)));
    if (ownLock) // which this document has let go of now
        static_cast<void>(tryWriting());
    if (!readOnly())
        files_.removeAbandoned(target->parent_path());
    return {};
}

Result<void> TDocument::tryWriting() {
    if (state_.lock) {
        const Result<bool> held = state_.lock->held();
        if (!held)
            return held.error();
        if (!*held) { // a person has decided that it may be taken away
            state_.lock.reset();
            state_.readOnlyReason = Error{ErrorKind::InUse, text(TextId::AnotherProgramHasTakenItOver)};
        }
    }
    if (!readOnly())
        return {};
    const Error reason = *readOnlyReason();
    if (outdated()) // and nothing can bring back what it was
        return reason;
    if (reason.kind != ErrorKind::InUse && reason.kind != ErrorKind::AccessDenied &&
        reason.kind != ErrorKind::DiskFull && reason.kind != ErrorKind::Changed)
        return Error{ErrorKind::ReadOnly, reason.detail};
    const Result<fs::path> target = resolveLinks(state_.path);
    if (!target)
        return target.error();
    Result<std::unique_ptr<File>> opened = files_.open(*target, FileMode::ReadWrite);
    if (!opened && opened.error().kind != ErrorKind::NotFound)
        return Error{ErrorKind::ReadOnly, opened.error().detail};
    std::unique_ptr<LockFile> taken;
    if (opened)
        if (const Result<void> locked = takeLock(*target, **opened, taken, state_.lockedBy); !locked)
            return Error{ErrorKind::ReadOnly, locked.error().detail};
    state_.lockedBy.reset();
    const Result<FileSnapshot> now =
        opened ? FileSnapshot::of(files_, *target, opened->get()) : Result<FileSnapshot>(opened.error());
    Result<OpenFile> file = now && *now == state_.snapshot
                                ? OpenFile::open(std::move(*opened))
                                : Error{ErrorKind::Changed, text(TextId::AnotherProgramHasChangedIt)};
    if (!file) {
        state_.readOnlyReason = Error{ErrorKind::Changed, file.error().detail};
        return *state_.readOnlyReason;
    }
    state_.store->attach(*file->compound);
    std::swap(state_.file, *file);
    if (taken)
        state_.lock = std::move(taken);
    state_.readOnlyReason.reset();
    return {};
}

Result<void> TDocument::takeOver() {
    const Result<fs::path> target = resolveLinks(state_.path);
    if (!target)
        return target.error();
    if (state_.lockedBy)
        LockFile::removeOf(files_, *target, *state_.lockedBy);
    return tryWriting();
}

std::optional<Error> TDocument::damage() const {
    if (hasFile())
        if (const Result<void> writable = state_.file.compound->writable(); !writable)
            return writable.error();
    if (!store().indexDamaged())
        return {};
    const std::vector<Damage>& all = store().damage();
    const auto ofIndex = std::ranges::find(all, kNoObject, &Damage::id);
    return Error{ErrorKind::Corrupt, ofIndex == all.end() ? ShownText() : ofIndex->what};
}

std::optional<ShownText> TDocument::doubt() const {
    if (!hasFile())
        return {};
    if (const Result<void> whole = state_.file.compound->writable(); !whole)
        return whole.error().detail;
    return store().doubt();
}

bool TDocument::lacksOwnStream() const { return hasFile() && !state_.file.compound->contains(kDocumentStream); }

bool TDocument::isFile(const fs::path& path) const {
    if (!hasFile())
        return false;
    const Result<FileStatus> status = files_.status(path);
    return status && status->identity == state_.snapshot.status.identity;
}

/// What the path leads to now.
Result<FileSnapshot> TDocument::lookAtDisk() const {
    return FileSnapshot::of(files_, state_.path, isFile(state_.path) ? state_.file.disk.get() : nullptr);
}

Result<void> TDocument::unchangedOnDisk() const {
    const Result<FileSnapshot> now = lookAtDisk();
    if (!now && now.error().kind != ErrorKind::NotFound)
        return now.error();
    if (now && *now == state_.snapshot)
        return {};
    return Error{ErrorKind::Changed, text(TextId::NoLongerTheOpenedFile, utf8(state_.path))};
}

} // namespace quobrix
