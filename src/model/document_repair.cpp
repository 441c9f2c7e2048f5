#include "model/document_repair.h"

#include "document/compound_file.h"
#include "platform/file_system.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>

namespace quobrix {
namespace {

/// An object that can be read, and what of it matters for whether others can be.
struct Object {
    const PersistentType* type = nullptr; ///< nothing: of a later version
    std::uint32_t typeId = 0;
    std::optional<TableContent> table;
    bool stored = false;         ///< a column with an array of its own
    RowIndex rows = 0;           ///< of that array
    std::vector<ObjectId> cells; ///< of a column of objects
    std::uint32_t cellTypeId = 0;
    enum { Free, Kept, Dropped } fate = Free; ///< free: nothing has claimed it yet
    bool changed = false;                     ///< its stream has to be made anew
};

struct Unreadable {
    std::uint32_t typeId; ///< 0: not known
    std::string why;
};

class Salvage {
public:
    Salvage(const CompoundFile& from, CompoundFile& into) : from_(from), into_(into) {}

    Result<DocumentRepair> run() {
        readIndex();
        for (const std::string& name : from_.names())
            examine(name);
        empty_ = objects_.empty() && unreadable_.empty();
        for (const PersistentType* type : modelTypes().all())
            if (type->singleton)
                takeSingleton(*type);
        takeOrphans();
        tellTheRest();
        QUOBRIX_TRY(write());
        return std::move(result_);
    }

private:
    // What there is

    void readIndex() {
        ObjectStore store(modelTypes());
        store.load(from_);
        store.findLostSingletons();
        for (const Damage& damage : store.damage())
            if (damage.id == kNoObject)
                result_.notes.push_back({kNoObject, {}, damage.what + "; the index was made anew"});
        named_ = store.singletonIds();
        for (const ObjectId id : store.objectIds())
            if (!from_.contains(std::to_string(id)))
                unreadable_.emplace(id, Unreadable{0, "its stream is missing"});
    }

    void examine(const std::string& name) {
        const ObjectId id = idOfStream(name);
        if (id == kNoObject)
            return;
        const Result<Bytes> stream = from_.read(name);
        if (!stream) {
            unreadable_.emplace(id, Unreadable{0, stream.error().detail});
            return;
        }
        ByteReader in(*stream);
        Object object;
        object.typeId = in.u32();
        const std::uint8_t schema = in.u8();
        object.type = modelTypes().find(object.typeId);
        if (!in.complete()) {
            unreadable_.emplace(id, Unreadable{0, "its stream is too short"});
        } else if (object.typeId == 0 || schema == 0) { // bytes that a disk lost, most likely
            unreadable_.emplace(id, Unreadable{0, "it does not say its class"});
        } else if (!object.type) {
            objects_.emplace(id, std::move(object));
        } else if (schema > object.type->schema) {
            unreadable_.emplace(
                id, Unreadable{object.typeId, fmt::format("layout {} of {} is not known", schema, object.type->name)});
        } else if (!examine(object, in, schema)) {
            unreadable_.emplace(
                id, Unreadable{object.typeId, fmt::format("the content of {} is damaged", object.type->name)});
        } else {
            freeOfClass_[object.typeId].push_back(id);
            objects_.emplace(id, std::move(object));
        }
    }

    static bool examine(Object& object, ByteReader& in, std::uint8_t schema) {
        ByteReader again = in;
        const std::unique_ptr<PersistentObject> read = object.type->create();
        if (!read->read(in, schema) || !in.finished())
            return false;
        if (dynamic_cast<const Table*>(read.get())) {
            object.table.emplace().read(again);
        } else if (const auto* column = dynamic_cast<const Column*>(read.get())) {
            object.stored = column->stored();
            object.rows = column->storedRows();
            if (const auto* cells = dynamic_cast<const ObjectColumn*>(column)) {
                object.cells = cells->values();
                object.cellTypeId = cells->objectType().id();
            }
        }
        return true;
    }

    /// The object ID if it can be read, is of the class and nothing has it yet.
    Object* freeObject(ObjectId id, std::uint32_t typeId) {
        const auto found = objects_.find(id);
        const bool fits =
            found != objects_.end() && found->second.typeId == typeId && found->second.fate == Object::Free;
        return fits ? &found->second : nullptr;
    }

