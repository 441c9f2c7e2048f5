#include "document/document.h"

#include "base/path_text.h"
#include "document/compound_io.h"

#include <algorithm>
#include <set>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

// The document's own stream: u32 format. Its value is not checked on reading; every version has been readable.
constexpr std::string_view kContentsStream = "Contents";
constexpr std::uint32_t kDocumentFormat = 2;

constexpr std::string_view kBackupSuffix = ".bak";

Result<void> copyFile(File& from, File& to) {
    const auto size = from.size();
    if (!size)
        return size.error();
    Bytes block(1 << 20);
    for (std::uint64_t offset = 0; offset < *size; offset += block.size()) {
        const auto part = std::span(block).first(std::min<std::uint64_t>(block.size(), *size - offset));
        QUOBRIX_TRY(from.readAt(offset, part));
        QUOBRIX_TRY(to.writeAt(offset, part));
    }
    return to.flush();
}

/// Nothing is lost from A to B: the same streams with the same content.
Result<void> checkSame(const CompoundFile& a, const CompoundFile& b, const DiskProgress& progress) {
    const std::vector<std::string> names = a.names();
    bool same = b.names().size() == names.size();
    for (std::size_t i = 0; same && i < names.size(); ++i) {
        if (progress.cancelled)
            return Error{ErrorKind::Cancelled, "while comparing"};
        const Result<Bytes> original = a.read(names[i]), copy = b.read(names[i]);
        same = original && copy && *original == *copy;
    }
    return same ? Result<void>() : Error{ErrorKind::Io, "the compact copy differs from its original"};
}

/// Every stream of FROM that can be read, but for those in EXCEPT.
Result<void> copyReadable(const CompoundFile& from, CompoundFile& to, const std::set<std::string>& except,
                          DiskProgress& progress) {
    progress.what = "Copying what can be read";
    progress.done = 0;
    progress.total = from.space().fileBytes;
    for (const std::string& name : from.names()) {
        if (progress.cancelled)
            return Error{ErrorKind::Cancelled, "while copying"};
        if (except.contains(name))
            continue;
        Result<Bytes> content = from.read(name);
        if (!content && content.error().kind == ErrorKind::Changed)
            return content.error();
        if (!content || !CompoundFile::nameAllowed(name))
            continue;
        progress.done += content->size();
        to.write(name, *std::move(content));
    }
    progress.total = 0;
    return to.spill();
}

/// FILE is certainly no compound file, or damaged so that it cannot be written to.
bool isRuin(File& file) {
    const auto compound = CompoundFile::open(std::make_unique<cfb::BorrowedFile>(file));
    return compound ? !(*compound)->writable() : compound.error().kind != ErrorKind::Io;
}

Error ofLaterVersion() { return {ErrorKind::Unsupported, "a later version of this software has written it"}; }

} // namespace

void writeDocumentStream(CompoundFile& file) {
    ByteWriter out;
    out.u32(kDocumentFormat);
    file.write(kContentsStream, out.take());
}

