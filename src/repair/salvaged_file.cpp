#include "repair/salvaged_file.h"

#include "compound/io.h"
#include "compound/layout.h"
#include "compound/name.h"
#include "compound/previous_state.h"
#include "model/quobrix_document.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <unordered_map>
#include <unordered_set>

namespace quobrix {
namespace {

using namespace cfb;

/// Where the content of an object lies in the file: parts in their order (bytes).
struct Part {
    std::uint64_t offset = 0;
    std::size_t size = 0;
};
using Place = std::vector<Part>;

struct Readable {
    std::unordered_map<ObjectId, std::uint32_t> classes;
    std::vector<Reference> columns; ///< of tables of logs
};

Result<void> readParts(File& file, const Place& place, Bytes& content) {
    content.clear();
    for (const Part& part : place) {
        const std::size_t before = content.size();
        content.resize(before + part.size);
        QUOBRIX_TRY(file.readAt(part.offset, std::span(content).subspan(before)));
    }
    return {};
}

/// The object that CONTENT begins with, and its size in bytes; nothing if it is none of a known class and layout.
struct Piece {
    std::unique_ptr<PersistentObject> object;
    std::size_t size = 0;
};
const PersistentType* classOf(const std::uint8_t* bytes) {
    const PersistentType* const type = modelTypes().find(load32(bytes));
    return type && bytes[4] > 0 && bytes[4] <= type->schema ? type : nullptr;
}
std::optional<Piece> pieceIn(ByteView content) {
    const PersistentType* const type = content.size() < 5 ? nullptr : classOf(content.data());
    if (!type)
        return std::nullopt;
    ByteReader in(content.subspan(5));
    Piece piece{type->create(), 0};
    if (!piece.object->read(in, content[4]) || !in.complete())
        return std::nullopt;
    piece.size = content.size() - in.remaining();
    return piece;
}

/// Where a file ends that has been committed once only (bytes), 0 for another: it holds one state then, every stream
/// lies in one piece, and the pages of the mini stream lie in their order. The header counts the commits, and leads to
/// the FAT, which is the last to be written. Where that is lost, a FAT at the file's end that calls no sector free
/// tells as much, since each further commit moves the FAT and frees where it was.
Result<std::uint64_t> endIfWrittenInOneGo(File& file, std::uint64_t fileSize) {
    Sector bytes{};
    if (fileSize < 2 * kSectorSize)
        return std::uint64_t{0};
    QUOBRIX_TRY(file.readAt(0, bytes));
    const Sector made = newHeader();
    std::copy_n(made.begin(), 8, bytes.begin()); // without the signature the rest may still hold
    if (const Result<Header> header = Header::decode(bytes)) {
        std::uint32_t last = header->difatPages > 0 ? header->firstDifatSector + header->difatPages - 1 : 0;
        for (std::uint32_t page = 0; page < std::min(header->fatPages, kFatPagesInHeader); ++page)
            last = std::max(last, header->fatSectors[page]);
        if (last < kMostSectors && header->fatPages == unitsOf(last + 1, kMarksPerPage))
            return header->transaction == 1 ? std::min(fileSize, sectorOffset(last + 1)) : 0;
    }
    if (fileSize % kSectorSize != 0 || fileSize / kSectorSize > kMostSectors)
        return std::uint64_t{0};
    const auto sectors = static_cast<std::uint32_t>(fileSize / kSectorSize - 1);
    const std::uint32_t pages = unitsOf(sectors, kMarksPerPage);
    if (pages > kFatPagesInHeader) // the list of them has sectors of its own
        return std::uint64_t{0};
    Bytes fat(std::size_t{pages} * kSectorSize);
    QUOBRIX_TRY(file.readAt(fileSize - fat.size(), fat));
    for (std::uint32_t sector = 0; sector < pages * kMarksPerPage; ++sector) {
        const std::uint32_t mark = load32(fat.data() + std::size_t{4} * sector);
        const bool isFat = sector < sectors && sector >= sectors - pages;
        if ((mark == kFreeSector) != (sector >= sectors) || (mark == kFatSector) != isFat)
            return std::uint64_t{0};
    }
    return fileSize;
}

/// Finds objects of a file that was written in one go by what is left of its directory.
class ObjectFinder {
public:
    /// LAYOUT: of a file that was saved several times, but whose allocation tables are whole.
    ObjectFinder(File& file, std::uint64_t fileSize, const Layout* layout)
        : file_(file), fileSize_(fileSize), layout_(layout) {}

