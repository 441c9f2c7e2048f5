#include "repair/document_repair.h"

#include "compound/compound_file.h"
#include "document/lock_file.h"
#include "platform/file_system.h"
#include "repair/salvaged_objects.h"
#include "texts/text.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>

namespace quobrix {
namespace {

using State = SalvagedObject::State;

class Salvage {
public:
    Salvage(const StreamReader& from, CompoundFile& into)
        : from_(from), into_(into), objects_(from), empty_(objects_.all().empty() && objects_.unreadable().empty()) {}

    Result<DocumentRepair> run() {
        for (const ShownText& damage : objects_.indexDamage())
            note(kNoObject, {}, text(TextId::TheIndexWasMadeAnew, damage));
        if (const Result<void> whole = from_.writable(); !whole) // what they led to is unknown
            lose(kNoObject, {}, whole.error().detail);
        for (const PersistentType* type : modelTypes().all())
            if (type->singleton)
                takeSingleton(*type);
        takeOrphans();
        tellTheRest();
        QUOBRIX_TRY(write());
        return std::move(result_);
    }

private:
    // The logs, name tables and other singletons

    void takeSingleton(const PersistentType& type) {
        const std::vector<ObjectId> candidates = objects_.ofClass(type.id());
        if (candidates.empty())
            return makeRoot(type);
        const auto worth = [&](ObjectId id) {
            return std::pair(chooseColumns(objects_.at(id)).rows, id == objects_.named(type));
        };
        const ObjectId best = *std::ranges::max_element(candidates, {}, worth);
        claim(best, {text(logOfClass(type.name)), {}}, State::Kept);
        for (const ObjectId id : candidates) {
            if (id == best)
                continue;
            lose(id, text(logOfClass(type.name)),
                 text(TextId::SmallerOfTwoLeftOut, type.name, chooseColumns(objects_.at(id)).rows));
            claim(id, {}, State::Dropped);
        }
    }

    /// In place of a table that cannot be read. Its columns know their classes, and there is one of each only.
    void makeRoot(const PersistentType& type) {
        if (!dynamic_cast<const Table*>(&objects_.prototype(type)))
            return;
        const bool expected = isRootTable(type);
        SalvagedObject root;
        root.type = &type;
        root.typeId = type.id();
        root.table.emplace();
        root.changed = true;
        const Columns columns = chooseColumns(root);
        const auto found = std::ranges::count_if(columns.ids, [](ObjectId id) { return id != kNoObject; });
        if (found == 0 && !expected)
            return;
        for (const auto& [id, unreadable] : objects_.unreadable())
            if (unreadable.typeId == type.id() || id == objects_.named(type))
                objects_.setTold(id);
        const ShownText log = text(logOfClass(type.name));
        if (found > 0)
            note(kNoObject, log, text(TextId::TableRebuiltFromColumns, found, columns.ids.size(), columns.rows));
        else if (!empty_)
            lose(kNoObject, log, text(TextId::TableAndColumnsLost));
        const ObjectId id = objects_.add(std::move(root));
        claim(id, {log, {}}, State::Kept);
    }

    // Tables and what they own

    /// Where something belongs, for the user.
    struct Place {
        ShownText log;
        ShownText within; ///< "record 3: Samples: ", or empty
    };

    /// Gives STATE to an object and to everything that it owns, directly or not, and mends references to what is lost.
    void claim(ObjectId id, Place place, State state) {
        struct Task {
            ObjectId id;
            Place place;
        };
        std::deque<Task> tasks{{id, std::move(place)}};
        objects_.at(id).state = state;
        const auto own = [&](ObjectId owned, SalvagedObject& object, Place at) {
            object.state = state;
            if (object.table || !object.cells.empty())
                tasks.push_back({owned, std::move(at)});
        };
        for (; !tasks.empty(); tasks.pop_front()) {
            const Task task = tasks.front();
            silent_ = state == State::Dropped;
            if (SalvagedObject& object = objects_.at(task.id); object.table)
                claimColumns(object, task.id, task.place, own);
            else
                claimCells(object, task.place, own);
        }
        silent_ = false;
    }

    struct Columns {
        std::vector<ObjectId> ids; ///< by the table's order; kNoObject where there is none
        RowIndex rows = 0;         ///< what most of them have
        std::size_t votes = 0;     ///< how many
    };