    /// Why freeObject() has nothing. Unreadable objects need not be told again.
    std::string whyNot(ObjectId id) {
        if (const auto known = unreadable_.find(id); known != unreadable_.end()) {
            told_.insert(id);
            return known->second.why;
        }
        const auto found = objects_.find(id);
        if (found == objects_.end())
            return "it does not exist";
        if (!found->second.type) {
            told_.insert(id);
            return "its class is not known";
        }
        return found->second.fate == Object::Free ? fmt::format("it is a {}", found->second.type->name)
                                                  : "it belongs elsewhere";
    }

    // The logs, name tables and other singletons

    void takeSingleton(const PersistentType& type) {
        const std::vector<ObjectId> candidates = freeOfClass_[type.id()];
        if (candidates.empty())
            return makeRoot(type);
        const auto named = named_.find(type.id());
        const auto worth = [&](ObjectId id) {
            return std::pair(chooseColumns(objects_.at(id)).rows, named != named_.end() && named->second == id);
        };
        const ObjectId best = *std::ranges::max_element(candidates, {}, worth);
        claim(best, {std::string(logOfClass(type.name)), {}}, Object::Kept);
        for (const ObjectId id : candidates) {
            if (id == best)
                continue;
            lose(id, std::string(logOfClass(type.name)),
                 fmt::format("there are two {}; this one of {} rows is left out", type.name,
                             chooseColumns(objects_.at(id)).rows));
            claim(id, {}, Object::Dropped);
        }
    }

    /// In place of a table that cannot be read. Its columns know their classes, and there is one of each only.
    void makeRoot(const PersistentType& type) {
        if (!dynamic_cast<const Table*>(&prototypeOf(type)))
            return;
        const bool expected = std::ranges::find(kRootTables, &type) != std::end(kRootTables);
        Object root;
        root.type = &type;
        root.typeId = type.id();
        root.table.emplace();
        root.changed = true;
        const Columns columns = chooseColumns(root);
        const auto found = std::ranges::count_if(columns.ids, [](ObjectId id) { return id != kNoObject; });
        if (found == 0 && !expected)
            return;
        for (const auto& [id, unreadable] : unreadable_)
            if (const auto named = named_.find(type.id());
                unreadable.typeId == type.id() || (named != named_.end() && named->second == id))
                told_.insert(id);
        const std::string log(logOfClass(type.name));
        if (found > 0)
            note(kNoObject, log,
                 fmt::format("its table is lost; it was put together again from {} of {} columns; records: {}", found,
                             columns.ids.size(), columns.rows));
        else if (!empty_)
            lose(kNoObject, log, "its table and all its columns are lost");
        const ObjectId id = add(std::move(root));
        claim(id, {log, {}}, Object::Kept);
    }

    // Tables and what they own

    /// Where something belongs, for the user.
    struct Place {
        std::string log;
        std::string within; ///< "record 3: Samples: ", or empty
    };