    /// The objects whose ids are known, without those that are READABLE anyway.
    Result<std::map<ObjectId, Place>> run(const Readable& readable) {
        noteUnused();
        QUOBRIX_TRY(scan());
        if (!layout_) {
            takeLarge();
            QUOBRIX_TRY(verifyLarge());
            QUOBRIX_TRY(walkMiniStream());
        }
        QUOBRIX_TRY(takeSingletons(readable));
        std::erase_if(found_, [&](const auto& found) { return readable.classes.contains(found.first); });
        return std::move(found_);
    }

private:
    struct Named {
        ObjectId id; ///< kNoObject: another stream
        std::uint32_t start, size;
    };

    /// What the allocation tables call free is of an earlier state.
    void noteUnused() {
        if (!layout_)
            return;
        const auto free = [](const Pages& table, std::uint32_t sector) {
            return sector < table.count() * kMarksPerPage && load32(table.at(std::size_t{4} * sector)) == kFreeSector;
        };
        for (std::uint32_t sector = 0; sector < layout_->fat.count() * kMarksPerPage; ++sector)
            if (free(layout_->fat, sector))
                unusedSectors_.insert(sector);
        for (std::size_t page = 0; page < layout_->miniStreamChain.size(); ++page)
            for (std::uint32_t i = 0; i < kMiniSectorsPerPage; ++i)
                if (free(layout_->miniFat, static_cast<std::uint32_t>(page) * kMiniSectorsPerPage + i))
                    unusedMini_.insert(layout_->miniStreamChain[page] * kMiniSectorsPerPage + i);
    }

    static bool mini(const Named& named) { return named.size < kMiniCutoff; }

    Result<void> scan() {
        constexpr std::uint32_t kBlock = 1 << 20;
        for (const PersistentType* type : modelTypes().all())
            if (const auto made = type->singleton ? type->create() : nullptr)
                if (const auto* const table = dynamic_cast<const Table*>(made.get())) {
                    roots_.insert(type->id());
                    for (const PersistentType* column : table->spec().columns)
                        singletons_.try_emplace(column->id());
                    singletons_.try_emplace(type->id());
                }
        Bytes block;
        for (std::uint64_t offset = kSectorSize; offset < fileSize_; offset += kBlock) {
            block.assign(static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, fileSize_ - offset)), 0);
            QUOBRIX_TRY(file_.readAt(offset, block));
            block.resize(unitsOf(block.size(), kSectorSize) * kSectorSize); // a last sector may lack its end
            for (std::size_t at = 0; at < block.size(); at += kSectorSize)
                scanSector(block.data() + at, offset + at);
        }
        std::ranges::sort(named_, [](const Named& a, const Named& b) { return a.start < b.start; });
        return {};
    }

    void scanSector(const std::uint8_t* bytes, std::uint64_t offset) {
        const auto sector = static_cast<std::uint32_t>(offset / kSectorSize - 1);
        if (unusedSectors_.contains(sector))
            return;
        if (looksLikeDirectory(bytes))
            return takeEntries(bytes);
        for (std::uint32_t at = 0; at < kSectorSize; at += kMiniSectorSize)
            if (const PersistentType* const type = classOf(bytes + at);
                type && !unusedMini_.contains(sector * kMiniSectorsPerPage + at / kMiniSectorSize)) {
                objectStarts_.push_back(offset + at);
                if (const auto found = singletons_.find(type->id()); found != singletons_.end())
                    found->second.push_back(objectStarts_.size() - 1);
            }
    }

    static bool looksLikeDirectory(const std::uint8_t* bytes) {
        bool used = false;
        for (const std::uint8_t* at = bytes; at < bytes + kSectorSize; at += kEntrySize) {
            const auto type = static_cast<EntryType>(at[entry::kType]);
            const std::uint32_t nameBytes = load16(at + entry::kNameBytes);
            if (type == EntryType::Unused && std::all_of(at, at + entry::kType, [](auto byte) { return byte == 0; }))
                continue;
            if ((type != EntryType::Stream && type != EntryType::Root && type != EntryType::Storage) ||
                at[entry::kColour] > 1 || nameBytes < 4 || nameBytes > 64 || nameBytes % 2 != 0)
                return false;
            for (std::uint32_t unit = 0; unit < nameBytes; unit += 2)
                if ((load16(at + unit) == 0) != (unit + 2 == nameBytes))
                    return false;
            used = true;
        }
        return used;
    }

