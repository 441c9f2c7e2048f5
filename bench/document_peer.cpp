#include "storage_peer.h"

#include "compound/compound_file.h"
#include "document/object_store.h"

#include <optional>

namespace quobrix::bench {
namespace {

/// An object of any class, as far as the store is concerned.
class BenchObject final : public PersistentObject {
public:
    static const PersistentType kType;
    const PersistentType& type() const override { return kType; }
    void write(ByteWriter& out) const override { out.bytes(content); }
    bool read(ByteReader& in, std::uint8_t) override {
        const ByteView view = in.bytes(in.remaining());
        content.assign(view.begin(), view.end());
        return true;
    }

    Bytes content;
};

const PersistentType BenchObject::kType{
    "BenchObject", false, 1, []() -> std::unique_ptr<PersistentObject> { return std::make_unique<BenchObject>(); }};

/// The document's way: an object store over a compound file.
class DocumentPeer final : public StoragePeer {
public:
    DocumentPeer() { types_.add(BenchObject::kType); }

    void prepare(const Objects& objects) override {
        store_.emplace(types_);
        for (const Object& object : objects)
            store_->create<BenchObject>().content = object.content;
    }

    void create(const std::filesystem::path& path) override {
        const auto file = *CompoundFile::create(*openFile(path, FileMode::Create));
        require(store_->save(*file) && file->commit(), "create");
    }

    void readOne(const std::filesystem::path& path, std::uint32_t id) override {
        const auto file = *CompoundFile::open(*openFile(path, FileMode::Read));
        ObjectStore store(types_);
        store.load(*file);
        require(store.find<BenchObject>(id) != nullptr, "readOne");
    }

    std::size_t readAll(const std::filesystem::path& path) override {
        const auto file = *CompoundFile::open(*openFile(path, FileMode::Read));
        ObjectStore store(types_);
        store.load(*file);
        std::size_t bytes = 0;
        for (const ObjectId id : store.objectIds())
            bytes += store.find<BenchObject>(id)->content.size();
        return bytes;
    }

    void open(const std::filesystem::path& path) override {
        file_ = *CompoundFile::open(*openFile(path, FileMode::ReadWrite));
        store_.emplace(types_);
        store_->load(*file_);
    }

    void save(const Objects& changed) override {
        for (const Object& object : changed) {
            BenchObject& target = *store_->find<BenchObject>(object.id);
            target.content = object.content;
            target.setModified();
        }
        require(store_->save(*file_) && file_->commit(), "save");
        store_->saved();
    }

    void close() override {
        store_.reset();
        file_.reset();
    }

private:
    TypeRegistry types_;
    std::unique_ptr<CompoundFile> file_;
    std::optional<ObjectStore> store_;
};

} // namespace

std::unique_ptr<StoragePeer> makeDocumentPeer() { return std::make_unique<DocumentPeer>(); }

} // namespace quobrix::bench
