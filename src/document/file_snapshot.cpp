#include "document/file_snapshot.h"

#include <algorithm>

namespace quobrix {

Result<FileSnapshot> FileSnapshot::of(FileSystem& files, const std::filesystem::path& path) {
    constexpr std::uint64_t kHeaderBytes = 512;
    auto file = files.open(path, FileMode::Read);
    if (!file)
        return file.error();
    const auto status = files.status(path);
    if (!status)
        return status.error();
    Bytes header(static_cast<std::size_t>(std::min(kHeaderBytes, status->size)));
    QUOBRIX_TRY((*file)->readAt(0, header));
    return FileSnapshot{*status, std::move(header)};
}

} // namespace quobrix
