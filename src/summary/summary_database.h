#pragma once

#include "document/lock_file.h"
#include "platform/file_system.h"
#include "summary/summary_record.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace quobrix {

/// Where this user's summary database lies: with the user's data, or, if there is none yet but one lies beside the
/// program, that one. Empty if the user has no home. May not exist.
std::filesystem::path summaryDatabasePath();

/// What ERROR of the database PATH means to a person: a sentence.
ShownText summaryProblem(const Error& error, const std::filesystem::path& path);

/// The summary database: a header and a record for every trip that was counted, whatever becomes of its document.
/// Opened for one operation and closed again. A power cut at any moment leaves every record that was there, and of
/// those that are being added all or none. One thread at a time: in the window SummaryKeeper has one for it.
class SummaryDatabase {
public:
    enum class Access {
        Read,  ///< the file is neither made nor changed, and may be of an older layout
        Write, ///< it is made if there is none, brought up to date (the old one is kept), and nobody else has it so
    };

    explicit SummaryDatabase(FileSystem& files = FileSystem::system()) : files_(files) {}

    /// NotFound (reading only), InUse, NotADocument, Unsupported (another version), or as files; nothing is written to
    /// a file that is no summary database of a known version.
    Result<void> open(const std::filesystem::path& path, Access access);
    void close();
    bool isOpen() const { return file_ != nullptr; }

    /// 0 while it is closed.
    std::size_t count() const { return count_; }
    /// NotFound if INDEX is not below count().
    Result<SummaryRecord> read(std::size_t index);
    Result<std::vector<SummaryRecord>> readAll();

    // For writing. After an error the records are those of before, or the database is closed; NotDurable tells that it
    // was done.

    /// Puts RECORD in the place of another one of the same trip. Not durable before flush(): a power cut may leave some
    /// bytes of either, though always what the trip is known by.
    Result<void> write(std::size_t index, const SummaryRecord& record);
    Result<void> flush();
    /// Durable when it returns.
    Result<void> append(std::span<const SummaryRecord> records);
    /// Likewise; removes those at INDICES.
    Result<void> remove(std::span<const std::size_t> indices);

private:
    Result<void> openLocked();
    Result<void> openShared();
    Result<void> readHeader();
    Result<void> create();
    Result<void> upgrade();
    Result<void> replaceBy(ByteView content);
    Result<Bytes> readRaw(std::size_t first, std::size_t count);
    Result<void> cutBack();
    std::uint64_t offsetOf(std::size_t index) const;

    FileSystem& files_;
    std::filesystem::path path_;
    std::unique_ptr<File> file_;
    std::unique_ptr<LockFile> lockFile_; ///< where the file system has no locks
    Access access_ = Access::Read;
    Bytes header_;
    std::size_t recordSize_ = 0;
    std::size_t count_ = 0;
};

} // namespace quobrix