Result<TDocument::OpenFile> TDocument::OpenFile::open(std::unique_ptr<File> disk) {
    auto compound = CompoundFile::open(std::make_unique<cfb::BorrowedFile>(*disk));
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

Result<TDocument::OpenFile> TDocument::OpenFile::create(std::unique_ptr<File> disk) {
    auto compound = CompoundFile::create(std::make_unique<cfb::BorrowedFile>(*disk));
    if (!compound)
        return compound.error();
    return OpenFile{std::move(disk), *std::move(compound)};
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
        return Error{ErrorKind::Changed, "another program has changed it"};
    if (store().ofLaterVersion())
        return ofLaterVersion();
    return state_.damage ? state_.damage : state_.readOnlyReason;
}

bool TDocument::outdated() const { return state_.file.watched && state_.file.watched->changed(); }

void TDocument::whenOutdated(std::function<void()> tell) { whenOutdated_ = std::move(tell); }

CompoundFile::Space TDocument::space() const {
    return hasFile() ? state_.file.compound->space() : CompoundFile::Space{};
}

std::uint32_t TDocument::format() const {
    const Result<Bytes> content = hasFile() ? state_.file.compound->read(kContentsStream) : Error{};
    return content ? ByteReader(*content).u32() : kDocumentFormat;
}

fs::path TDocument::backupPath(const fs::path& path) {
    const Result<fs::path> target = resolveLinks(path);
    return fs::path(target ? *target : path) += kBackupSuffix;
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
        return Error{ErrorKind::Changed, utf8(path) + " is being changed by another program"};
    if (mode == FileMode::Read)
        state.readOnlyReason = Error{ErrorKind::ReadOnly, "opened for reading"};
    // What was opened must be what the path leads to, or a save would go to a file that nobody sees.
    if (mode != FileMode::Read)
        if (const auto now = FileSnapshot::of(files_, target, state.file.disk.get()); !now || *now != *before)
            return Error{ErrorKind::InUse, utf8(path) + " is being changed by another program"};
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
    if (next && access == Access::Edit && next->store->ofLaterVersion())
        next = ofLaterVersion(); // which shall be able to write to it
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
            state_.readOnlyReason = Error{ErrorKind::InUse, "another program has taken it over"};
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
                                : Error{ErrorKind::Changed, "another program has changed it"};
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
    return Error{ErrorKind::Corrupt, ofIndex == all.end() ? std::string() : ofIndex->what};
}

std::optional<std::string> TDocument::doubt() const {
    if (!hasFile())
        return {};
    if (const Result<void> whole = state_.file.compound->writable(); !whole)
        return whole.error().detail;
    return store().doubt();
}

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
    return Error{ErrorKind::Changed, utf8(state_.path) + " is no longer the file that was opened"};
}

// Saving

Result<void> TDocument::writeTo(CompoundFile& file) {
    if (!file.contains(kContentsStream))
        writeDocumentStream(file);
    return store().save(file);
}

Result<void> TDocument::save(const SaveOptions& options) {
    if (!hasFile())
        return Error{ErrorKind::NotFound, "the document has no file yet"};
    QUOBRIX_TRY(tryWriting());
    QUOBRIX_TRY(unchangedOnDisk());
    backupProblem_.reset();
    if (!store().modified())
        return makeNameDurable(options);
    const Result<fs::path> target = resolveLinks(state_.path);
    if (!target)
        return target.error();
    const auto work = [&] { return writeInPlace(*target, options); };
    if (kept_.contains(*target, state_.snapshot))
        return work();
    const auto copy = [this](File& to) { return state_.file.compound->copyTo(to); };
    return keepingBackup(*target, backupPath(*target), copy, options, work, std::nullopt);
}

/// What a save that ended with NotDurable has left to be done.
Result<void> TDocument::makeNameDurable(const SaveOptions& options) {
    if (state_.nameDurable)
        return {};
    const Result<fs::path> target = resolveLinks(state_.path);
    if (!target)
        return target.error();
    if (const Result<void> done =
            options.runDisk([&](DiskProgress&) { return files_.flushFolder(target->parent_path()); });
        !done)
        return Error{ErrorKind::NotDurable, done.error().detail};
    state_.nameDurable = true;
    return {};
}

void TDocument::forgetUnchanged() {
    if (!state_.saveFailed)
        store().forgetUnchanged();
}