    Columns chooseColumns(const SalvagedObject& table) {
        Columns result;
        if (!table.table)
            return result;
        const TableSpec& spec = objects_.spec(*table.type);
        result.ids.assign(spec.columns.size(), kNoObject);
        std::map<RowIndex, std::size_t> votes;
        for (std::size_t i = 0; i < spec.columns.size(); ++i) {
            const std::uint32_t typeId = spec.columns[i]->id();
            const auto named = std::ranges::find(table.table->columns, typeId, &Reference::typeId);
            const SalvagedObject* object = nullptr;
            if (named != table.table->columns.end() && (object = objects_.free(named->id, typeId)))
                result.ids[i] = named->id;
            // A singleton's columns are singletons too: one that it has lost is known by its class.
            else if (const ObjectId lone = table.type->singleton ? objects_.loneFree(typeId) : kNoObject;
                     lone != kNoObject)
                object = &objects_.at(result.ids[i] = lone);
            if (object && object->stored)
                ++votes[object->rows];
        }
        for (const auto& [rows, count] : votes)
            if (count > result.votes || (count == result.votes && rows == table.table->rows)) {
                result.votes = count;
                result.rows = rows;
            }
        return result;
    }

    template <class Own>
    void claimColumns(SalvagedObject& table, ObjectId id, const Place& place, const Own& own) {
        const TableSpec& spec = objects_.spec(*table.type);
        const Columns chosen = chooseColumns(table);
        const TableContent old = *table.table;
        TableContent content{static_cast<std::uint32_t>(chosen.rows), {}};
        if (old.rows > content.rows && chosen.votes == 0)
            lose(id, place.log, text(TextId::NoRowReadable, place.within, old.rows));
        else if (old.rows != content.rows && !table.changed)
            note(id, place.log, text(TextId::ColumnsContradictRowCount, place.within, old.rows, content.rows));
        for (std::size_t i = 0; i < spec.columns.size(); ++i) {
            const PersistentType& type = *spec.columns[i];
            const auto named = std::ranges::find(old.columns, type.id(), &Reference::typeId);
            const bool hasName = named != old.columns.end();
            if (!hasName && !table.changed && chosen.ids[i] == kNoObject)
                continue; // older than this column
            const ObjectId made =
                keepColumn(type, chosen.ids[i], hasName ? named->id : kNoObject, chosen.rows, place, own);
            if (made != kNoObject)
                content.columns.push_back({made, type.id()});
        }
        for (const Reference& column : old.columns)
            if (std::ranges::find(spec.columns, column.typeId, &PersistentType::id) == spec.columns.end()) {
                if (SalvagedObject* foreign = objects_.free(column.id, column.typeId); foreign && !foreign->type) {
                    content.columns.push_back(column);
                    foreign->state = table.state;
                } else {
                    lose(column.id, place.log,
                         text(TextId::UnknownColumnNotKept, place.within, objects_.whyNot(column.id)));
                }
            }
        table.changed =
            table.changed || content.rows != old.rows || !std::ranges::equal(content.columns, old.columns, same);
        table.table = std::move(content);
    }

    static bool same(const Reference& a, const Reference& b) { return a.id == b.id && a.typeId == b.typeId; }

    /// The id of the column that is to stand in the table: CHOSEN, an empty one of ROWS rows, or none.
    template <class Own>
    ObjectId keepColumn(const PersistentType& type, ObjectId chosen, ObjectId named, RowIndex rows, const Place& place,
                        const Own& own) {
        const Column& prototype = objects_.columnPrototype(type);
        const ShownText what = text(TextId::WithinTheColumn, place.within, plainHeading(prototype.spec()), type.name);
        ShownText why = text(TextId::ItWasNotFound);
        if (chosen != kNoObject) {
            SalvagedObject& object = objects_.at(chosen);
            if (!object.stored || object.rows == rows) {
                if (chosen != named && named != kNoObject)
                    note(chosen, place.log, text(TextId::WasFoundAgain, what));
                own(chosen, object, place);
                return chosen;
            }
            why = text(TextId::LengthContradictsTable, object.rows, rows);
        } else if (named != kNoObject) {
            why = objects_.whyNot(named);
        }
        const ObjectId id = chosen != kNoObject ? chosen : named;
        if (!prototype.stored() || rows == 0) { // nothing was in it; the table makes it anew when it changes
            if (id != kNoObject)
                note(id, place.log, text(TextId::LeftOutHeldNothing, what, why));
            return kNoObject;
        }
        lose(id, place.log, text(TextId::EmptiedAsUnreadable, what, why));
        if (silent_ || rows > emptyRows_) // a column that is not there reads as empty, too
            return kNoObject;
        emptyRows_ -= rows;
        SalvagedObject fresh;
        fresh.type = &type;
        fresh.typeId = type.id();
        fresh.stored = true;
        fresh.rows = rows;
        fresh.state = State::Kept;
        fresh.changed = true;
        return objects_.add(std::move(fresh));
    }

