#include "repair/object_finder.h"

#include "compound/format.h"
#include "compound/layout.h"
#include "compound/name.h"
#include "compound/sector_set.h"
#include "model/quobrix_document.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <unordered_set>
#include <utility>

namespace quobrix {

using namespace cfb;

namespace {

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
    /// it is not known where the stream goes on. Large streams are longer than any object of the mini stream, so that
    /// one is noticed with the next object at the latest: what is on later pages than that one begins is not believed.
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

} // namespace

Result<void> readParts(File& file, const Place& place, Bytes& content) {
    content.clear();
    for (const Part& part : place) {
        const std::size_t before = content.size();
        content.resize(before + part.size);
        QUOBRIX_TRY(file.readAt(part.offset, std::span(content).subspan(before)));
    }
    return {};
}

// The header counts the commits, and leads to the FAT, which is the last to be written. Where that is lost, a FAT at
// the file's end that calls no sector free tells as much, since each further commit moves the FAT and frees where it
// was.
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

Result<std::map<ObjectId, Place>> findObjects(File& file, std::uint64_t fileSize, const Layout* layout,
                                              const Readable& readable) {
    return ObjectFinder(file, fileSize, layout).run(readable);
}

} // namespace quobrix