Result<void> TDocument::writeInPlace(const fs::path& target, const SaveOptions& options) {
    QUOBRIX_TRY(unchangedOnDisk()); // while the backup was made, or a question was open
    state_.saveFailed = true;
    Result<void> done = writeTo(*state_.file.compound);
    if (done)
        done = options.runDisk([&](DiskProgress&) { return state_.file.compound->commit(); });
    // Whatever came of it, the file looks as it does by our doing, as long as it is the same file.
    const Result<FileSnapshot> now = lookAtDisk();
    if (now && now->status.identity == state_.snapshot.status.identity) {
        kept_.follow(target, state_.snapshot, *now);
        state_.snapshot = *now;
    } else if (done && now)
        done = Error{ErrorKind::Changed, utf8(state_.path) + " was replaced while it was saved"};
    if (!done)
        return done;
    state_.saveFailed = false;
    store().saved();
    return makeNameDurable(options);
}

Result<void> TDocument::saveAs(const fs::path& path, IfThere ifThere, const SaveOptions& options) {
    return isFile(path) ? save(options) : writeAnew(path, ifThere, options);
}

Result<void> TDocument::overwrite(const SaveOptions& options) {
    const Result<void> unchanged = unchangedOnDisk();
    if (!unchanged && unchanged.error().kind != ErrorKind::Changed)
        return unchanged;
    if (unchanged)
        return save(options);
    const Result<bool> whole = loadRest();
    if (!whole)
        return whole.error();
    if (!*whole)
        return Error{ErrorKind::Changed, "another program has changed it, and not all of the document is here"};
    return writeAnew(state_.path, IfThere::Replace, options);
}

Result<void> TDocument::writeAnew(const fs::path& path, IfThere ifThere, const SaveOptions& options) {
    const Result<fs::path> target = resolveLinks(path);
    if (!target)
        return target.error();
    if (store().ofLaterVersion())
        return ofLaterVersion();
    // Another running copy must not lose the file that it has open, nor open one that is about to go.
    Result<std::unique_ptr<File>> there = Error{ErrorKind::NotFound, {}};
    const Result<FileStatus> status = files_.status(*target);
    if (!status && status.error().kind != ErrorKind::NotFound)
        return status.error();
    if (status && ifThere == IfThere::Refuse)
        return Error{ErrorKind::Exists, utf8(*target) + " exists"};
    const bool own = isFile(*target); // changed where it is
    std::unique_ptr<LockFile> taken;
    std::optional<LockOwner> owner;
    if (status && !own) {
        there = files_.open(*target, FileMode::ReadWrite);
        if (there)
            QUOBRIX_TRY(takeLock(*target, **there, taken, owner));
        else if (there.error().kind == ErrorKind::AccessDenied) // read-only; its folder decides
            there = files_.open(*target, FileMode::Read);
        if (!there && there.error().kind != ErrorKind::AccessDenied)
            return there.error();
    }
    const auto build = [&](ReplacementFile& replacement, Left& left) { return buildWhole(replacement, options, left); };
    std::optional<FileSnapshot> replaced;
    const bool nothing = !own && !there && there.error().kind == ErrorKind::NotFound;
    // What appears where nothing was has no backup: it is not replaced before the person has been asked again.
    const auto work = [&] {
        return putInPlace(path, nothing ? IfThere::Refuse : IfThere::Replace, options, build, std::move(taken),
                          replaced);
    };
    files_.removeAbandoned(target->parent_path());
    backupProblem_.reset();
    if (nothing)
        return work();
    File* const content = own ? state_.file.disk.get() : there ? there->get() : nullptr;
    const auto copy = [&](File& to) { return content ? copyFile(*content, to) : there.error(); };
    return keepingBackup(*target, content ? backupFor(*target, *content) : backupPath(*target), copy, options, work,
                         replaced);
}

/// Another program may have written into the very file that is open. Under another header nothing of it is the
/// document's any more; the rest of a file that was cut short is.
Result<TDocument::Left> TDocument::leftOnDisk() const {
    if (!hasFile())
        return Left::Everything;
    File& disk = state_.file.watched ? static_cast<File&>(*state_.file.watched) : *state_.file.disk;
    const Result<std::uint64_t> size = disk.size();
    if (!size)
        return size.error();
    Bytes header(state_.snapshot.header.size());
    if (*size < header.size())
        return Left::Nothing;
    const Result<void> read = disk.readAt(0, header);
    if (!read && read.error().kind != ErrorKind::Changed)
        return read.error();
    if (!read || header != state_.snapshot.header)
        return Left::Nothing;
    return *size < space().fileBytes ? Left::Beginning : Left::Everything;
}

