#include "compound/compound_file.h"

#include "support/compound_checker.h"
#include "support/document_streams.h"
#include "support/memory_file.h"

#include <algorithm>
#include <cstdlib>
#include <map>

using namespace quobrix;

namespace {

using test::Streams, test::readableStreams;

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// What does not change in a header, so that changes of the input get behind it.
void setSignature(Bytes& image) {
    constexpr std::uint8_t kSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
    constexpr std::uint8_t kFigures[] = {3, 0, 0xFE, 0xFF, 9, 0, 6, 0}; // version, byte order, sizes
    if (image.size() < 64)
        return;
    std::ranges::copy(kSignature, image.begin());
    std::ranges::copy(kFigures, image.begin() + 26);
}

/// A file that an input's changes are made to, and what it is to hold after each of them.
class Session {
public:
    Session(std::unique_ptr<CompoundFile> file, std::shared_ptr<Bytes> disk, bool ours)
        : file_(std::move(file)), disk_(std::move(disk)), ours_(ours), expected_(readableStreams(*file_)),
          committed_(expected_) {}

    /// False when it is of no use to go on.
    bool change(std::uint8_t what, std::uint8_t which) {
        switch (what % 8) {
        case 0:
            return commit();
        case 1:
            return bool(file_->spill()) || commit();
        case 2:
            if (!expected_.empty()) {
                const std::string name = pick(which);
                file_->remove(name);
                expected_.erase(name);
            }
            return true;
        case 3:
        case 4:
            if (!expected_.empty())
                write(pick(which), what);
            return true;
        default:
            if (const std::string name = "new " + std::to_string(which % 8);
                expected_.contains(name) || !file_->contains(name))
                write(name, which);
            return true;
        }
    }

    void finish() {
        if (commit() && ours_)
            require(test::examineCompoundFile(*disk_).fault.empty());
    }

private:
    /// What was committed is there for who opens the file anew, and a refused commit leaves what was there before. A
    /// damaged stream may have become readable because another one that lays claim to its sectors is gone.
    bool commit() {
        const Result<void> done = file_->commit();
        require(done || done.error().kind == ErrorKind::Corrupt || done.error().kind == ErrorKind::Unsupported);
        if (done) {
            require(readableStreams(*file_) == expected_);
            committed_ = expected_;
        }
        if (disk_->empty())
            return bool(done);
        auto again = CompoundFile::open(std::make_unique<test::MemoryFile>(disk_));
        require(bool(again));
        Streams found = readableStreams(**again);
        for (const auto& [name, content] : found)
            require(committed_.contains(name) || (file_->contains(name) && !file_->read(name)));
        for (const auto& [name, content] : committed_)
            require(found.contains(name) && found[name] == content);
        require((*again)->space().fileBytes == disk_->size());
        expected_ = committed_ = std::move(found);
        file_ = *std::move(again);
        return bool(done);
    }

    const std::string& pick(std::uint8_t which) const {
        return std::next(expected_.begin(), static_cast<std::ptrdiff_t>(which % expected_.size()))->first;
    }

    void write(const std::string& name, std::uint8_t seed) {
        constexpr std::size_t kSizes[] = {0, 1, 64, 300, 512, 1000, 4095, 4096, 5000, 9000};
        if (name.find_first_of("/\\:!") != std::string::npos)
            return; // may be read, but not be written
        Bytes content(kSizes[seed % std::size(kSizes)], seed);
        file_->write(name, content);
        expected_[name] = std::move(content);
    }

    std::unique_ptr<CompoundFile> file_;
    std::shared_ptr<Bytes> disk_;
    bool ours_; ///< nobody else has written to it
    Streams expected_;
    Streams committed_;
};

} // namespace

/// A list of changes (a byte for their number, two for each) and then any bytes as the file that they are made to; none
/// for a new one. Opening, listing and reading must end without harm; and where writing is allowed, every stream is
/// what was written to it, or what could be read of it at the beginning.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteReader in({data, size});
    const ByteView changes = in.bytes(std::min<std::size_t>(2 * (in.u8() % 8), in.remaining()));
    const ByteView rest = in.bytes(in.remaining());
    const auto disk = std::make_shared<Bytes>(rest.begin(), rest.end());
    setSignature(*disk);
    auto file = disk->empty() ? CompoundFile::create(std::make_unique<test::MemoryFile>(disk))
                              : CompoundFile::open(std::make_unique<test::MemoryFile>(disk));
    if (!file)
        return 0;
    Session session(*std::move(file), disk, disk->empty());
    for (std::size_t i = 0; i + 1 < changes.size(); i += 2)
        if (!session.change(changes[i], changes[i + 1]))
            return 0;
    session.finish();
    return 0;
}
