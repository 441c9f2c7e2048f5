#pragma once

#include "document/file_snapshot.h"

#include <filesystem>
#include <map>

namespace quobrix {

/// The files of which this run has kept a backup, as it left them itself. While they look so, nothing is lost when it
/// changes them again, and the backup stays the file from before the run; otherwise somebody else has been at work.
class KeptFiles {
public:
    /// PATH, which looks like NOW, holds only this run's work on what was kept.
    bool contains(const std::filesystem::path& path, const FileSnapshot& now) const;
    void add(const std::filesystem::path& path, const FileSnapshot& left);
    /// This run has changed PATH from BEFORE to AFTER.
    void follow(const std::filesystem::path& path, const FileSnapshot& before, const FileSnapshot& after);

private:
    std::map<std::filesystem::path, FileSnapshot> files_; // by comparablePath()
};

} // namespace quobrix
