#include "model/salvaged_file.h"

#include "document/compound_io.h"
#include "document/compound_layout.h"
#include "document/compound_name.h"
#include "model/quobrix_document.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace quobrix {
namespace {

using namespace cfb;

/// Where an object lies in the file (bytes).
struct Place {
    std::uint64_t offset = 0;
    std::size_t size = 0;
};

using Readable = std::unordered_map<ObjectId, std::uint32_t>; // their classes

/// Looks through a file for objects and directory entries.
class ObjectFinder {
public:
    /// LAYOUT: what is known of the file, if anything.
    ObjectFinder(File& file, std::uint64_t fileSize, const Layout* layout)
        : file_(file), fileSize_(fileSize), layout_(layout) {}

    /// The objects whose ids are known, without those that are READABLE anyway.
    Result<std::map<ObjectId, Place>> run(const Readable& readable) {
        noteUnused();
        QUOBRIX_TRY(scan());
        QUOBRIX_TRY(readPieces());
        sortReferences();
        for (std::size_t i = 0; i < pieces_.size(); ++i)
            byOffset_.emplace(pieces_[i].offset, i);
        claimColumns();
        claimByEntries();
        settleClaims();
        chooseStates(readable);
        for (const auto& [id, typeId] : readable) {
            known_.insert(id);
            namedClasses_.insert(typeId);
        }
        for (const Piece& piece : pieces_)
            if (piece.id != kNoObject)
                known_.insert(piece.id);
        if (savedOnce()) {
            nameBetween();
            nameBehind();
        }
        nameLone();
        std::map<ObjectId, Place> found;
        for (const Piece& piece : pieces_)
            if (piece.id != kNoObject && !readable.contains(piece.id))
                found.emplace(piece.id, Place{piece.offset, piece.size});
        return found;
    }

private:
    /// What looks like an object.
    struct Piece {
        std::uint64_t offset = 0;
        std::uint32_t typeId = 0;
        std::size_t size = 0; ///< bytes
        std::size_t hash = 0; ///< of its content
        std::size_t firstReference = 0, references = 0;
        bool table = false;
        std::optional<std::size_t> rows = {}; ///< of a table, or of a column with an array of its own
        ObjectId id = kNoObject;
    };
    /// A directory entry that names an object.
    struct Named {
        ObjectId id;
        std::uint32_t start, size;
    };
    /// A reason to take a piece for an object. Certain: what the piece says, not only where it lies.
    struct Claim {
        ObjectId id = kNoObject;
        std::size_t piece = 0;
        bool certain = false;
    };
    static constexpr std::size_t kNone = ~std::size_t{0}; ///< no piece

    // What is there

    /// As far as the allocation tables are known, what they call free is an earlier state.
    void noteUnused() {
        if (!layout_)
            return;
        const auto mark = [](const Pages& table, std::uint32_t sector) {
            return sector < table.count() * kMarksPerPage ? load32(table.at(std::size_t{4} * sector)) : kUnknownSector;
        };
        for (std::uint32_t sector = 0; sector < layout_->fat.count() * kMarksPerPage; ++sector)
            if (mark(layout_->fat, sector) == kFreeSector)
                unusedSectors_.insert(sector);
        for (std::size_t page = 0; page < layout_->miniStreamChain.size(); ++page)
            for (std::uint32_t i = 0; i < kMiniSectorsPerPage; ++i)
                if (mark(layout_->miniFat, static_cast<std::uint32_t>(page) * kMiniSectorsPerPage + i) == kFreeSector)
                    unusedMini_.insert(layout_->miniStreamChain[page] * kMiniSectorsPerPage + i);
    }

