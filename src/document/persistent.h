#pragma once

#include "base/bytes.h"
#include "base/name_hash.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quobrix {

class ObjectStore;
class PersistentObject;

using ObjectId = std::uint32_t;
/// No object. Never issued: an id counter that reached it would have named four billion objects.
inline constexpr ObjectId kNoObject = 0xFFFFFFFFu;

/// What the program knows of a persistent class. The id is the hash of the class name, so a new class needs no
/// registry of numbers, and a renamed one is another class.
struct PersistentType {
    std::string_view name;
    bool singleton = false;
    /// Number of the layout that the class writes now; it reads this one and all before it.
    std::uint8_t schema = 1;
    std::unique_ptr<PersistentObject> (*create)() = nullptr;
    std::uint32_t hash = nameHash(name);

    constexpr std::uint32_t id() const { return hash; }
};

/// The persistent classes by type id. Filled once at program start; the types must outlive it.
class TypeRegistry {
public:
    /// Two classes with one id, or one class twice, are a mistake of the programmer (asserted).
    void add(const PersistentType& type);
    /// Nothing for an unknown id.
    const PersistentType* find(std::uint32_t typeId) const;
    std::size_t size() const { return types_.size(); }
    /// All of them, by ascending id.
    std::vector<const PersistentType*> all() const;

private:
    std::unordered_map<std::uint32_t, const PersistentType*> types_;
};

/// That an object owns another, and of which class that is to be.
struct Reference {
    ObjectId id;
    std::uint32_t typeId;
};

/// A table, a column or a list of records that has a stream of its own in the document. Owned by its ObjectStore.
class PersistentObject {
public:
    PersistentObject() = default;
    PersistentObject(const PersistentObject&) = delete;
    PersistentObject& operator=(const PersistentObject&) = delete;
    virtual ~PersistentObject() = default;

    virtual const PersistentType& type() const = 0;
    ObjectId id() const { return id_; }
    /// Changed since it was loaded or saved; such objects are written by the next save.
    bool modified() const { return modified_; }
    void setModified();
    /// Rises with every change, so that what is computed from the object can be kept until it does.
    std::uint32_t revision() const { return revision_; }
    /// The store it belongs to; nothing for an object that stands alone (in tests and dialogs).
    ObjectStore* store() const { return store_; }

    /// Writes the content (the stream behind the type id and the schema number).
    virtual void write(ByteWriter& out) const = 0;
    /// Reads what write() wrote under SCHEMA. False, or a reader that is not finished(), means damage; the object is
    /// then thrown away.
    virtual bool read(ByteReader& in, std::uint8_t schema) = 0;
    /// The objects that this one owns, as its content names them; they need not exist.
    virtual std::vector<Reference> references() const { return {}; }

protected:
    /// Called once for an object that the store has just created (not loaded): the place to create what it owns.
    virtual void created() {}
    /// Called before the store deletes the object: the place to delete what it owns.
    virtual void deleting() {}
    /// Called when an object that belongs to no store has been changed: one that stands in for what a document lacks
    /// becomes an object of it now.
    virtual void changedAlone() {}

private:
    friend class ObjectStore;
    ObjectStore* store_ = nullptr;
    ObjectId id_ = kNoObject;
    std::uint32_t revision_ = 0;
    bool modified_ = false;
};

} // namespace quobrix
