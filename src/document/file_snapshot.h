#pragma once

#include "base/bytes.h"
#include "platform/file_system.h"

namespace quobrix {

/// What shows whether a file is still as it was: which file it is, its size, the time of its last write, and its first
/// sector, which every save rewrites.
struct FileSnapshot {
    FileStatus status;
    Bytes header;

    /// OPENED, if given, is the file, which PATH leads to as well: where locks keep even readers away, only who holds
    /// the lock can read.
    static Result<FileSnapshot> of(FileSystem& files, const std::filesystem::path& path, File* opened = nullptr);
    bool operator==(const FileSnapshot&) const = default;
};

} // namespace quobrix