    Result<void> scan() {
        constexpr std::uint32_t kBlock = 1 << 20;
        Bytes block;
        for (std::uint64_t offset = kSectorSize; offset < fileSize_; offset += kBlock) {
            block.assign(static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, fileSize_ - offset)), 0);
            QUOBRIX_TRY(file_.readAt(offset, block));
            block.resize(unitsOf(block.size(), kSectorSize) * kSectorSize); // a last sector may lack its end
            for (std::size_t at = 0; at < block.size(); at += kSectorSize)
                scanSector(block.data() + at, static_cast<std::uint32_t>((offset + at) / kSectorSize - 1));
        }
        return {};
    }

    void scanSector(const std::uint8_t* bytes, std::uint32_t sector) {
        if (unusedSectors_.contains(sector))
            return;
        if (looksLikeDirectory(bytes))
            return takeEntries(bytes);
        for (std::uint32_t i = 0; i < kMiniSectorsPerPage; ++i) {
            const std::uint8_t* const at = bytes + std::size_t{i} * kMiniSectorSize;
            const PersistentType* const type = types_.find(load32(at));
            if (type && at[4] > 0 && at[4] <= type->schema && !unusedMini_.contains(sector * kMiniSectorsPerPage + i))
                pieces_.push_back({sectorOffset(sector) + std::size_t{i} * kMiniSectorSize, type->id()});
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
            if (type == EntryType::Root)
                pageSectors_[0].insert(load32(at + entry::kStart));
            if (type != EntryType::Stream)
                continue;
            const EntryName name(at + entry::kName, load16(at + entry::kNameBytes) / 2u - 1);
            if (const ObjectId id = idOfStream(name.text()); id != kNoObject)
                named_.push_back({id, load32(at + entry::kStart), load32(at + entry::kSize)});
        }
    }

    /// Each piece ends before the next one begins, so that everything is read once only.
    Result<void> readPieces() {
        Bytes content;
        std::size_t kept = 0;
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            Piece piece = pieces_[i];
            const std::uint64_t end = i + 1 < pieces_.size() ? pieces_[i + 1].offset : fileSize_;
            content.resize(static_cast<std::size_t>(end - piece.offset));
            QUOBRIX_TRY(file_.readAt(piece.offset, content));
            ByteReader in(content);
            const PersistentType* const type = types_.find(in.u32());
            const std::uint8_t schema = in.u8();
            const std::unique_ptr<PersistentObject> object = type->create();
            if (!in.complete() || !object->read(in, schema) || !in.complete())
                continue;
            piece.size = content.size() - in.remaining();
            piece.hash = std::hash<std::string_view>()({reinterpret_cast<const char*>(content.data()), piece.size});
            piece.firstReference = references_.size();
            const std::vector<Reference> references = object->references();
            references_.insert(references_.end(), references.begin(), references.end());
            piece.references = references.size();
            TableContent table;
            ByteReader again(ByteView(content).subspan(4 + 1));
            const auto* const column = dynamic_cast<const Column*>(object.get());
            piece.table = dynamic_cast<const Table*>(object.get()) && table.read(again);
            if (piece.table)
                piece.rows = table.rows;
            else if (column && column->stored())
                piece.rows = column->storedRows();
            pieces_[kept++] = piece;
        }
        pieces_.resize(kept);
        return {};
    }

    /// What objects refer to, each once, without ids of which two classes are said.
    void sortReferences() {
        expected_ = references_;
        std::ranges::sort(expected_, [](const Reference& a, const Reference& b) {
            return std::tie(a.id, a.typeId) < std::tie(b.id, b.typeId);
        });
        std::size_t kept = 0;
        for (std::size_t i = 0, next = 0; i < expected_.size(); i = next) {
            bool one = true;
            for (next = i + 1; next < expected_.size() && expected_[next].id == expected_[i].id; ++next)
                one = one && expected_[next].typeId == expected_[i].typeId;
            if (one && expected_[i].id < kNoObject / 2)
                expected_[kept++] = expected_[i];
        }
        expected_.resize(kept);
    }

    bool mayBe(ObjectId id, const Piece& piece) const {
        const auto found = std::ranges::lower_bound(expected_, id, {}, &Reference::id);
        return found == expected_.end() || found->id != id || found->typeId == piece.typeId;
    }

    // Claims

    /// A table is followed by its columns, up to the next table.
    void claimColumns() {
        const bool once = savedOnce();
        constexpr std::size_t kStrangers = 8; // in a row, that have taken the places of columns since
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            if (!pieces_[i].table)
                continue;
            std::unordered_map<std::uint32_t, ObjectId> columns; // by class
            for (const Reference& column : referencesOf(pieces_[i]))
                columns.emplace(column.typeId, column.id);
            const auto follows = [&](std::size_t k) { // in a file with earlier states the next sector may be any page
                const Piece& before = pieces_[k - 1];
                return unitsOf(before.offset + before.size, kMiniSectorSize) * kMiniSectorSize == pieces_[k].offset &&
                       (once || (pieces_[i].offset / kSectorSize == pieces_[k].offset / kSectorSize));
            };
            std::size_t strangers = 0;
            for (std::size_t k = i + 1;
                 k < pieces_.size() && strangers < kStrangers && !columns.empty() && !pieces_[k].table && follows(k);
                 ++k) {
                const auto column = columns.find(pieces_[k].typeId);
                strangers = column == columns.end() ? strangers + 1 : 0;
                if (column == columns.end())
                    continue;
                if (!pieces_[k].rows || pieces_[k].rows == pieces_[i].rows)
                    claims_.push_back({column->second, k, true});
                columns.erase(column);
            }
        }
    }

    /// What lies where a directory entry says. For the mini stream the place of its pages in the file has to be found:
    /// from columns that are known already, and of the pages between two that lie as far apart as they should.
    void claimByEntries() {
        std::ranges::sort(named_, {}, &Named::id);
        for (const Claim& claim : claims_)
            for (auto named = std::ranges::lower_bound(named_, claim.id, {}, &Named::id);
                 named != named_.end() && named->id == claim.id; ++named)
                if (const Piece& piece = pieces_[claim.piece];
                    named->size == piece.size && named->size < kMiniCutoff &&
                    piece.offset / kMiniSectorSize % kMiniSectorsPerPage == named->start % kMiniSectorsPerPage)
                    pageSectors_[named->start / kMiniSectorsPerPage].insert(
                        static_cast<std::uint32_t>(piece.offset / kSectorSize - 1));
        fillPages();
        for (const Named& named : named_) {
            if (named.size >= kMiniCutoff) {
                claim(named, sectorOffset(named.start));
                continue;
            }
            const auto page = pageSectors_.find(named.start / kMiniSectorsPerPage);
            if (page == pageSectors_.end())
                continue;
            // Of several states of a page none is believed unless they agree.
            const std::size_t before = claims_.size();
            for (const std::uint32_t sector : page->second)
                claim(named, sectorOffset(sector) + std::size_t{named.start % kMiniSectorsPerPage} * kMiniSectorSize);
            if (claims_.size() - before < page->second.size())
                claims_.resize(before, {});
        }
    }

    void fillPages() {
        std::vector<std::pair<std::uint32_t, std::uint32_t>> between; // page and sector
        for (auto next = pageSectors_.begin(); next != pageSectors_.end();) {
            const auto page = next++;
            for (const std::uint32_t sector : page->second) {
                const std::uint32_t gap = next == pageSectors_.end() ? 0 : next->first - page->first;
                if (gap > 1 && next->second.contains(sector + gap))
                    for (std::uint32_t i = 1; i < gap && i < fileSize_ / kSectorSize; ++i)
                        between.emplace_back(page->first + i, sector + i);
            }
        }
        for (const auto& [page, sector] : between)
            pageSectors_[page].insert(sector);
    }

    void claim(const Named& named, std::uint64_t offset) {
        const auto found = byOffset_.find(offset);
        if (found != byOffset_.end() && pieces_[found->second].size == named.size &&
            mayBe(named.id, pieces_[found->second]))
            claims_.push_back({named.id, found->second, false});
    }

    /// An object is named if all that is claimed to be it is the same; what is certain outdoes what is not. Otherwise
    /// nobody knows which is of an earlier state, and nothing is better than what belongs to another record.
    void settleClaims() {
        std::vector<ObjectId> holder(pieces_.size(), kNoObject); // by certain claims, or by the only other one
        std::vector<bool> contested(pieces_.size());
        for (const bool certain : {true, false}) {
            const std::vector<ObjectId> before = holder;
            for (const Claim& claim : claims_) {
                if (claim.certain != certain || (!certain && before[claim.piece] != kNoObject))
                    continue;
                if (holder[claim.piece] != kNoObject && holder[claim.piece] != claim.id)
                    contested[claim.piece] = true;
                holder[claim.piece] = claim.id;
            }
        }
        std::erase_if(claims_,
                      [&](const Claim& claim) { return contested[claim.piece] || holder[claim.piece] != claim.id; });
        std::ranges::sort(claims_, [](const Claim& a, const Claim& b) {
            return std::tuple(a.id, !a.certain, a.piece) < std::tuple(b.id, !b.certain, b.piece);
        });
        for (std::size_t i = 0, next = 0; i < claims_.size(); i = next) {
            const Piece& first = pieces_[claims_[i].piece];
            bool one = true;
            for (next = i; next < claims_.size() && claims_[next].id == claims_[i].id; ++next)
                one = one && (claims_[next].certain != claims_[i].certain ||
                              (pieces_[claims_[next].piece].hash == first.hash &&
                               pieces_[claims_[next].piece].typeId == first.typeId));
            if (one || isSingletonColumn(first.typeId))
                pieces_[claims_[i].piece].id = claims_[i].id;
            else
                known_.insert(claims_[i].id); // so that nothing else is taken for it
        }
    }

    bool isSingletonColumn(std::uint32_t typeId) {
        if (singletonColumns_.empty())
            for (const PersistentType* type : types_.all())
                if (const auto made = type->singleton ? type->create() : nullptr)
                    if (const auto* const table = dynamic_cast<const Table*>(made.get()))
                        for (const PersistentType* column : table->spec().columns)
                            singletonColumns_.insert(column->id());
        return singletonColumns_.contains(typeId);
    }

    // By what others refer to

    std::span<const Reference> referencesOf(const Piece& piece) const {
        return std::span(references_).subspan(piece.firstReference, piece.references);
    }

    void name(Piece& piece, ObjectId id) {
        if (piece.id == kNoObject && known_.insert(id).second)
            piece.id = id;
    }

    /// The columns of a singleton have classes of their own, so all pieces of one class are states of one object. Where
    /// pages of the directory are lost, an earlier page may lead to an earlier state: what has as many rows as most
    /// columns is the one that belongs to them.
    void chooseStates(const Readable& readable) {
        std::unordered_map<std::uint32_t, std::vector<std::size_t>> states; // by class, in the order of the file
        for (std::size_t i = 0; i < pieces_.size(); ++i)
            if (pieces_[i].rows && !pieces_[i].table)
                states[pieces_[i].typeId].push_back(i);
        std::unordered_map<std::uint32_t, ObjectId> ids; // by class; none where there are several
        for (const Reference& reference : expected_)
            if (const auto [known, first] = ids.emplace(reference.typeId, reference.id); !first)
                known->second = kNoObject;
        for (const PersistentType* type : types_.all()) {
            const std::unique_ptr<PersistentObject> made = type->singleton ? type->create() : nullptr;
            const auto* const table = dynamic_cast<const Table*>(made.get());
            if (!table)
                continue;
            const std::optional<std::size_t> rows = rowsOf(table->spec(), states);
            for (const PersistentType* column : table->spec().columns) {
                const std::vector<std::size_t>& all = states[column->id()];
                const auto current = std::ranges::find_if(all, [&](auto i) { return pieces_[i].id != kNoObject; });
                const ObjectId id = current != all.end() ? pieces_[*current].id
                                                         : ids.try_emplace(column->id(), kNoObject).first->second;
                if (id == kNoObject || readable.contains(id) ||
                    (current != all.end() && pieces_[*current].rows == rows))
                    continue;
                const auto better =
                    std::find_if(all.rbegin(), all.rend(), [&](auto i) { return pieces_[i].rows == rows; });
                if (better == all.rend())
                    continue;
                if (current != all.end())
                    pieces_[*current].id = kNoObject;
                pieces_[*better].id = id;
            }
        }
    }

    /// How many rows most columns have that the directory leads to; where it leads to none, the most that half as many
    /// classes have in common as any number.
    std::optional<std::size_t> rowsOf(const TableSpec& spec,
                                      std::unordered_map<std::uint32_t, std::vector<std::size_t>>& states) const {
        std::map<std::size_t, std::size_t> named, any; // how many columns, by rows
        for (const PersistentType* column : spec.columns) {
            std::set<std::size_t> seen;
            for (const std::size_t i : states[column->id()]) {
                named[*pieces_[i].rows] += pieces_[i].id != kNoObject ? 1 : 0;
                any[*pieces_[i].rows] += seen.insert(*pieces_[i].rows).second ? 1 : 0;
            }
        }
        const auto most = [](const auto& votes) {
            std::size_t highest = 0;
            for (const auto& [rows, count] : votes)
                highest = std::max(highest, count);
            return highest;
        };
        const std::size_t needed = most(named);
        std::optional<std::size_t> result;
        for (const auto& [rows, count] : needed > 0 ? named : any)
            if (needed > 0 ? count == needed : count * 2 >= most(any))
                result = rows;
        return result;
    }

    /// Between two objects that are known, those that have to be there are those that are, if their classes agree.
    void nameBetween() {
        std::size_t first = kNone; // the last piece that is known
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            if (pieces_[i].id == kNoObject)
                continue;
            if (first != kNone && i > first + 1 && pieces_[first].id < pieces_[i].id) {
                auto wanted = std::ranges::upper_bound(expected_, pieces_[first].id, {}, &Reference::id);
                std::vector<ObjectId> ids;
                std::size_t k = first + 1;
                bool agree = true;
                for (; wanted != expected_.end() && wanted->id < pieces_[i].id && agree; ++wanted) {
                    if (known_.contains(wanted->id))
                        continue;
                    agree = k < i && pieces_[k++].typeId == wanted->typeId;
                    ids.push_back(wanted->id);
                }
                if (agree && k == i)
                    for (k = first + 1; k < i; ++k)
                        name(pieces_[k], ids[k - first - 1]);
            }
            first = i;
        }
    }

    /// There are no earlier states: nothing has been moved, and what is written together lies together.
    bool savedOnce() {
        std::unordered_set<std::uint32_t> seen;
        return std::ranges::none_of(pieces_, [&](const Piece& piece) {
            return isSingletonColumn(piece.typeId) && !seen.insert(piece.typeId).second;
        });
    }

    /// Behind an object that is known, those that have to have the next ids are those that lie there, if all their
    /// classes agree.
    void nameBehind() {
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            if (pieces_[i].id == kNoObject)
                continue;
            const auto first = std::ranges::upper_bound(expected_, pieces_[i].id, {}, &Reference::id);
            std::size_t count = 0;
            const auto wanted = [&] {
                const auto at = first + static_cast<std::ptrdiff_t>(count);
                return at != expected_.end() && at->id == pieces_[i].id + 1 + count && !known_.contains(at->id);
            };
            while (wanted() && i + count + 1 < pieces_.size() && pieces_[i + count + 1].id == kNoObject &&
                   pieces_[i + count + 1].typeId == first[static_cast<std::ptrdiff_t>(count)].typeId)
                ++count;
            if (wanted())
                continue;
            for (std::size_t k = 0; k < count; ++k)
                name(pieces_[i + 1 + k], first[static_cast<std::ptrdiff_t>(k)].id);
        }
    }

    /// What there is only one of. Of several states of it the largest, and of these the last in the file, is taken.
    void nameLone() {
        std::unordered_map<std::uint32_t, std::vector<ObjectId>> wanted; // by class
        for (const Reference& reference : expected_)
            if (!known_.contains(reference.id))
                wanted[reference.typeId].push_back(reference.id);
        std::unordered_map<std::uint32_t, std::pair<std::size_t, std::size_t>> best; // by class: which, and how many
        ObjectId free = 0;
        for (const ObjectId id : known_)
            free = std::max(free, id + 1);
        for (const Reference& reference : expected_)
            free = std::max(free, reference.id + 1);
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            if (pieces_[i].id != kNoObject) {
                namedClasses_.insert(pieces_[i].typeId);
                continue;
            }
            auto& [piece, count] = best.try_emplace(pieces_[i].typeId, i, 0).first->second;
            ++count;
            if (pieces_[i].size >= pieces_[piece].size)
                piece = i;
        }
        std::map<std::size_t, std::uint32_t> inOrder;
        for (const auto& [typeId, piece] : best)
            inOrder.emplace(piece.first, typeId);
        for (const auto& [piece, typeId] : inOrder) {
            const auto ids = wanted.find(typeId);
            if (ids != wanted.end() && ids->second.size() == 1)
                name(pieces_[piece], ids->second.front());
            else if (ids == wanted.end() && !namedClasses_.contains(typeId) &&
                     (best[typeId].second == 1 || types_.find(typeId)->singleton))
                name(pieces_[piece], free++);
        }
    }

    File& file_;
    const std::uint64_t fileSize_; // bytes
    const TypeRegistry& types_ = modelTypes();
    const Layout* const layout_;
    SectorSet unusedSectors_, unusedMini_; // the latter counted from the beginning of the first sector
    std::vector<Piece> pieces_;            // in the order of the file
    std::vector<Reference> references_;    // of all pieces
    std::vector<Named> named_;
    std::map<std::uint32_t, std::set<std::uint32_t>> pageSectors_; // where pages of the mini stream may lie
    std::vector<Claim> claims_;
    std::unordered_set<std::uint32_t> singletonColumns_; // classes
    std::unordered_map<std::uint64_t, std::size_t> byOffset_;
    std::unordered_set<ObjectId> known_;
    std::unordered_set<std::uint32_t> namedClasses_;
    std::vector<Reference> expected_; // by id
};