/// Somebody has written into the very file that is open.
Result<bool> TDocument::writtenInto() const {
    if (!hasFile())
        return false;
    const Result<FileStatus> status = files_.status(state_.path);
    if (!status)
        return status.error().kind == ErrorKind::NotFound ? Result<bool>(false) : status.error();
    if (status->identity != state_.snapshot.status.identity)
        return false;
    const Result<FileSnapshot> now = lookAtDisk();
    if (!now)
        return now.error();
    return *now != state_.snapshot;
}

Result<bool> TDocument::loadRest() {
    const Result<Left> left = leftOnDisk();
    if (!left)
        return left.error();
    const Result<bool> written = writtenInto();
    if (!written)
        return written.error();
    std::set<ObjectId> here;
    for (const PersistentObject* object : store().loadedObjects())
        here.insert(object->id());
    bool all = true;
    for (const ObjectId id : store().objectIds())
        if (!here.contains(id) && (*left == Left::Nothing || store().find(id) == nullptr))
            all = false;
    // What cannot be read of a file that nobody has written into goes along as it lies there.
    return all || (*left == Left::Everything && !*written);
}

/// Notes as damage what cannot be read any more, once the document is in a file that has no more than was LEFT.
void TDocument::noteLost(Left left) {
    if (left == Left::Everything)
        return;
    if (left == Left::Nothing)
        return store().noteLost("another program has written over it");
    for (const ObjectId id : store().objectIds())
        store().find(id);
}

Result<TDocument::OpenFile> TDocument::buildWhole(ReplacementFile& replacement, const SaveOptions& options,
                                                  Left& left) {
    Result<OpenFile> file = Error{};
    const Result<Left> found = leftOnDisk();
    if (!found)
        return found.error();
    left = *found;
    if (outdated() && !modified()) // nothing of it is only here
        return *readOnlyReason();
    const Result<bool> written = writtenInto();
    if (!written)
        return written.error();
    const bool trusted = left == Left::Everything && !*written;
    const bool copied = hasFile() && trusted && state_.file.compound->writable();
    if (copied) {
        const std::uint64_t size = space().fileBytes;
        QUOBRIX_TRY(checkSpace(replacement.target(), size));
        // A copy of the file, not of its streams: what could not be read comes along untouched.
        QUOBRIX_TRY(options.runDisk([&](DiskProgress& progress) {
            ProgressFile target(replacement.file(), progress, "Copying the file", size);
            return state_.file.compound->copyTo(target);
        }));
        file = OpenFile::open(replacement.takeFile());
    } else {
        file = OpenFile::create(replacement.takeFile());
    }
    if (!file)
        return file;
    if (hasFile() && left != Left::Nothing && !copied) { // nothing can be written into a copy of damaged tables
        std::set<std::string> known;
        if (!trusted) { // what is in memory is not taken from there
            known.insert(std::begin(kIndexStreams), std::end(kIndexStreams));
            for (const PersistentObject* object : store().loadedObjects())
                known.insert(std::to_string(object->id()));
        }
        QUOBRIX_TRY(options.runDisk([&](DiskProgress& progress) {
            return copyReadable(*state_.file.compound, *file->compound, known, progress);
        }));
    }
    QUOBRIX_TRY(writeTo(*file->compound));
    QUOBRIX_TRY(options.runDisk([&](DiskProgress&) { return file->compound->commit(); }));
    return file;
}