    template <class Own>
    void claimCells(SalvagedObject& column, const Place& place, const Own& own) {
        const Column& prototype = objects_.columnPrototype(*column.type);
        const ShownText heading = plainHeading(prototype.spec());
        const auto within = [&](RowIndex first, RowIndex last) {
            return first == last ? text(TextId::WithinRecord, place.within, first + 1, heading)
                                 : text(TextId::WithinRecords, place.within, first + 1, last + 1, heading);
        };
        // Records in a row that lose the same for the same reason are told as one.
        struct Run {
            RowIndex first;
            ObjectId id;
            ShownText why;
        };
        std::optional<Run> run;
        const auto tell = [&](RowIndex end) {
            if (run)
                lose(run->id, place.log, text(TextId::WithinCannotBeRead, within(run->first, end - 1), run->why));
            run.reset();
        };
        for (RowIndex row = 0; row < column.cells.size(); ++row) {
            ObjectId& cell = column.cells[row];
            SalvagedObject* const object = cell == kNoObject ? nullptr : objects_.free(cell, column.cellTypeId);
            if (cell == kNoObject || object) {
                tell(row);
                if (object)
                    own(cell, *object, {place.log, within(row, row)});
                continue;
            }
            ShownText why = objects_.whyNot(cell);
            if (run && run->why != why)
                tell(row);
            if (!run)
                run = Run{row, cell, std::move(why)};
            cell = kNoObject;
            column.changed = true;
        }
        tell(column.cells.size());
    }

    // What is left

    /// Owners before what they own, so that only the uppermost are noted.
    void takeOrphans() {
        const auto take = [&](auto&& which) {
            for (auto& [id, object] : objects_.all())
                if (object.state == State::Free && object.type && which(object)) {
                    const ShownText log = text(logOfClass(object.type->name));
                    note(id, log, text(TextId::ObjectOfNobodyKept, object.type->name));
                    claim(id, {log, {}}, State::Kept);
                }
        };
        take([](const SalvagedObject& object) { return !object.cells.empty(); });
        take([](const SalvagedObject& object) { return object.table.has_value(); });
        take([](const SalvagedObject&) { return true; });
    }

    void tellTheRest() {
        for (auto& [id, object] : objects_.all())
            if (!object.type && object.state == State::Free) {
                object.state = objects_.told(id) ? State::Dropped : State::Kept;
                if (object.state == State::Kept)
                    note(id, {}, text(TextId::ItsClassOfLaterVersionKept));
            }
        for (const auto& [id, unreadable] : objects_.unreadable())
            if (!objects_.told(id)) {
                const PersistentType* type = modelTypes().find(unreadable.typeId);
                lose(id, type ? text(logOfClass(type->name)) : ShownText(),
                     text(TextId::CannotBeReadWhy, unreadable.why));
            }
    }

    // The new document

    Result<void> write() {
        constexpr std::size_t kSpillInterval = 3000; // objects, so that memory holds a part of a large document only
        copyOthers();
        writeDocumentStream(into_);
        for (const auto& [id, object] : objects_.all())
            if (object.state == State::Kept) {
                const std::string name = streamName(id);
                Result<Bytes> stream = object.changed ? Result<Bytes>(object.encode()) : from_.read(name);
                if (!stream)
                    return stream.error();
                into_.write(name, *std::move(stream));
                if (++result_.objects % kSpillInterval == 0)
                    QUOBRIX_TRY(into_.spill());
            }
        // The store makes the index of a file that has none from the names of its streams.
        ObjectStore store(modelTypes());
        store.load(into_);
        store.freeUnusedIds(); // nothing refers to them any more
        QUOBRIX_TRY(store.save(into_));
        countRecords();
        return {};
    }

