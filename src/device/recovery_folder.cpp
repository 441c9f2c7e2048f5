#include "device/recovery_folder.h"

#include "base/path_text.h"
#include "platform/paths.h"

#include <fmt/format.h>

#include <algorithm>

namespace quobrix {
namespace {

constexpr const char* kExtension = ".download";
constexpr std::uint64_t kLargest = std::uint64_t(1) << 30; // bytes; a logger holds some megabytes

Result<Bytes> contentOf(File& file) {
    const Result<std::uint64_t> size = file.size();
    if (!size)
        return size.error();
    if (*size > kLargest)
        return Error{ErrorKind::NotADocument, {}};
    Bytes bytes(static_cast<std::size_t>(*size));
    QUOBRIX_TRY(file.readAt(0, bytes));
    return bytes;
}

/// Empty if that cannot be told.
std::string serialTextOf(File& file) {
    constexpr std::uint64_t kHead = 64; // bytes
    const Result<std::uint64_t> size = file.size();
    Bytes head(static_cast<std::size_t>(size ? std::min(*size, kHead) : 0));
    return file.readAt(0, head) ? recoverySerialText(head) : std::string();
}

} // namespace

std::filesystem::path recoveryFolder() {
    const std::filesystem::path data = userDataFolder();
    return data.empty() ? data : data / "Unsaved Downloads";
}

Result<void> RecoveryFolder::keep(const KeptDownload& download) {
    Result<Written> written = write(download.time, recoveryBytes(download));
    if (!written)
        return written.error();
    kept_.push_back({std::move(written->path), std::move(written->file)});
    return written->durable;
}

/// Errors: the file is not there. With NotDurable it is.
Result<RecoveryFolder::Written> RecoveryFolder::write(std::int64_t time, ByteView bytes) {
    if (folder_.empty())
        return Error{ErrorKind::NotFound, {}};
    makePrivateFolder(folder_); // creating the file tells
    static_cast<void>(files_.flushFolder(folder_.parent_path()));
    files_.removeAbandoned(folder_);
    for (int number = 0;; ++number) {
        const std::filesystem::path path = folder_ / pathFromUtf8(fmt::format("{:012}-{}{}", time, number, kExtension));
        Result<ReplacementFile> file = ReplacementFile::create(path, {}, files_);
        if (!file)
            return file.error();
        QUOBRIX_TRY(file->file().writeAt(0, bytes));
        const Result<void> done = file->commit(IfThere::Refuse);
        if (!done && done.error().kind == ErrorKind::Exists && number < 100)
            continue;
        if (!done && done.error().kind != ErrorKind::NotDurable)
            return done.error();
        return Written{path, file->takeFile(), done};
    }
}

void RecoveryFolder::merged(std::shared_ptr<const bool> done) {
    if (kept_.empty())
        return;
    kept_.back().inDocument = kept_.back().wasDone = true;
    kept_.back().done = std::move(done);
}

void RecoveryFolder::documentSaved(const Document* document) {
    const auto holds = [&](const Bytes& content) {
        const Result<KeptDownload> download = readRecovery(content);
        return document && download && document->holds(*download);
    };
    const auto held = [&](File& file) {
        if (!document || !document->knows(serialTextOf(file)))
            return false;
        const Result<Bytes> content = contentOf(file);
        return content && holds(*content);
    };
    for (Kept& kept : kept_) {
        const bool done = kept.inDocument && *kept.done;
        if (kept.file && (done || held(*kept.file))) {
            if (Result<Bytes> bytes = contentOf(*kept.file); bytes && kept.inDocument)
                kept.content = *std::move(bytes);
            kept.file.reset(); // some systems remove no open file
            files_.remove(kept.path);
        } else if (!kept.file && kept.inDocument && !done && !kept.content.empty() && !holds(kept.content)) {
            if (Result<Written> written = write(0, kept.content)) {
                kept.path = std::move(written->path);
                kept.file = std::move(written->file);
            }
        }
    }
    if (!document)
        return;
    for (const std::filesystem::path& path : left()) { // which a person has left for later
        Result<std::unique_ptr<File>> file = files_.open(path, FileMode::ReadWrite);
        if (file && held(**file)) {
            file->reset();
            files_.remove(path);
        }
    }
}

void RecoveryFolder::documentReplaced() {
    std::erase_if(kept_, [](const Kept& kept) { return !kept.file; });
    for (Kept& kept : kept_)
        kept.inDocument = false;
}

bool RecoveryFolder::undoneSince() {
    bool undone = false;
    for (Kept& kept : kept_) {
        const bool done = kept.inDocument && *kept.done;
        undone = undone || (kept.inDocument && kept.wasDone && !done);
        kept.wasDone = done;
    }
    return undone;
}

std::vector<std::filesystem::path> RecoveryFolder::left() const {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator file(folder_, error), end; !error && file != end; file.increment(error)) {
        if (file->path().extension() != kExtension)
            continue;
        const bool ours = std::ranges::any_of(kept_, [&](const Kept& kept) { return kept.path == file->path(); });
        if (ours)
            continue;
        const auto opened = files_.open(file->path(), FileMode::ReadWrite);
        if (opened || opened.error().kind != ErrorKind::InUse) // locked while its program runs
            files.push_back(file->path());
    }
    std::ranges::sort(files);
    return files;
}

Result<KeptDownload> RecoveryFolder::take(const std::filesystem::path& path) {
    Result<std::unique_ptr<File>> file = files_.open(path, FileMode::ReadWrite);
    if (!file)
        return file.error();
    const Result<Bytes> bytes = contentOf(**file);
    if (!bytes)
        return bytes.error();
    Result<KeptDownload> download = readRecovery(*bytes);
    if (download)
        kept_.push_back({path, std::move(*file)});
    return download;
}

std::filesystem::path RecoveryFolder::setAside(const std::filesystem::path& file) {
    const std::filesystem::path name = std::filesystem::path(file).replace_extension(".damaged");
    return files_.renameNew(file, name) ? name : file;
}

void RecoveryFolder::discardTaken() {
    kept_.back().file.reset();
    files_.remove(kept_.back().path);
    kept_.pop_back();
}

} // namespace quobrix
