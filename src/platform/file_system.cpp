#include "platform/file_system.h"

#include "platform/system_error.h"

#include <cstdio>
#include <random>

namespace quobrix {

namespace {

/// A name that no other file of the folder has (probably; creation is exclusive), which listings hide.
std::string temporaryName() {
    std::random_device random;
    char name[32];
    std::snprintf(name, sizeof name, ".quobrix-%08x%08x.tmp", random(), random());
    return name;
}

Error fromStandard(const std::error_code& code, const std::filesystem::path& path) {
    ErrorKind kind = ErrorKind::Io;
    if (code == std::errc::permission_denied || code == std::errc::operation_not_permitted)
        kind = ErrorKind::AccessDenied;
    else if (code == std::errc::no_such_file_or_directory || code == std::errc::not_a_directory)
        kind = ErrorKind::NotFound;
    return {kind, pathText(path) + ": " + code.message()};
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
        const std::filesystem::path link = std::filesystem::read_symlink(result, code);
        if (code)
            return fromStandard(code, result);
        result = result.parent_path() / link; // an absolute link replaces the folder
    }
    return Error{ErrorKind::Io, pathText(path) + ": too many symbolic links"};
}

Result<ReplacementFile> ReplacementFile::create(const std::filesystem::path& target) {
    auto resolved = resolveLinks(target);
    if (!resolved)
        return resolved.error();
    std::error_code ignored;
    if (std::filesystem::is_directory(*resolved, ignored))
        return Error{ErrorKind::IsDirectory, pathText(*resolved) + " is a folder"};
    const std::filesystem::path temporary = resolved->parent_path() / temporaryName();
    auto file = openFile(temporary, FileMode::Create);
    if (!file)
        return file.error();
    return ReplacementFile(*std::move(resolved), temporary, *std::move(file));
}

ReplacementFile::ReplacementFile(ReplacementFile&& other) noexcept
    : target_(std::move(other.target_)), temporary_(std::exchange(other.temporary_, {})),
      file_(std::move(other.file_)) {}

ReplacementFile::~ReplacementFile() {
    if (temporary_.empty())
        return;
    file_.reset();
    std::error_code ignored;
    std::filesystem::remove(temporary_, ignored);
}

Result<void> ReplacementFile::commit() {
    QUOBRIX_TRY(adoptPermissions(temporary_, target_));
    if (file_)
        QUOBRIX_TRY(file_->flush());
    const std::filesystem::path temporary = std::exchange(temporary_, {});
    auto renamed = renameDurably(temporary, target_);
    std::error_code ignored;
    if (!renamed && std::filesystem::exists(temporary, ignored))
        temporary_ = temporary;
    return renamed;
}

Result<Bytes> readFile(const std::filesystem::path& path, std::uint64_t maxSize) {
    auto file = openFile(path, FileMode::Read);
    if (!file)
        return file.error();
    const auto size = (*file)->size();
    if (!size)
        return size.error();
    if (*size > maxSize)
        return Error{ErrorKind::Unsupported, pathText(path) + " is larger than " + std::to_string(maxSize) + " bytes"};
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
