#pragma once

#include "platform/file_system.h"

namespace quobrix::test {

/// The system's files, for tests that change one call.
class ForwardingFiles : public FileSystem {
public:
    Result<std::unique_ptr<File>> open(const std::filesystem::path& path, FileMode mode) override {
        return system().open(path, mode);
    }
    Result<FileStatus> status(const std::filesystem::path& path) override { return system().status(path); }
    std::uint64_t freeSpace(const std::filesystem::path& folder) override { return system().freeSpace(folder); }
    Result<void> adoptPermissions(const std::filesystem::path& temporary, const std::filesystem::path& like) override {
        return system().adoptPermissions(temporary, like);
    }
    Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) override {
        return system().renameOver(from, to);
    }
    Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to) override {
        return system().renameNew(from, to);
    }
    Result<void> flushFolder(const std::filesystem::path& folder) override { return system().flushFolder(folder); }
    void remove(const std::filesystem::path& path) override { system().remove(path); }
    void removeAbandoned(const std::filesystem::path& folder) override { system().removeAbandoned(folder); }
};

} // namespace quobrix::test
