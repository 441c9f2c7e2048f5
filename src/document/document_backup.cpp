#include "base/path_text.h"
#include "compound/io.h"
#include "document/document.h"
#include "texts/text.h"

#include <algorithm>
#include <set>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kBackupSuffix = ".bak";

/// FILE is certainly no compound file, or damaged so that it cannot be written to.
bool isRuin(File& file) {
    const auto compound = CompoundFile::open(std::make_unique<BorrowedFile>(file));
    return compound ? !(*compound)->writable() : compound.error().kind != ErrorKind::Io;
}

} // namespace

fs::path TDocument::backupPath(const fs::path& path) {
    const Result<fs::path> target = resolveLinks(path);
    return fs::path(target ? *target : path) += kBackupSuffix;
}

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
        ProgressFile to(backup->file(), progress, kKeepingBackup, status->size);
        return copy(to);
    };
    QUOBRIX_TRY(options.runDisk(work));
    return backup;
}

Result<void> TDocument::checkSpace(const fs::path& target, std::uint64_t bytes) const {
    if (files_.freeSpace(target.parent_path()) >= bytes)
        return {};
    return Error{ErrorKind::DiskFull, text(TextId::NoSpaceForCopy, bytes)};
}

} // namespace quobrix