    void takeEntries(const std::uint8_t* bytes) {
        for (const std::uint8_t* at = bytes; at < bytes + kSectorSize; at += kEntrySize) {
            const auto type = static_cast<EntryType>(at[entry::kType]);
            if (type == EntryType::Unused || type == EntryType::Storage)
                continue;
            const EntryName name(at + entry::kName, load16(at + entry::kNameBytes) / 2u - 1);
            const Named named{idOfStream(name.text()), load32(at + entry::kStart), load32(at + entry::kSize)};
            if (type == EntryType::Root)
                root_ = ++rootCount_ == 1 ? std::optional(named) : std::nullopt;
            else if (named.size > 0)
                named_.push_back(named);
        }
    }

    /// Where large streams lie; what claims to overlap another one is garbage.
    void takeLarge() {
        std::uint64_t end = 0;
        for (const Named& named : named_) {
            if (mini(named) || sectorOffset(named.start) + named.size > fileSize_)
                continue;
            if (named.start < end) {
                overlapping_ = true;
                continue;
            }
            large_.push_back(named);
            end = std::uint64_t{named.start} + unitsOf(named.size, kSectorSize);
        }
    }

    Result<void> verifyLarge() {
        Bytes content;
        for (const Named& named : large_) {
            if (named.id == kNoObject || overlapping_)
                continue;
            const Place place{{sectorOffset(named.start), named.size}};
            QUOBRIX_TRY(readParts(file_, place, content));
            if (const auto piece = pieceIn(content); piece && piece->size == named.size)
                add(named.id, place, *piece->object);
        }
        return {};
    }

    // The mini stream

