#pragma once

#include "platform/file_system.h"
#include "support/fault_file.h"

#include <limits>
#include <map>

namespace quobrix::test {

/// A folder on a disk that loses power, fails (on files and on names) and fills up when told to. Its files are
/// FaultDisks; what was done to its names is durable only once the folder has been flushed.
class FaultFolder final : public FileSystem, public FailingOperations {
public:
    using Image = std::map<std::filesystem::path, Bytes>;

    /// IMAGE is there, durably.
    explicit FaultFolder(unsigned seed, const Image& image = {});

    /// What a power cut leaves now: of what was done to the names since the last flush any part, and of each file what
    /// its disk leaves.
    Image powerCut();
    /// What there is now for those who look.
    Image current() const;
    /// Another program has put a new file there, durably.
    void replace(const std::filesystem::path& path, const Bytes& content);

    /// Called after each change of a file or a name.
    std::function<void()> afterEachChange;
    /// Called after a file that was there has been opened.
    std::function<void()> afterEachOpening;
    /// Bytes that all files together may have.
    std::uint64_t capacity = std::numeric_limits<std::uint64_t>::max();
    bool tellsFreeSpace = true;
    /// A file that is open for writing is read by who opened it so only, as on network shares.
    bool locksKeepReadersAway = false;
    /// The file system has locks.
    bool locks = true;
    /// What is written to files becomes what this makes of it, and nobody is told.
    std::function<void(Bytes&)> garble;
    std::uint64_t used() const;

    Result<std::unique_ptr<File>> open(const std::filesystem::path& path, FileMode mode) override;
    Result<FileStatus> status(const std::filesystem::path& path) override;
    std::uint64_t freeSpace(const std::filesystem::path& folder) override;
    Result<void> adoptPermissions(const std::filesystem::path&, const std::filesystem::path&) override { return {}; }
    Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) override;
    Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to) override;
    Result<void> flushFolder(const std::filesystem::path& folder) override;
    void remove(const std::filesystem::path& path) override;
    void removeAbandoned(const std::filesystem::path& folder) override;

private:
    friend class FolderFile;
    struct Inode {
        std::uint64_t number;
        FaultDisk disk;
        std::int64_t modified = 0;
        bool locked = false;
    };
    using Names = std::map<std::filesystem::path, std::shared_ptr<Inode>>;
    /// Names that one call changed: each leads to a file or to none.
    using Change = std::vector<std::pair<std::filesystem::path, std::shared_ptr<Inode>>>;

    std::shared_ptr<Inode> make(const Bytes& content);
    void change(Change names);
    void changed();
    static void apply(const Change& change, Names& names);

    std::mt19937 random_;
    unsigned seed_;
    std::uint64_t inodes_ = 0;
    std::int64_t clock_ = 0;
    Names names_, durable_;
    std::vector<Change> onTheWay_;
};

} // namespace quobrix::test
