#pragma once

#include "base/bytes.h"
#include "platform/file_system.h"

namespace quobrix {

/// What shows whether a file is still as it was: which file it is, its size, the time of its last write, and its first
/// sector, which every save rewrites.
struct FileSnapshot {
    FileStatus status;
    Bytes header;

    static Result<FileSnapshot> of(FileSystem& files, const std::filesystem::path& path);
    bool operator==(const FileSnapshot&) const = default;
};

} // namespace quobrix