    /// The streams of other programs. Those whose names are damaged are lost, unless what they hold was found
    /// otherwise.
    void copyOthers() {
        std::multimap<Bytes, std::string> unnamed; // by content
        for (const std::string& name : from_.names()) {
            if (idOfStream(name) != kNoObject || std::ranges::find(kIndexStreams, name) != std::end(kIndexStreams))
                continue;
            Result<Bytes> content = from_.read(name);
            if (!content)
                lose(kNoObject, {}, text(TextId::TheNamedStreamCannotBeRead, name));
            else if (CompoundFile::nameAllowed(name))
                into_.write(name, *std::move(content));
            else
                unnamed.emplace(*std::move(content), name);
        }
        const auto takeOut = [&](const Bytes& content) {
            const auto found = unnamed.find(content);
            return found == unnamed.end() ? std::string() : unnamed.extract(found).mapped();
        };
        for (auto object = objects_.all().begin(); object != objects_.all().end() && !unnamed.empty(); ++object) {
            const Result<Bytes> content = from_.read(std::to_string(object->first));
            if (const std::string name = content ? takeOut(*content) : std::string(); !name.empty())
                note(object->first, object->second.type ? text(logOfClass(object->second.type->name)) : ShownText(),
                     text(TextId::FoundUnderADamagedName, name));
        }
        if (const std::string name = takeOut(documentStream()); !name.empty())
            note(kNoObject, {}, text(TextId::TheNameOfTheStreamIsDamaged, kDocumentStream, name));
        else if (!empty_ && !from_.contains(kDocumentStream))
            note(kNoObject, {}, text(TextId::TheStreamWasMadeAnew, kDocumentStream));
        for (const auto& [content, name] : unnamed)
            lose(kNoObject, {}, text(TextId::TheStreamCannotBeWritten, name));
    }

    void countRecords() {
        for (const auto& [id, object] : objects_.all())
            if (object.state == State::Kept && object.table && object.type->singleton)
                if (const SourceText log = logOfClass(object.type->name); log != kOtherLog)
                    result_.records.emplace_back(text(log), object.table->rows);
        std::ranges::sort(result_.records);
    }

    void lose(ObjectId id, ShownText log, ShownText what) {
        if (!silent_)
            result_.lost.push_back({id, std::move(log), std::move(what)});
    }
    void note(ObjectId id, ShownText log, ShownText what) {
        if (!silent_)
            result_.notes.push_back({id, std::move(log), std::move(what)});
    }

    const StreamReader& from_;
    CompoundFile& into_;
    DocumentRepair result_;
    SalvagedObjects objects_;
    bool empty_; ///< there are no objects to be lost
    /// How many rows empty columns may yet be made of, so that a few columns that claim millions do not fill the disk.
    RowIndex emptyRows_ = 1'000'000;
    bool silent_ = false; ///< what is dropped was told about as a whole
};

} // namespace

Result<DocumentRepair> salvage(const StreamReader& from, CompoundFile& into) { return Salvage(from, into).run(); }

Result<DocumentRepair> repairDocument(const StreamReader& from, const std::filesystem::path& into, IfThere ifThere,
                                      const std::filesystem::path& like) {
    // Another running copy must not lose the file that it has open, nor open one that is about to go.
    const Result<std::unique_ptr<File>> there = openFile(into, FileMode::ReadWrite);
    if (!there && there.error().kind == ErrorKind::InUse)
        return there.error();
    if (there && !(*there)->locked())
        if (const auto owner = LockFile::ownerOf(FileSystem::system(), into); owner && *owner)
            return Error{ErrorKind::InUse, (*owner)->text()};
    Result<ReplacementFile> replacement = ReplacementFile::create(into, like);
    if (!replacement)
        return replacement.error();
    const Result<std::unique_ptr<CompoundFile>> made = CompoundFile::create(replacement->takeFile());
    if (!made)
        return made.error();
    Result<DocumentRepair> result = salvage(from, **made);
    if (!result)
        return result;
    QUOBRIX_TRY((*made)->commit());
    if (const Result<void> placed = replacement->commit(ifThere); !placed) {
        if (!replacement->inPlace())
            return placed.error();
        result->notDurable = placed.error();
    }
    return result;
}

} // namespace quobrix