/// What can be read of a damaged file, and what was found in it.
class SalvagedFile final : public CompoundFile {
public:
    SalvagedFile(std::unique_ptr<File> file, std::unique_ptr<CompoundFile> rest, std::map<ObjectId, Place> found)
        : file_(std::move(file)), rest_(std::move(rest)) {
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
        content.resize(found->second.size);
        return file_->readAt(found->second.offset, content);
    }
    Result<void> writable() const override {
        const Result<void> rest =
            rest_ ? rest_->writable() : Error{ErrorKind::Corrupt, "header, allocation tables or directory are lost"};
        if (rest || found_.empty())
            return rest;
        return Error{
            ErrorKind::Corrupt,
            fmt::format(
                "{}; {} objects were found by what they look like, and may be of an earlier state: compare them",
                rest.error().detail, found_.size())};
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
        if (in.complete() && typeId != 0 && (!known || (type->create()->read(in, schema) && in.finished())))
            readable.emplace(id, typeId);
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
    auto found = ObjectFinder(*file, *size, layout ? &*layout : nullptr).run(readable);
    if (!found)
        return found.error();
    if (!layout && found->empty())
        return layout.error();
    return std::unique_ptr<CompoundFile>(
        std::make_unique<SalvagedFile>(std::move(file), std::move(rest), *std::move(found)));
}

} // namespace quobrix