Result<void> TDocument::compact(const SaveOptions& options) {
    if (!hasFile())
        return Error{ErrorKind::NotFound, "the document has no file yet"};
    if (readOnly())
        return *readOnlyReason();
    if (!store().damage().empty())
        return Error{ErrorKind::Corrupt, store().damage().front().what};
    QUOBRIX_TRY(save(options));
    const FileSnapshot before = state_.snapshot;
    std::optional<FileSnapshot> replaced;
    const Result<void> done = putInPlace(
        state_.path, IfThere::Replace, options,
        [&](ReplacementFile& replacement, Left&) { return buildCompact(replacement, options); }, nullptr, replaced);
    if (replaced)
        kept_.follow(state_.path, before, *replaced);
    return done;
}

Result<TDocument::OpenFile> TDocument::buildCompact(ReplacementFile& replacement, const SaveOptions& options) {
    const CompoundFile::Space space = state_.file.compound->space();
    const std::uint64_t size = space.fileBytes - std::min(space.freeBytes, space.fileBytes);
    QUOBRIX_TRY(checkSpace(replacement.target(), size));
    Result<OpenFile> file = Error{};
    const auto work = [&](DiskProgress& progress) -> Result<void> {
        ProgressFile target(replacement.file(), progress, "Compacting the file", size);
        QUOBRIX_TRY(state_.file.compound->compactTo(target));
        file = OpenFile::open(replacement.takeFile());
        return file ? checkSame(*state_.file.compound, *file->compound, progress) : file.error();
    };
    QUOBRIX_TRY(options.runDisk(work));
    QUOBRIX_TRY(unchangedOnDisk()); // by a program that heeds no lock, meanwhile
    return file;
}

/// Renames the file that BUILD makes, durably, to PATH and goes on there. REPLACED is that file once it is in place,
/// even if that was not reported as durable (NotDurable). TAKEN is the lock file of PATH, if there is one already.
Result<void> TDocument::putInPlace(const fs::path& path, IfThere ifThere, const SaveOptions& options,
                                   const Build& build, std::unique_ptr<LockFile> taken,
                                   std::optional<FileSnapshot>& replaced) {
    Result<ReplacementFile> replacement = ReplacementFile::create(path, {}, files_);
    if (!replacement)
        return replacement.error();
    std::optional<LockOwner> owner;
    QUOBRIX_TRY(takeLock(replacement->target(), replacement->file(), taken, owner));
    Left left = Left::Everything;
    Result<OpenFile> file = build(*replacement, left);
    if (!file)
        return file.error();
    const Result<FileSnapshot> snapshot = FileSnapshot::of(files_, replacement->temporary(), file->disk.get());
    if (!snapshot)
        return snapshot.error();
    const Result<void> renamed = options.runDisk([&](DiskProgress&) { return replacement->commit(ifThere); });
    if (!replacement->inPlace())
        return renamed;
    replaced = *snapshot;
    state_.store->attach(*file->compound);
    std::swap(state_.file, *file);
    if (taken || (state_.lock && state_.lock->document() != replacement->target()))
        state_.lock = std::move(taken);
    state_.path = path;
    state_.snapshot = *snapshot;
    state_.nameDurable = bool(renamed);
    state_.saveFailed = false;
    state_.readOnlyReason.reset();
    state_.lockedBy.reset();
    noteLost(left);
    store().saved();
    state_.damage = damage();
    return renamed ? Result<void>() : Error{ErrorKind::NotDurable, renamed.error().detail};
}

// The backup

/// Where CONTENT, which TARGET holds, is to be kept.
fs::path TDocument::backupFor(const fs::path& target, File& content) const {
    fs::path path = backupPath(target);
    std::error_code ignored;
    if (!isRuin(content) || fs::is_symlink(path, ignored))
        return path;
    if (const auto older = files_.open(path, FileMode::Read); !older || isRuin(**older))
        return path;
    for (int number = 2; files_.status(path); ++number) {
        path = target;
        path += "." + std::to_string(number);
        path += kBackupSuffix;
    }
    return path;
}

