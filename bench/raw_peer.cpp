#include "storage_peer.h"

#include "platform/file.h"

namespace quobrix::bench {
namespace {

class RawPeer final : public StoragePeer {
public:
    void prepare(const Objects& objects) override {
        bytes_.clear();
        for (const Object& object : objects)
            bytes_.insert(bytes_.end(), object.content.begin(), object.content.end());
    }

    void create(const std::filesystem::path& path) override {
        const auto file = *openFile(path, FileMode::Create);
        require(file->writeAt(0, bytes_) && file->flush(), "raw write");
    }

    std::size_t readAll(const std::filesystem::path& path) override {
        const auto file = *openFile(path, FileMode::Read);
        Bytes bytes(static_cast<std::size_t>(*file->size()));
        require(bool(file->readAt(0, bytes)), "raw read");
        return bytes.size();
    }

private:
    Bytes bytes_;
};

} // namespace

std::unique_ptr<StoragePeer> makeRawPeer() { return std::make_unique<RawPeer>(); }

} // namespace quobrix::bench
