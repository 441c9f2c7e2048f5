#include "storage_peer.h"

#include "platform/file.h"

#include <gsf/gsf.h>

#include <algorithm>
#include <map>

namespace quobrix::bench {
namespace {

constexpr const char* kIdsStream = "Object Ids";

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using Handle = std::unique_ptr<T, Unref>;

/// A compound file of the library's making: it writes whole ones only.
class Writer {
public:
    explicit Writer(const std::filesystem::path& path)
        : path_(path), output_(gsf_output_stdio_new(path.c_str(), nullptr)),
          storage_(gsf_outfile_msole_new(output_.get())) {}

    void write(const std::string& name, ByteView content) {
        const Handle<GsfOutput> stream(gsf_outfile_new_child(storage_.get(), name.c_str(), FALSE));
        require(gsf_output_write(stream.get(), content.size(), content.data()) && gsf_output_close(stream.get()),
                "libgsf: write");
    }

    void finish() {
        require(gsf_output_close(GSF_OUTPUT(storage_.get())), "libgsf: finish");
        storage_.reset();
        output_.reset();
        require(bool((*openFile(path_, FileMode::ReadWrite))->flush()), "libgsf: flush");
    }

private:
    std::filesystem::path path_;
    Handle<GsfOutput> output_;
    Handle<GsfOutfile> storage_;
};

class Reader {
public:
    explicit Reader(const std::filesystem::path& path)
        : input_(gsf_input_stdio_new(path.c_str(), nullptr)), storage_(gsf_infile_msole_new(input_.get(), nullptr)) {
        require(storage_ != nullptr, "libgsf: open");
    }

    Bytes read(const std::string& name) const {
        const Handle<GsfInput> stream(gsf_infile_child_by_name(storage_.get(), name.c_str()));
        Bytes content(static_cast<std::size_t>(gsf_input_size(stream.get())));
        require(content.empty() || gsf_input_read(stream.get(), content.size(), content.data()) != nullptr,
                "libgsf: read");
        return content;
    }

    std::vector<std::uint32_t> ids() const {
        const Bytes bytes = read(kIdsStream);
        ByteReader in(bytes);
        std::vector<std::uint32_t> ids(in.count(4));
        std::generate(ids.begin(), ids.end(), [&] { return in.u32(); });
        return ids;
    }

private:
    Handle<GsfInput> input_;
    Handle<GsfInfile> storage_;
};

class GsfPeer final : public StoragePeer {
public:
    GsfPeer() { gsf_init(); }

    void prepare(const Objects& objects) override { objects_ = &objects; }

    void create(const std::filesystem::path& path) override {
        Writer writer(path);
        ByteWriter ids;
        ids.u32(static_cast<std::uint32_t>(objects_->size()));
        for (const Object& object : *objects_) {
            ids.u32(object.id);
            writer.write(std::to_string(object.id), stream(object));
        }
        writer.write(kIdsStream, ids.take());
        writer.finish();
    }

    void readOne(const std::filesystem::path& path, std::uint32_t id) override {
        const Reader reader(path);
        const auto ids = reader.ids();
        require(!reader.read(std::to_string(id)).empty(), "libgsf: read one");
    }

    std::size_t readAll(const std::filesystem::path& path) override {
        const Reader reader(path);
        std::vector<Bytes> objects;
        std::size_t bytes = 0;
        for (const std::uint32_t id : reader.ids()) {
            objects.push_back(reader.read(std::to_string(id)));
            bytes += objects.back().size();
        }
        return bytes;
    }

    void open(const std::filesystem::path& path) override {
        path_ = path;
        reader_ = std::make_unique<Reader>(path);
    }

    void save(const Objects& changed) override {
        std::map<std::string, Bytes> contents;
        for (const Object& object : changed)
            contents[std::to_string(object.id)] = stream(object);
        auto beside = path_;
        beside += ".new";
        Writer writer(beside);
        for (const std::uint32_t id : reader_->ids()) {
            const std::string name = std::to_string(id);
            const auto found = contents.find(name);
            writer.write(name, found != contents.end() ? found->second : reader_->read(name));
        }
        writer.write(kIdsStream, reader_->read(kIdsStream));
        writer.finish();
        std::filesystem::rename(beside, path_);
    }

    void close() override { reader_.reset(); }

private:
    static Bytes stream(const Object& object) {
        ByteWriter out;
        out.u32(object.typeId);
        out.u8(1);
        out.bytes(object.content);
        return out.take();
    }

    const Objects* objects_ = nullptr;
    std::filesystem::path path_;
    std::unique_ptr<Reader> reader_;
};

} // namespace

std::unique_ptr<StoragePeer> makeGsfPeer() { return std::make_unique<GsfPeer>(); }

} // namespace quobrix::bench
