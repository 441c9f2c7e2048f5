#pragma once

#include "tables/columns.h"
#include "tables/table.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quobrix {

class StreamReader;

/// An object of a damaged document that can be read, and what of it matters for others.
struct SalvagedObject {
    const PersistentType* type = nullptr; ///< nothing: of a later version
    std::uint32_t typeId = 0;
    std::optional<TableContent> table;
    bool stored = false;         ///< a column with an array of its own
    RowIndex rows = 0;           ///< of that array
    std::vector<ObjectId> cells; ///< of a column of objects
    std::uint32_t cellTypeId = 0;

    enum class State {
        Free, ///< nothing has claimed it yet
        Kept,
        Dropped,
    };
    State state = State::Free;
    bool changed = false; ///< the stream that it was read from does not hold for it any more

    /// The stream of a changed object; that of a column other than of objects has no values.
    Bytes encode() const;
};

/// Every object of a document file by the names of its streams, whatever the index says: what can be read, and why the
/// rest cannot.
class SalvagedObjects {
public:
    struct Unreadable {
        std::uint32_t typeId; ///< 0: not known
        ShownText why;
    };

    explicit SalvagedObjects(const StreamReader& from);

    std::map<ObjectId, SalvagedObject>& all() { return objects_; }
    SalvagedObject& at(ObjectId id) { return objects_.at(id); }
    const std::map<ObjectId, Unreadable>& unreadable() const { return unreadable_; }
    /// What is wrong with the index streams.
    const std::vector<ShownText>& indexDamage() const { return indexDamage_; }
    /// The singleton of TYPE by the index; kNoObject if it names none.
    ObjectId named(const PersistentType& type) const;
    /// The readable objects of a class, claimed ones perhaps left out, in no order.
    const std::vector<ObjectId>& ofClass(std::uint32_t typeId) { return byClass_[typeId]; }

    /// The object ID if it is of the class and nothing has claimed it yet.
    SalvagedObject* free(ObjectId id, std::uint32_t typeId);
    /// The one free object of a class; kNoObject if there are none or several.
    ObjectId loneFree(std::uint32_t typeId);
    /// Why free() yields nothing, for the user. What cannot be read at all counts as told from then on.
    ShownText whyNot(ObjectId id);
    void setTold(ObjectId id) { told_.insert(id); }
    bool told(ObjectId id) const { return told_.contains(id); }

    /// Gives an object an id that names none, not even a lost one.
    ObjectId add(SalvagedObject object);

    /// An empty object of a class, to ask about all of them.
    const PersistentObject& prototype(const PersistentType& type);
    const Column& columnPrototype(const PersistentType& type) { return static_cast<const Column&>(prototype(type)); }
    const TableSpec& spec(const PersistentType& type) { return static_cast<const Table&>(prototype(type)).spec(); }

private:
    void readIndex(const StreamReader& from);
    void examine(ObjectId id, const Result<Bytes>& stream);

    std::map<ObjectId, SalvagedObject> objects_;
    std::map<ObjectId, Unreadable> unreadable_;
    std::map<std::uint32_t, std::vector<ObjectId>> byClass_;
    std::map<std::uint32_t, ObjectId> named_;
    std::vector<ShownText> indexDamage_;
    std::set<ObjectId> told_;
    std::map<const PersistentType*, std::unique_ptr<PersistentObject>> prototypes_;
    ObjectId nextId_ = 0;
};

} // namespace quobrix