    /// Gives FATE to an object and to everything that it owns, directly or not, and mends references to what is lost.
    void claim(ObjectId id, Place place, decltype(Object::fate) fate) {
        struct Task {
            ObjectId id;
            Place place;
        };
        std::deque<Task> tasks{{id, std::move(place)}};
        objects_.at(id).fate = fate;
        const auto own = [&](ObjectId owned, Object& object, Place at) {
            object.fate = fate;
            if (object.table || !object.cells.empty())
                tasks.push_back({owned, std::move(at)});
        };
        for (; !tasks.empty(); tasks.pop_front()) {
            const Task task = tasks.front();
            silent_ = fate == Object::Dropped;
            if (Object& object = objects_.at(task.id); object.table)
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

    Columns chooseColumns(const Object& table) {
        Columns result;
        if (!table.table)
            return result;
        const TableSpec& spec = specOf(*table.type);
        result.ids.assign(spec.columns.size(), kNoObject);
        std::map<RowIndex, std::size_t> votes;
        for (std::size_t i = 0; i < spec.columns.size(); ++i) {
            const std::uint32_t typeId = spec.columns[i]->id();
            const auto named = std::ranges::find(table.table->columns, typeId, &Reference::typeId);
            const Object* object = nullptr;
            if (named != table.table->columns.end() && (object = freeObject(named->id, typeId)))
                result.ids[i] = named->id;
            // A singleton's columns are singletons too: one that it has lost is known by its class.
            else if (const ObjectId lone = table.type->singleton ? loneObject(typeId) : kNoObject; lone != kNoObject)
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

    /// The one object of a class that nothing has yet; kNoObject if there are several.
    ObjectId loneObject(std::uint32_t typeId) {
        ObjectId lone = kNoObject;
        for (const ObjectId id : freeOfClass_[typeId])
            if (freeObject(id, typeId)) {
                if (lone != kNoObject)
                    return kNoObject;
                lone = id;
            }
        return lone;
    }

    template <class Own>
    void claimColumns(Object& table, ObjectId id, const Place& place, const Own& own) {
        const TableSpec& spec = specOf(*table.type);
        const Columns chosen = chooseColumns(table);
        const TableContent old = *table.table;
        TableContent content{static_cast<std::uint32_t>(chosen.rows), {}};
        if (old.rows > content.rows && chosen.votes == 0)
            lose(id, place.log, fmt::format("{}none of its {} rows can be read", place.within, old.rows));
        else if (old.rows != content.rows && !table.changed)
            note(id, place.log,
                 fmt::format("{}it says {} rows; its columns have {}", place.within, old.rows, content.rows));
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
                if (Object* foreign = freeObject(column.id, column.typeId); foreign && !foreign->type) {
                    content.columns.push_back(column);
                    foreign->fate = table.fate;
                } else {
                    lose(column.id, place.log,
                         fmt::format("{}a column of a class that is not known cannot be kept ({})", place.within,
                                     whyNot(column.id)));
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
        const auto& prototype = static_cast<const Column&>(prototypeOf(type));
        const std::string what =
            fmt::format("{}the column \"{}\" ({})", place.within, plainHeading(prototype.spec()), type.name);
        std::string why = "it was not found";
        if (chosen != kNoObject) {
            Object& object = objects_.at(chosen);
            if (!object.stored || object.rows == rows) {
                if (chosen != named && named != kNoObject)
                    note(chosen, place.log, what + " was found again by its class");
                own(chosen, object, place);
                return chosen;
            }
            why = fmt::format("it has {} rows, its table {}", object.rows, rows);
        } else if (named != kNoObject) {
            why = whyNot(named);
        }
        const ObjectId id = chosen != kNoObject ? chosen : named;
        if (!prototype.stored() || rows == 0) { // nothing was in it; the table makes it anew when it changes
            if (id != kNoObject)
                note(id, place.log, fmt::format("{} is left out ({}); it held nothing", what, why));
            return kNoObject;
        }
        lose(id, place.log, fmt::format("{} is empty now, because it cannot be read ({})", what, why));
        if (silent_)
            return kNoObject;
        Object fresh;
        fresh.type = &type;
        fresh.typeId = type.id();
        fresh.stored = true;
        fresh.rows = rows;
        fresh.fate = Object::Kept;
        fresh.changed = true;
        return add(std::move(fresh));
    }

    /// Gives an object an id that names none, not even a lost one.
    ObjectId add(Object object) {
        while (objects_.contains(nextId_) || unreadable_.contains(nextId_))
            ++nextId_;
        objects_.emplace(nextId_, std::move(object));
        return nextId_;
    }

    template <class Own>
    void claimCells(Object& column, const Place& place, const Own& own) {
        const auto& prototype = static_cast<const Column&>(prototypeOf(*column.type));
        const std::string heading = plainHeading(prototype.spec());
        for (RowIndex row = 0; row < column.cells.size(); ++row) {
            ObjectId& cell = column.cells[row];
            if (cell == kNoObject)
                continue;
            const std::string within = fmt::format("{}record {}: {}: ", place.within, row + 1, heading);
            if (Object* object = freeObject(cell, column.cellTypeId)) {
                own(cell, *object, {place.log, within});
                continue;
            }
            lose(cell, place.log, fmt::format("{}cannot be read ({})", within, whyNot(cell)));
            cell = kNoObject;
            column.changed = true;
        }
    }

    // What is left

    /// Owners before what they own, so that only the uppermost are noted.
    void takeOrphans() {
        const auto take = [&](auto&& which) {
            for (auto& [id, object] : objects_)
                if (object.fate == Object::Free && object.type && which(object)) {
                    const std::string log(logOfClass(object.type->name));
                    note(id, log, fmt::format("nothing refers to this {}; it is kept", object.type->name));
                    claim(id, {log, {}}, Object::Kept);
                }
        };
        take([](const Object& object) { return !object.cells.empty(); });
        take([](const Object& object) { return object.table.has_value(); });
        take([](const Object&) { return true; });
    }

    void tellTheRest() {
        for (auto& [id, object] : objects_)
            if (!object.type && object.fate == Object::Free) {
                object.fate = told_.contains(id) ? Object::Dropped : Object::Kept;
                if (object.fate == Object::Kept)
                    note(id, {}, "its class is not known to this version; it is kept as it is");
            }
        for (const auto& [id, unreadable] : unreadable_)
            if (!told_.contains(id)) {
                const PersistentType* type = modelTypes().find(unreadable.typeId);
                lose(id, type ? std::string(logOfClass(type->name)) : std::string(),
                     fmt::format("cannot be read ({})", unreadable.why));
            }
    }

    // The new document

    Result<void> write() {
        constexpr std::size_t kSpillInterval = 3000; // objects, so that memory holds a part of a large document only
        for (const std::string& name : from_.names())
            if (idOfStream(name) == kNoObject && std::ranges::find(kIndexStreams, name) == std::end(kIndexStreams))
                copyOther(name);
        writeDocumentStream(into_);
        for (const auto& [id, object] : objects_)
            if (object.fate == Object::Kept) {
                const std::string name = std::to_string(id);
                Result<Bytes> stream = object.changed ? Result<Bytes>(encode(object)) : from_.read(name);
                if (!stream)
                    return stream.error();
                into_.write(name, *std::move(stream));
                if (++result_.objects % kSpillInterval == 0)
                    QUOBRIX_TRY(into_.spill());
            }
        // The store makes the index of a file that has none from the names of its streams.
        ObjectStore store(modelTypes());
        store.load(into_);
        QUOBRIX_TRY(store.save(into_));
        countRecords();
        return {};
    }

    /// A stream of another program.
    void copyOther(const std::string& name) {
        Result<Bytes> content = from_.read(name);
        if (content && name.find_first_of("/\\:!") == std::string::npos)
            into_.write(name, *std::move(content));
        else
            lose(kNoObject, {}, fmt::format("the stream \"{}\" cannot be {}", name, content ? "written" : "read"));
    }

    static Bytes encode(const Object& object) {
        ByteWriter out;
        out.u32(object.typeId);
        out.u8(object.type->schema);
        if (object.table) {
            object.table->write(out);
            return out.take();
        }
        const std::unique_ptr<PersistentObject> made = object.type->create();
        auto& column = static_cast<Column&>(*made);
        if (!object.cells.empty())
            static_cast<ObjectColumn&>(column).setAll(object.cells);
        else
            column.insertRows(0, object.rows);
        column.write(out);
        return out.take();
    }

    void countRecords() {
        for (const auto& [id, object] : objects_)
            if (object.fate == Object::Kept && object.table && object.type->singleton)
                if (const std::string_view log = logOfClass(object.type->name); log != kOtherLog)
                    result_.records.emplace_back(log, object.table->rows);
        std::ranges::sort(result_.records);
    }

    void lose(ObjectId id, std::string log, std::string what) {
        if (!silent_)
            result_.lost.push_back({id, std::move(log), std::move(what)});
    }
    void note(ObjectId id, std::string log, std::string what) {
        if (!silent_)
            result_.notes.push_back({id, std::move(log), std::move(what)});
    }

    const PersistentObject& prototypeOf(const PersistentType& type) {
        std::unique_ptr<PersistentObject>& prototype = prototypes_[&type];
        if (!prototype)
            prototype = type.create();
        return *prototype;
    }
    const TableSpec& specOf(const PersistentType& type) { return static_cast<const Table&>(prototypeOf(type)).spec(); }

    const CompoundFile& from_;
    CompoundFile& into_;
    DocumentRepair result_;
    std::map<ObjectId, Object> objects_;
    std::map<ObjectId, Unreadable> unreadable_;
    std::map<std::uint32_t, std::vector<ObjectId>> freeOfClass_;
    std::map<std::uint32_t, ObjectId> named_; ///< singletons, by the index
    std::set<ObjectId> told_;                 ///< unreadable ones that some owner has told about
    std::map<const PersistentType*, std::unique_ptr<PersistentObject>> prototypes_;
    ObjectId nextId_ = 0;
    bool empty_ = false;  ///< there are no objects to be lost
    bool silent_ = false; ///< what is dropped was told about as a whole
};

} // namespace

Result<DocumentRepair> salvage(const CompoundFile& from, CompoundFile& into) { return Salvage(from, into).run(); }

Result<DocumentRepair> repairDocument(const CompoundFile& from, const std::filesystem::path& into) {
    Result<ReplacementFile> replacement = ReplacementFile::create(into);
    if (!replacement)
        return replacement.error();
    const Result<std::unique_ptr<CompoundFile>> made = CompoundFile::create(replacement->takeFile());
    if (!made)
        return made.error();
    Result<DocumentRepair> result = salvage(from, **made);
    if (!result)
        return result;
    QUOBRIX_TRY((*made)->commit());
    QUOBRIX_TRY(replacement->commit());
    return result;
}

} // namespace quobrix