    /// The sectors of its pages are known from its first one on, since all but large streams is of it. Where an object
    /// is not where it should be, a large stream that has lost its entry lies there, or something is damaged, and
    /// nobody knows where the stream goes on. Large streams are longer than any object of the mini stream, so that one
    /// is noticed with the next object at the latest: what is on later pages than that one begins is not believed.
    Result<void> walkMiniStream() {
        if (!root_ || overlapping_)
            return {};
        std::vector<std::uint32_t> pages;
        auto nextLarge = large_.begin();
        const auto pageSector = [&](std::uint32_t page) {
            while (pages.size() <= page) {
                std::uint32_t sector = pages.empty() ? root_->start : pages.back() + 1;
                for (; nextLarge != large_.end() && nextLarge->start <= sector; ++nextLarge)
                    if (const std::uint32_t end = nextLarge->start + unitsOf(nextLarge->size, kSectorSize);
                        sector < end)
                        sector = end;
                pages.push_back(sector);
            }
            return pages[page];
        };
        const std::uint64_t inFile = fileSize_ / kMiniSectorSize;
        const auto end =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(unitsOf(root_->size, kMiniSectorSize), inFile));
        const auto placeOf = [&](std::uint32_t first, std::size_t size) {
            Place place;
            for (std::uint32_t at = first; size > 0 && at < end;
                 at = (at / kMiniSectorsPerPage + 1) * kMiniSectorsPerPage) {
                const std::uint32_t within = at % kMiniSectorsPerPage * kMiniSectorSize;
                const std::uint64_t offset = sectorOffset(pageSector(at / kMiniSectorsPerPage)) + within;
                const std::size_t part = std::min<std::size_t>(size, kSectorSize - within);
                if (offset + part > fileSize_)
                    break;
                if (!place.empty() && place.back().offset + place.back().size == offset)
                    place.back().size += part;
                else
                    place.push_back({offset, part});
                size -= part;
            }
            return place;
        };
        struct Claim {
            ObjectId id;
            std::uint32_t lastPage;
            Place place;
            std::unique_ptr<PersistentObject> object;
        };
        std::vector<Claim> claims;
        std::uint32_t certainPage = 0;
        Bytes content;
        auto next = named_.begin();
        for (std::uint32_t at = 0; at < end;) {
            while (next != named_.end() && (!mini(*next) || next->start < at))
                ++next;
            const bool named = next != named_.end() && next->start == at;
            if (named && next + 1 != named_.end() && (next + 1)->start == at && mini(*(next + 1)))
                break; // two entries cannot name the same
            Place place = placeOf(at, named ? next->size : kMiniCutoff - 1);
            QUOBRIX_TRY(readParts(file_, place, content));
            const std::uint32_t last = at + unitsOf(static_cast<std::uint32_t>(content.size()), kMiniSectorSize) - 1;
            if (named && next->id == kNoObject && content.size() == next->size) {
                at = last + 1;
                continue;
            }
            auto piece = pieceIn(content);
            if (!piece || (named && piece->size != next->size))
                break;
            certainPage = at / kMiniSectorsPerPage;
            if (named)
                claims.push_back({next->id, last / kMiniSectorsPerPage, std::move(place), std::move(piece->object)});
            at += unitsOf(static_cast<std::uint32_t>(piece->size), kMiniSectorSize);
        }
        for (Claim& claim : claims)
            if (claim.lastPage <= certainPage)
                add(claim.id, std::move(claim.place), *claim.object);
        return {};
    }

    void add(ObjectId id, Place place, const PersistentObject& object) {
        noteIds(object);
        nextId_ = std::max(nextId_, id + 1);
        namedClasses_.insert(object.type().id());
        if (!found_.emplace(id, std::move(place)).second)
            doubtful_.insert(id);
    }
    void noteIds(const PersistentObject& object) {
        for (const Reference& reference : object.references()) {
            if (reference.id < kNoObject / 2)
                nextId_ = std::max(nextId_, reference.id + 1);
            if (singletons_.contains(reference.typeId))
                singletonIds_.emplace(reference.typeId, reference.id);
        }
    }

    // Tables of logs and their columns, of each of which a document has one

    /// Those that have lost their entries are known by their class, if there is one of it only. It has to lie in one
    /// sector or be followed by another object: then nothing lies between its parts.
    Result<void> takeSingletons(const Readable& readable) {
        for (const Reference& column : readable.columns)
            singletonIds_.emplace(column.typeId, column.id);
        for (const auto& [id, typeId] : readable.classes) {
            namedClasses_.insert(typeId);
            nextId_ = std::max(nextId_, id + 1);
        }
        for (const ObjectId id : doubtful_)
            found_.erase(id);
        std::map<std::uint32_t, std::pair<Place, std::unique_ptr<PersistentObject>>> lone; // by class
        Bytes content;
        std::uint64_t read = 0;
        for (const auto& [typeId, starts] : singletons_) {
            if (starts.size() != 1 || namedClasses_.contains(typeId))
                continue;
            const std::uint64_t offset = objectStarts_[starts.front()];
            for (std::size_t next = starts.front() + 1; next < objectStarts_.size() && read <= 4 * fileSize_; ++next) {
                const auto size = static_cast<std::size_t>(objectStarts_[next] - offset);
                read += size;
                QUOBRIX_TRY(readParts(file_, {{offset, size}}, content));
                auto piece = pieceIn(content);
                if (!piece)
                    continue; // what lies there only looked like the next one
                if (layout_ && piece->size > kMiniSectorSize)
                    break; // its parts may lie anywhere
                if (offset / kSectorSize == (offset + piece->size - 1) / kSectorSize ||
                    unitsOf(piece->size, kMiniSectorSize) * kMiniSectorSize == size ||
                    (piece->size >= kMiniCutoff && offset % kSectorSize == 0)) {
                    noteIds(*piece->object);
                    lone.emplace(typeId, std::pair(Place{{offset, piece->size}}, std::move(piece->object)));
                }
                break;
            }
        }
        for (auto& [typeId, what] : lone) {
            const auto known = singletonIds_.find(typeId);
            const bool named = !roots_.contains(typeId) && known != singletonIds_.end() &&
                               known->second < kNoObject / 2 && !readable.classes.contains(known->second);
            if (!named || !found_.emplace(known->second, what.first).second)
                found_.emplace(nextId_++, std::move(what.first));
        }
        return {};
    }

    File& file_;
    const std::uint64_t fileSize_; // bytes
    const Layout* const layout_;
    SectorSet unusedSectors_, unusedMini_; // the latter counted from the beginning of the first sector
    std::vector<Named> named_;             // by start
    std::vector<Named> large_;             // by start
    std::optional<Named> root_;            // the mini stream, if one entry tells
    std::size_t rootCount_ = 0;
    bool overlapping_ = false;
    std::vector<std::uint64_t> objectStarts_;                      // what looks like objects, bytes
    std::map<std::uint32_t, std::vector<std::size_t>> singletons_; // by class: which of these
    std::unordered_set<std::uint32_t> roots_;                      // classes of the tables among them
    std::unordered_map<std::uint32_t, ObjectId> singletonIds_;     // by class, as their tables say
    std::unordered_set<std::uint32_t> namedClasses_;
    std::map<ObjectId, Place> found_;
    std::set<ObjectId> doubtful_; // said twice
    ObjectId nextId_ = 0;
};

