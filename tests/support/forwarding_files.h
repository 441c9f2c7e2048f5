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

/// A file of another's, for tests that change one call.
class ForwardingFile : public File {
public:
    explicit ForwardingFile(std::unique_ptr<File> file) : file_(std::move(file)) {}
    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        return file_->readAt(offset, out);
    }
    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override { return file_->writeAt(offset, bytes); }
    Result<std::uint64_t> size() override { return file_->size(); }
    Result<void> resize(std::uint64_t size) override { return file_->resize(size); }
    Result<void> flush() override { return file_->flush(); }
    bool locked() const override { return file_->locked(); }

private:
    std::unique_ptr<File> file_;
};

} // namespace quobrix::test