fs::path TDocument::backupOf(const fs::path& path) const {
    const Result<fs::path> target = resolveLinks(path);
    if (!target)
        return backupPath(path);
    if (isFile(*target))
        return backupFor(*target, *state_.file.disk);
    const auto file = files_.open(*target, FileMode::Read);
    return file ? backupFor(*target, **file) : backupPath(*target);
}

/// Runs WORK, which changes the document's file TARGET, or replaces TARGET and says by what in REPLACED, and keeps what
/// COPY copies of it as PATH.
Result<void> TDocument::keepingBackup(const fs::path& target, const fs::path& path, const Copy& copy,
                                      const SaveOptions& options, const std::function<Result<void>()>& work,
                                      const std::optional<FileSnapshot>& replaced) {
    if (!keepsBackup(target))
        return work();
    const auto goOnWithout = [&](const Error& reason) -> Result<void> {
        if (reason.kind == ErrorKind::Cancelled || !options.saveWithoutBackup)
            return reason;
        return options.saveWithoutBackup(reason) ? Result<void>() : Error{ErrorKind::Cancelled, reason.detail};
    };
    std::optional<ReplacementFile> backup;
    if (Result<ReplacementFile> made = makeBackup(target, path, copy, options))
        backup.emplace(std::move(*made));
    else
        QUOBRIX_TRY(goOnWithout(made.error()));

    Result<void> done = work();
    if (!done && done.error().kind == ErrorKind::DiskFull && backup) {
        backup.reset(); // it may have the space that is missing
        QUOBRIX_TRY(goOnWithout(done.error()));
        done = work();
    }
    if (!done && done.error().kind != ErrorKind::NotDurable)
        return done;
    if (!backup) // which the next save tries again
        return done;
    // Only the one backup gives way.
    const IfThere older = path == backupPath(target) ? IfThere::Replace : IfThere::Refuse;
    const Result<void> kept = options.runDisk([&](DiskProgress&) { return backup->commit(older); });
    if (kept)
        kept_.add(target, replaced ? *replaced : state_.snapshot);
    else
        backupProblem_ =
            Error{kept.error().kind == ErrorKind::NotDurable ? ErrorKind::Io : kept.error().kind, kept.error().detail};
    return done;
}

Result<ReplacementFile> TDocument::makeBackup(const fs::path& target, const fs::path& path, const Copy& copy,
                                              const SaveOptions& options) {
    std::error_code ignored;
    // This document leaves its own file by a save that makes that the backup of another.
    const bool mayBeInUse = !fs::is_symlink(path, ignored) && !isFile(path);
    if (const auto old = mayBeInUse ? files_.open(path, FileMode::ReadWrite) : Error{};
        !old && old.error().kind == ErrorKind::InUse)
        return old.error(); // open as a document in another running copy
    else if (old && !(*old)->locked())
        if (const auto owner = LockFile::ownerOf(files_, path); owner && *owner)
            return Error{ErrorKind::InUse, (*owner)->text()};
    const Result<FileStatus> status = files_.status(target);
    if (!status)
        return status.error();
    QUOBRIX_TRY(checkSpace(target, status->size));
    Result<ReplacementFile> backup = ReplacementFile::createForLink(path, target, files_);
    if (!backup)
        return backup;
    const auto work = [&](DiskProgress& progress) -> Result<void> {
        ProgressFile to(backup->file(), progress, "Keeping a backup of the file", status->size);
        return copy(to);
    };
    QUOBRIX_TRY(options.runDisk(work));
    return backup;
}

Result<void> TDocument::checkSpace(const fs::path& target, std::uint64_t bytes) const {
    if (files_.freeSpace(target.parent_path()) >= bytes)
        return {};
    return Error{ErrorKind::DiskFull, "there is no space for a copy of " + std::to_string(bytes) + " bytes"};
}

} // namespace quobrix
