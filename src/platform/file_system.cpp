#include "platform/file_system.h"

#include "platform/system_error.h"
#include "texts/text.h"

#include <random>
#include <string>
#include <string_view>

namespace quobrix {

namespace {

constexpr std::string_view kTemporaryPrefix = ".quobrix-", kTemporarySuffix = ".tmp", kHexDigits = "0123456789abcdef";
constexpr std::size_t kTemporaryDigits = 16;

/// A name that no other file of the folder has (probably; creation is exclusive), which listings hide.
std::string temporaryName() {
    std::random_device random;
    std::string name(kTemporaryPrefix);
    for (std::size_t i = 0; i < kTemporaryDigits; ++i)
        name += kHexDigits[random() % kHexDigits.size()];
    return name.append(kTemporarySuffix);
}

bool isTemporaryName(std::string_view name) {
    return name.size() == kTemporaryPrefix.size() + kTemporaryDigits + kTemporarySuffix.size() &&
           name.starts_with(kTemporaryPrefix) && name.ends_with(kTemporarySuffix) &&
           name.substr(kTemporaryPrefix.size(), kTemporaryDigits).find_first_not_of(kHexDigits) == name.npos;
}

class SystemFiles final : public FileSystem {
    Result<std::unique_ptr<File>> open(const std::filesystem::path& path, FileMode mode) override {
        return openFile(path, mode);
    }
    Result<FileStatus> status(const std::filesystem::path& path) override { return fileStatus(path); }
    std::uint64_t freeSpace(const std::filesystem::path& folder) override {
        std::error_code ignored;
        return std::filesystem::space(folder.empty() ? "." : folder, ignored).available; // all ones after an error
    }
    Result<void> adoptPermissions(const std::filesystem::path& temporary, const std::filesystem::path& like) override {
        return quobrix::adoptPermissions(temporary, like);
    }
    Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) override {
        return quobrix::renameOver(from, to);
    }
    Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to) override {
        return quobrix::renameNew(from, to);
    }
    Result<void> flushFolder(const std::filesystem::path& folder) override { return quobrix::flushFolder(folder); }
    void remove(const std::filesystem::path& path) override {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }
    void removeAbandoned(const std::filesystem::path& folder) override { quobrix::removeAbandoned(folder); }
};

Error fromStandard(const std::error_code& code, const std::filesystem::path& path) {
    ErrorKind kind = ErrorKind::Io;
    if (code == std::errc::permission_denied || code == std::errc::operation_not_permitted)
        kind = ErrorKind::AccessDenied;
    else if (code == std::errc::no_such_file_or_directory || code == std::errc::not_a_directory)
        kind = ErrorKind::NotFound;
    return {kind, text(TextId::WithDetail, utf8(path), code.message())};
}

} // namespace

Result<std::filesystem::path> resolveLinks(const std::filesystem::path& path) {
    constexpr int kMostLinks = 40; // as many as Linux follows
    std::filesystem::path result = path;
    for (int links = 0; links <= kMostLinks; ++links) {
        std::error_code code;
        const auto status = std::filesystem::symlink_status(result, code);
        if (status.type() != std::filesystem::file_type::symlink) {
            if (code && status.type() != std::filesystem::file_type::not_found)
                return fromStandard(code, result);
            return result;
        }
        if (!mayFollow(result))
            return Error{ErrorKind::AccessDenied, text(TextId::ForeignLinkInSharedFolder, utf8(result))};
        const std::filesystem::path link = std::filesystem::read_symlink(result, code);
        if (code)
            return fromStandard(code, result);
        result = result.parent_path() / link; // an absolute link replaces the folder
    }
    return Error{ErrorKind::Io, text(TextId::TooManySymbolicLinks, utf8(path))};
}

FileSystem& FileSystem::system() {
    static SystemFiles files;
    return files;
}