/// What can be read of a damaged file, and what was found in it.
class SalvagedFile final : public CompoundFile {
public:
    SalvagedFile(std::unique_ptr<File> file, std::unique_ptr<CompoundFile> rest, std::map<ObjectId, Place> found,
                 bool previous = false)
        : file_(std::move(file)), rest_(std::move(rest)), previous_(previous) {
        for (const auto& [id, place] : found)
            found_.emplace(std::to_string(id), place);
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
    using CompoundFile::read;
    Result<void> read(std::string_view name, Bytes& content) const override {
        const auto found = found_.find(name);
        if (found == found_.end())
            return rest_ ? rest_->read(name, content) : Error{ErrorKind::NotFound, "stream " + std::string(name)};
        return readParts(*file_, found->second, content);
    }
    Result<void> writable() const override {
        if (previous_)
            return Error{ErrorKind::Corrupt, "the end of the file is missing or its structure is damaged, and with it "
                                             "what was saved last; this is all as it was before the last save"};
        const Result<void> rest =
            rest_ ? rest_->writable() : Error{ErrorKind::Corrupt, "header, allocation tables or directory are lost"};
        if (rest)
            return rest;
        const std::string found =
            found_.empty() ? std::string() : fmt::format("; {} objects were found without them", found_.size());
        return Error{ErrorKind::Corrupt, rest.error().detail + found + "; there may have been more"};
    }
    Space space() const override { return rest_ ? rest_->space() : Space{}; }

    void write(std::string_view, Bytes) override {}
    void remove(std::string_view) override {}
    Result<void> spill() override { return refused(); }
    Result<void> commit() override { return refused(); }
    Result<void> copyTo(File&) const override { return refused(); }
    Result<void> compactTo(File&) const override { return refused(); }

private:
    static Error refused() { return {ErrorKind::ReadOnly, "a damaged file is only read"}; }

    const std::unique_ptr<File> file_;
    const std::unique_ptr<CompoundFile> rest_; // over file_; none where nothing of the structure is left
    const bool previous_;                      // rest_ is the state before the last save
    std::map<std::string, Place, std::less<>> found_;
};

/// Objects of FILE that can be read, as their classes know them.
Readable readableObjects(const CompoundFile& file) {
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

bool isWhole(const CompoundFile& file) {
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

Result<std::unique_ptr<CompoundFile>> openForRepair(std::unique_ptr<File> file) {
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
            return std::unique_ptr<CompoundFile>(
                std::make_unique<SalvagedFile>(std::move(file), std::move(rest), std::map<ObjectId, Place>()));
    }
    const Result<std::uint64_t> end = endIfWrittenInOneGo(*file, *size);
    if (!end)
        return end.error();
    // Whole tables tell earlier states apart.
    const bool tablesWhole = layout && !layout->incomplete;
    auto found = *end > 0      ? ObjectFinder(*file, *end, nullptr).run(readable)
                 : tablesWhole ? ObjectFinder(*file, *size, &*layout).run(readable)
                               : std::map<ObjectId, Place>();
    if (!found)
        return found.error();
    if (!tablesWhole) {
        auto previous = openPrevious(*file);
        if (!previous)
            return previous.error();
        // States are not mixed: it is the one that more is left of, and of the same number the last one.
        if (*previous && readableObjects(**previous).classes.size() > readable.classes.size() + found->size())
            return std::unique_ptr<CompoundFile>(std::make_unique<SalvagedFile>(std::move(file), *std::move(previous),
                                                                                std::map<ObjectId, Place>(), true));
    }
    if (!layout && found->empty()) {
        if (*end > 0)
            return layout.error();
        return Error{layout.error().kind,
                     layout.error().detail +
                         "; it was saved several times, or nothing tells that it was not, so that earlier states in it "
                         "cannot be told from the last one, and the one before the last save is not whole"};
    }
    return std::unique_ptr<CompoundFile>(
        std::make_unique<SalvagedFile>(std::move(file), std::move(rest), *std::move(found)));
}

} // namespace quobrix
