#include "support/fault_folder.h"

#include <set>

namespace quobrix::test {

/// Counts its operations as the folder's; its disk does what they do, or fails when the folder says so.
class FolderFile final : public File {
public:
    FolderFile(FaultFolder& folder, std::shared_ptr<FaultFolder::Inode> inode, bool writes)
        : folder_(folder), inode_(std::move(inode)), writes_(writes), file_(inode_->disk.file()) {
        inode_->locked = inode_->locked || (writes_ && folder_.locks);
    }
    ~FolderFile() override {
        if (writes_)
            inode_->locked = false;
    }

    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        if (folder_.locksKeepReadersAway && inode_->locked && !writes_)
            return Error{ErrorKind::AccessDenied, ShownText::asItIs("read")};
        decide(0);
        return file_->readAt(offset, out);
    }
    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override {
        if (!writes_)
            return Error{ErrorKind::AccessDenied, ShownText::asItIs("write")};
        const std::uint64_t end = offset + bytes.size(), size = inode_->disk.current().size();
        decide(end > size ? end - size : 0);
        Bytes written(bytes.begin(), bytes.end());
        if (folder_.garble)
            folder_.garble(written);
        const Result<void> done = file_->writeAt(offset, written);
        inode_->modified = ++folder_.clock_;
        if (done)
            folder_.changed();
        return done;
    }
    Result<std::uint64_t> size() override {
        decide(0);
        return file_->size();
    }
    Result<void> resize(std::uint64_t size) override {
        decide(0);
        const Result<void> done = file_->resize(size);
        inode_->modified = ++folder_.clock_;
        if (done)
            folder_.changed();
        return done;
    }
    bool locked() const override { return folder_.locks; }
    Result<void> flush() override {
        decide(0);
        const Result<void> done = file_->flush();
        if (done)
            folder_.changed();
        return done;
    }

private:
    /// Whether the disk's next operation, which needs MORE bytes, is to fail.
    void decide(std::uint64_t more) {
        const bool full = more > 0 && folder_.used() + more > folder_.capacity;
        const bool fails = folder_.fails();
        inode_->disk.failAt = fails || full ? inode_->disk.operations + 1 : 0;
        inode_->disk.failWith = full ? ErrorKind::DiskFull : folder_.failWith;
    }

    FaultFolder& folder_;
    const std::shared_ptr<FaultFolder::Inode> inode_;
    const bool writes_;
    const std::unique_ptr<File> file_;
};

FaultFolder::FaultFolder(unsigned seed, const Image& image) : random_(seed), seed_(seed) {
    for (const auto& [path, content] : image)
        names_[path] = make(content);
    durable_ = names_;
}

std::shared_ptr<FaultFolder::Inode> FaultFolder::make(const Bytes& content) {
    ++inodes_;
    return std::make_shared<Inode>(
        Inode{inodes_, FaultDisk(static_cast<unsigned>(seed_ + inodes_), content), ++clock_});
}

void FaultFolder::apply(const Change& change, Names& names) {
    for (const auto& [path, inode] : change)
        if (inode)
            names[path] = inode;
        else
            names.erase(path);
}

void FaultFolder::change(Change names) {
    apply(names, names_);
    onTheWay_.push_back(std::move(names));
    changed();
}

void FaultFolder::changed() {
    if (afterEachChange)
        afterEachChange();
}

FaultFolder::Image FaultFolder::powerCut() {
    // A journal keeps the order; without one any of the changes may be there.
    Names names = durable_;
    const bool ordered = random_() % 2;
    std::size_t count = random_() % (onTheWay_.size() + 1);
    for (const Change& change : onTheWay_)
        if (ordered ? count > 0 && count-- : random_() % 2)
            apply(change, names);
    Image image;
    for (const auto& [path, inode] : names)
        image[path] = inode->disk.powerCut();
    return image;
}

FaultFolder::Image FaultFolder::current() const {
    Image image;
    for (const auto& [path, inode] : names_)
        image[path] = inode->disk.current();
    return image;
}

void FaultFolder::replace(const std::filesystem::path& path, const Bytes& content) {
    names_[path] = durable_[path] = make(content);
}

std::uint64_t FaultFolder::used() const {
    std::uint64_t bytes = 0;
    for (const auto& [path, inode] : names_)
        bytes += inode->disk.current().size();
    return bytes;
}

Result<std::unique_ptr<File>> FaultFolder::open(const std::filesystem::path& path, FileMode mode) {
    if (fails())
        return Error{failWith, ShownText::asItIs("open")};
    const auto found = names_.find(path);
    const bool writes = mode != FileMode::Read;
    if (mode == FileMode::Create || mode == FileMode::CreatePrivate) {
        if (found != names_.end())
            return Error{ErrorKind::Exists, ShownText::asItIs("open")};
        const auto inode = make({});
        change({{path, inode}});
        return std::unique_ptr<File>(std::make_unique<FolderFile>(*this, inode, writes));
    }
    if (found == names_.end())
        return Error{ErrorKind::NotFound, ShownText::asItIs(path.string())};
    if (writes && locks && found->second->locked)
        return Error{ErrorKind::InUse, ShownText::asItIs(path.string())};
    std::unique_ptr<File> file = std::make_unique<FolderFile>(*this, found->second, writes);
    if (const auto then = afterEachOpening) // which may put another in its place
        then();
    return file;
}

Result<FileStatus> FaultFolder::status(const std::filesystem::path& path) {
    if (fails())
        return Error{failWith, ShownText::asItIs("status")};
    const auto found = names_.find(path);
    if (found == names_.end())
        return Error{ErrorKind::NotFound, ShownText::asItIs(path.string())};
    const Inode& inode = *found->second;
    return FileStatus{{1, inode.number}, inode.disk.current().size(), inode.modified, {}};
}

std::uint64_t FaultFolder::freeSpace(const std::filesystem::path&) {
    return tellsFreeSpace ? capacity - std::min(capacity, used()) : std::numeric_limits<std::uint64_t>::max();
}

Result<void> FaultFolder::renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (fails())
        return Error{failWith, ShownText::asItIs("rename")};
    change({{to, names_.at(from)}, {from, nullptr}});
    return {};
}

Result<void> FaultFolder::renameNew(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (fails())
        return Error{failWith, ShownText::asItIs("rename")};
    if (names_.contains(to))
        return Error{ErrorKind::Exists, ShownText::asItIs("rename")};
    change({{to, names_.at(from)}, {from, nullptr}});
    return {};
}

Result<void> FaultFolder::flushFolder(const std::filesystem::path&) {
    if (fails())
        return Error{failWith, ShownText::asItIs("flush of the folder")};
    durable_ = names_;
    onTheWay_.clear();
    changed();
    return {};
}

void FaultFolder::remove(const std::filesystem::path& path) {
    if (!fails() && names_.contains(path))
        change({{path, nullptr}});
}

void FaultFolder::removeAbandoned(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> abandoned;
    for (const auto& [path, inode] : names_)
        if (path.parent_path() == folder && path.extension() == ".tmp" && !inode->locked)
            abandoned.push_back(path);
    for (const std::filesystem::path& path : abandoned)
        remove(path);
}

} // namespace quobrix::test
