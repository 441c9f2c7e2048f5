#include "base/path_text.h"
#include "compound/io.h"
#include "document/document.h"
#include "texts/text.h"

#include <algorithm>
#include <set>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

Result<void> copyFile(File& from, File& to) {
    const auto size = from.size();
    if (!size)
        return size.error();
    Bytes block(1 << 20);
    for (std::uint64_t offset = 0; offset < *size; offset += block.size()) {
        const auto part =
            std::span(block).first(static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), *size - offset)));
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
            return Error{ErrorKind::Cancelled, {}};
        const Result<Bytes> original = a.read(names[i]), copy = b.read(names[i]);
        same = original && copy && *original == *copy;
    }
    return same ? Result<void>() : Error{ErrorKind::Io, text(TextId::CompactCopyDiffers)};
}

/// Every stream of FROM that can be read, but for those in EXCEPT.
Result<void> copyReadable(const CompoundFile& from, CompoundFile& to, const std::set<std::string>& except,
                          DiskProgress& progress) {
    progress.what = &kCopyingWhatCanBeRead;
    progress.done = 0;
    progress.total = from.space().fileBytes;
    for (const std::string& name : from.names()) {
        if (progress.cancelled)
            return Error{ErrorKind::Cancelled, {}};
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

} // namespace

Result<TDocument::OpenFile> TDocument::OpenFile::create(std::unique_ptr<File> disk) {
    auto compound = CompoundFile::create(std::make_unique<BorrowedFile>(*disk));
    if (!compound)
        return compound.error();
    return OpenFile{std::move(disk), *std::move(compound)};
}

Result<void> TDocument::save(const SaveOptions& options) {
    if (!hasFile())
        return Error{ErrorKind::NotFound, text(TextId::TheDocumentHasNoFileYet)};
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
        done = Error{ErrorKind::Changed, text(TextId::WasReplacedWhileItWasSaved, utf8(state_.path))};
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
        return Error{ErrorKind::Changed, text(TextId::ChangedAndNotAllHere)};
    return writeAnew(state_.path, IfThere::Replace, options);
}

Result<void> TDocument::writeAnew(const fs::path& path, IfThere ifThere, const SaveOptions& options) {
    const Result<fs::path> target = resolveLinks(path);
    if (!target)
        return target.error();
    if (const auto later = store().ofLaterVersion())
        return *later;
    // Another running copy must not lose the file that it has open, nor open one that is about to go.
    Result<std::unique_ptr<File>> there = Error{ErrorKind::NotFound, {}};
    const Result<FileStatus> status = files_.status(*target);
    if (!status && status.error().kind != ErrorKind::NotFound)
        return status.error();
    if (status && ifThere == IfThere::Refuse)
        return Error{ErrorKind::Exists, text(TextId::FileIsThere, utf8(*target))};
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
    // Unreadable parts of a file that was not written into are copied as they lie there.
    return all || (*left == Left::Everything && !*written);
}

/// Notes as damage what cannot be read any more, once the document is in a file that has no more than was LEFT.
void TDocument::noteLost(Left left) {
    if (left == Left::Everything)
        return;
    if (left == Left::Nothing)
        return store().noteLost(text(TextId::AnotherProgramHasWrittenOverIt));
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
            ProgressFile target(replacement.file(), progress, kCopying, size);
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
        return Error{ErrorKind::NotFound, text(TextId::TheDocumentHasNoFileYet)};
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
        ProgressFile target(replacement.file(), progress, kCompacting, size);
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

} // namespace quobrix
