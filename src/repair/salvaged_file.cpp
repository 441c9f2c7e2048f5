#include "repair/salvaged_file.h"

#include "compound/compound_file.h"
#include "compound/io.h"
#include "compound/layout.h"
#include "compound/previous_state.h"
#include "model/quobrix_document.h"
#include "repair/object_finder.h"
#include "texts/text.h"

#include <map>

namespace quobrix {
namespace {

using namespace cfb;

/// What can be read of a damaged file, and what was found in it.
class SalvagedFile final : public StreamReader {
public:
    SalvagedFile(std::unique_ptr<File> file, std::unique_ptr<CompoundFile> rest, std::map<ObjectId, Place> found,
                 bool previous = false)
        : file_(std::move(file)), rest_(std::move(rest)), previous_(previous) {
        for (const auto& [id, place] : found)
            found_.emplace(streamName(id), place);
    }

    bool contains(std::string_view name) const override {
        return found_.contains(name) || (rest_ && rest_->contains(name));
    }
    std::vector<std::string> names() const override {
        std::vector<std::string> names = rest_ ? rest_->names() : std::vector<std::string>();
        std::erase_if(names, [&](const std::string& name) { return found_.contains(name); });
        for (const auto& [name, place] : found_)
            names.push_back(name);
        return names;
    }
    using StreamReader::read;
    Result<void> read(std::string_view name, Bytes& content) const override {
        const auto found = found_.find(name);
        if (found == found_.end())
            return rest_ ? rest_->read(name, content) : Error{ErrorKind::NotFound, text(TextId::StreamNamed, name)};
        return readParts(*file_, found->second, content);
    }
    Result<void> writable() const override {
        if (previous_)
            return Error{ErrorKind::Corrupt, text(TextId::AsBeforeTheLastSave)};
        const Result<void> rest = rest_ ? rest_->writable() : Error{ErrorKind::Corrupt, text(TextId::StructureIsLost)};
        if (rest)
            return rest;
        return Error{ErrorKind::Corrupt, found_.empty()
                                             ? text(TextId::ThereMayHaveBeenMore, rest.error().detail)
                                             : text(TextId::ObjectsFoundWithoutIt, rest.error().detail, found_.size())};
    }

private:
    const std::unique_ptr<File> file_;
    const std::unique_ptr<CompoundFile> rest_; // over file_; none where nothing of the structure is left
    const bool previous_;                      // rest_ is the state before the last save
    std::map<std::string, Place, std::less<>> found_;
};

/// Objects of FILE that can be read, as their classes know them.
Readable readableObjects(const StreamReader& file) {
    Readable readable;
    Bytes content;
    for (const std::string& name : file.names()) {
        const ObjectId id = idOfStream(name);
        if (id == kNoObject || !file.read(name, content))
            continue;
        ByteReader in(content);
        const std::uint32_t typeId = in.u32();
        const std::uint8_t schema = in.u8();
        const PersistentType* const type = modelTypes().find(typeId);
        const bool known = type && schema > 0 && schema <= type->schema;
        // What is not of a known class may be of a later version.
        const std::unique_ptr<PersistentObject> object = known ? type->create() : nullptr;
        if (!in.complete() || typeId == 0 || (known && !(object->read(in, schema) && in.finished())))
            continue;
        readable.classes.emplace(id, typeId);
        if (known && type->singleton)
            for (const Reference& reference : object->references())
                readable.columns.push_back(reference);
    }
    return readable;
}

bool isWhole(const StreamReader& file) {
    if (!file.writable())
        return false;
    ObjectStore store(modelTypes());
    store.load(file);
    return !store.doubt();
}

/// The document as it was before the last save, if all of it is there.
Result<std::unique_ptr<CompoundFile>> openPrevious(File& file) {
    Result<std::unique_ptr<File>> past = previousState(file);
    if (!past)
        return past.error();
    if (!*past)
        return std::unique_ptr<CompoundFile>();
    auto opened = CompoundFile::open(*std::move(past));
    if (!opened)
        return opened.error();
    return isWhole(**opened) ? std::move(opened) : std::unique_ptr<CompoundFile>();
}

} // namespace

Result<std::unique_ptr<StreamReader>> openForRepair(std::unique_ptr<File> file) {
    const Result<std::uint64_t> size = file->size();
    if (!size)
        return size.error();
    const Result<Layout> layout = readLayout(*file);
    if (!layout && layout.error().kind != ErrorKind::Corrupt && layout.error().kind != ErrorKind::NotADocument)
        return layout.error();
    std::unique_ptr<CompoundFile> rest;
    Readable readable;
    if (layout) {
        auto opened = CompoundFile::open(std::make_unique<BorrowedFile>(*file));
        if (!opened)
            return opened.error();
        rest = *std::move(opened);
        if (!isWhole(*rest))
            readable = readableObjects(*rest);
        else
            return std::unique_ptr<StreamReader>(
                std::make_unique<SalvagedFile>(std::move(file), std::move(rest), std::map<ObjectId, Place>()));
    }
    const Result<std::uint64_t> end = endIfWrittenInOneGo(*file, *size);
    if (!end)
        return end.error();
    // Whole tables tell earlier states apart.
    const bool tablesWhole = layout && !layout->incomplete;
    auto found = *end > 0      ? findObjects(*file, *end, nullptr, readable)
                 : tablesWhole ? findObjects(*file, *size, &*layout, readable)
                               : std::map<ObjectId, Place>();
    if (!found)
        return found.error();
    if (!tablesWhole) {
        auto previous = openPrevious(*file);
        if (!previous)
            return previous.error();
        // States are not mixed: it is the one that more is left of, and of the same number the last one.
        if (*previous && readableObjects(**previous).classes.size() > readable.classes.size() + found->size())
            return std::unique_ptr<StreamReader>(std::make_unique<SalvagedFile>(std::move(file), *std::move(previous),
                                                                                std::map<ObjectId, Place>(), true));
    }
    if (!layout && found->empty()) {
        if (*end > 0)
            return layout.error();
        return Error{layout.error().kind, text(TextId::StatesCannotBeTold, layout.error().detail)};
    }
    return std::unique_ptr<StreamReader>(
        std::make_unique<SalvagedFile>(std::move(file), std::move(rest), *std::move(found)));
}

} // namespace quobrix