Result<ReplacementFile> ReplacementFile::create(const std::filesystem::path& target, const std::filesystem::path& like,
                                                FileSystem& files) {
    const auto resolved = resolveLinks(target);
    return resolved ? createForLink(*resolved, like, files) : resolved.error();
}

Result<ReplacementFile> ReplacementFile::createForLink(const std::filesystem::path& target,
                                                       const std::filesystem::path& like, FileSystem& files) {
    std::error_code ignored;
    const auto status = std::filesystem::symlink_status(target, ignored);
    if (std::filesystem::is_directory(status))
        return Error{ErrorKind::IsDirectory, text(TextId::PathIsAFolder, utf8(target))};
    if (std::filesystem::is_other(status)) // a device or a pipe
        return Error{ErrorKind::NotADocument, text(TextId::IsNotARegularFile, utf8(target))};
    // Another program may take the new file for an abandoned one and lock it before this one does.
    constexpr int kAttempts = 4;
    std::filesystem::path temporary;
    Result<std::unique_ptr<File>> file = Error{};
    // Who opens a file can read it ever after, so that it must not be open to more than it will be.
    const std::filesystem::path& model = like.empty() ? target : like;
    const FileMode mode = std::filesystem::exists(model, ignored) ? FileMode::CreatePrivate : FileMode::Create;
    for (int attempt = 0; attempt < kAttempts && (attempt == 0 || file.error().kind == ErrorKind::InUse); ++attempt) {
        temporary = target.parent_path() / temporaryName();
        file = files.open(temporary, mode);
        if (file)
            break;
    }
    if (!file)
        return file.error();
    ReplacementFile replacement(files, target, temporary, *std::move(file));
    QUOBRIX_TRY(files.adoptPermissions(temporary, model));
    return replacement;
}

ReplacementFile::ReplacementFile(ReplacementFile&& other) noexcept
    : files_(other.files_), target_(std::move(other.target_)), temporary_(std::exchange(other.temporary_, {})),
      file_(std::move(other.file_)) {}

ReplacementFile::~ReplacementFile() {
    if (temporary_.empty())
        return;
    file_.reset();
    files_->remove(temporary_);
}

Result<void> ReplacementFile::commit(IfThere ifThere) {
    if (file_)
        QUOBRIX_TRY(file_->flush());
    QUOBRIX_TRY(ifThere == IfThere::Replace ? files_->renameOver(temporary_, target_)
                                            : files_->renameNew(temporary_, target_));
    temporary_.clear();
    if (const Result<void> flushed = files_->flushFolder(target_.parent_path()); !flushed)
        return Error{ErrorKind::NotDurable, flushed.error().detail};
    return {};
}

void removeAbandoned(const std::filesystem::path& folder) {
    std::error_code failed;
    for (std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, failed), end; !failed && entry != end;
         entry.increment(failed))
        if (isTemporaryName(utf8(entry->path().filename())))
            removeUnlessLocked(entry->path());
}

void makePrivateFolder(const std::filesystem::path& folder) {
    std::error_code ignored;
    if (std::filesystem::create_directories(folder, ignored))
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
}

Result<Bytes> readFile(const std::filesystem::path& path, std::uint64_t maxSize) {
    auto file = openFile(path, FileMode::Read);
    if (!file)
        return file.error();
    const auto size = (*file)->size();
    if (!size)
        return size.error();
    if (*size > maxSize)
        return Error{ErrorKind::Unsupported, text(TextId::IsLargerThanBytes, utf8(path), maxSize)};
    Bytes bytes(static_cast<std::size_t>(*size));
    QUOBRIX_TRY((*file)->readAt(0, bytes));
    return bytes;
}

Result<void> writeFileAtomically(const std::filesystem::path& path, ByteView bytes) {
    auto replacement = ReplacementFile::create(path);
    if (!replacement)
        return replacement.error();
    QUOBRIX_TRY(replacement->file().writeAt(0, bytes));
    return replacement->commit();
}

} // namespace quobrix
