#include "document/file_snapshot.h"

#include <algorithm>

namespace quobrix {

Result<FileSnapshot> FileSnapshot::of(FileSystem& files, const std::filesystem::path& path, File* opened) {
    constexpr std::uint64_t kHeaderBytes = 512;
    std::unique_ptr<File> reader;
    if (!opened) {
        auto file = files.open(path, FileMode::Read);
        if (!file)
            return file.error();
        reader = *std::move(file);
        opened = reader.get();
    }
    const auto status = files.status(path);
    if (!status)
        return status.error();
    Bytes header(static_cast<std::size_t>(std::min(kHeaderBytes, status->size)));
    QUOBRIX_TRY(opened->readAt(0, header));
    return FileSnapshot{*status, std::move(header)};
}

} // namespace quobrix
