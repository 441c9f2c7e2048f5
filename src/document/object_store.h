#pragma once

#include "base/result.h"
#include "document/persistent.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quobrix {

class CompoundFile;
class StreamReader;

/// What could not be read, for the one message to the user and for the checker.
struct Damage {
    ObjectId id = kNoObject;  ///< kNoObject: an index stream
    std::uint32_t typeId = 0; ///< 0: not known
    ShownText what;
};

// The streams beside those of the objects.
inline constexpr std::string_view kVersionStream = "Version";
inline constexpr std::string_view kNextIdStream = "Next Available Id";
inline constexpr std::string_view kFreeIdsStream = "Available Ids";
inline constexpr std::string_view kObjectIdsStream = "Object Ids";
inline constexpr std::string_view kSingletonIdsStream = "Singleton Ids";
inline constexpr std::string_view kIndexStreams[] = {kVersionStream, kNextIdStream, kFreeIdsStream, kObjectIdsStream,
                                                     kSingletonIdsStream};

/// The name of the stream of the object ID.
std::string streamName(ObjectId id);
/// The id that a stream is named by; nothing for other names ("Version", "007", and numbers that no object gets).
ObjectId idOfStream(std::string_view name);

/// Is told of objects that come and go, before it happens, so that it can be taken back. What it throws leaves the
/// store as it was.
class ObjectJournal {
public:
    /// An id is about to be given out: the last moment to let go of what keeps ids, by forget().
    virtual void idWanted() = 0;
    /// A new object, by create().
    virtual void objectMade(ObjectId id) = 0;
    /// One that had stood alone, by adopt().
    virtual void objectAdopted(ObjectId id, const PersistentObject& object) = 0;
    /// By destroy(). The object is set aside, and is the journal's to put back or forget.
    virtual void objectSetAside(ObjectId id) = 0;

protected:
    ~ObjectJournal() = default;
};

/// The objects of a document, loaded on first request and written when changed. User-interface thread only.
///
/// Streams: "Version", "Next Available Id", "Available Ids", "Object Ids", "Singleton Ids", and one per object, named
/// by its id in decimal: u32 type id, u8 schema number, content. All little-endian.
///
/// What is missing, damaged or of an unknown type reads as nothing and is noted in damage(); its stream is never
/// overwritten or removed, and its id is not given to another object. What a failing disk kept back is tried again
/// whenever it is asked for, and no damage any more once it has been read. Once the file says that another program has
/// changed it (ErrorKind::Changed), everything that is not loaded reads as nothing, and none of that is damage.
class ObjectStore {
public:
    static constexpr std::uint32_t kVersion = 3;

    /// TYPES must outlive the store.
    explicit ObjectStore(const TypeRegistry& types);
    ~ObjectStore();

    /// Reads the index streams of FILE into an empty store and loads objects from it from now on; FILE must outlive
    /// the store or be replaced by attach(). A file without "Version" stream is an empty document. Damaged index
    /// streams are rebuilt from the streams' names as far as possible and noted.
    void load(const StreamReader& file);
    /// Loads from FILE from now on: the same streams in another file.
    void attach(const StreamReader& file);
    /// Calls TELL when the file turns out to have been changed by another program.
    void whenFileChanged(std::function<void()> tell) { whenFileChanged_ = std::move(tell); }
    /// Calls TELL whenever something is found damaged.
    void whenDamaged(std::function<void()> tell) { whenDamaged_ = std::move(tell); }

    /// The object ID, loaded if need be; nothing if it cannot be read or the index does not know it.
    PersistentObject* find(ObjectId id);
    /// Likewise, and nothing (noted as damage) if it is of another class.
    template <class T>
    T* find(ObjectId id) {
        return static_cast<T*>(findTyped(id, T::kType));
    }
    bool loaded(ObjectId id) const;
    /// Lets go of the object ID and of what it refers to, which are loaded again when they are asked for. No effect if
    /// any of that is no part of the file as it is. Nobody may hold a pointer to them.
    void unload(ObjectId id);
    /// The one instance of a singleton class: loaded, or created when the document has none. If the document has one
    /// that cannot be read, or may have one that its damaged index does not name, an empty stand-in that no save
    /// writes.
    template <class T>
    T& singleton() {
        return static_cast<T&>(singletonOf(T::kType));
    }
    /// The one instance if the document has it and it can be read.
    template <class T>
    T* existingSingleton() {
        return static_cast<T*>(existingSingletonOf(T::kType));
    }
    PersistentObject* existingSingletonOf(const PersistentType& type);
    /// A new object with the first free id, else the next available one; modified.
    template <class T>
    T& create() {
        return static_cast<T&>(create(T::kType));
    }
    PersistentObject& create(const PersistentType& type);
    /// Takes in OBJECT, which belongs to no store, as create() does with a new one, but for what it owns. It stays with
    /// the caller if this throws.
    PersistentObject& adopt(std::unique_ptr<PersistentObject>&& object);
    /// Takes back the adopt() of the object ID. The id is set aside without it.
    std::unique_ptr<PersistentObject> disown(ObjectId id);
    /// Adopts OBJECT again under the id ID that disown() has set aside.
    void adoptAgain(ObjectId id, std::unique_ptr<PersistentObject>&& object);
    /// Puts STAND_IN, which is empty and of the same class, with the content of the loaded object ID in its place.
    void substitute(ObjectId id, std::unique_ptr<PersistentObject> standIn);
    /// Deletes an object, with what it owns, and frees its id; sets it aside if there is a journal. An object that
    /// could not be read stays.
    void destroy(ObjectId id);
    /// Deletes an object of a class that only a later version knows, if it is what REFERENCE says.
    void destroyForeign(const Reference& reference);

    // What is set aside is kept in memory as it is, with its id, whatever is saved meanwhile; files know nothing of it.

    /// JOURNAL, if any, is told of what comes and goes from now on.
    void setJournal(ObjectJournal* journal) { journal_ = journal; }
    /// How an object came to be set aside. Files then look as if one that was deleted had been deleted, and one whose
    /// making was taken back had never been there, if all later ones have been taken back.
    enum class Aside { Deleted, Unmade };
    /// Sets the loaded object ID aside, but nothing that it owns; no effect if there is none.
    void setAside(ObjectId id, Aside how);
    /// Takes back setAside(); no effect if ID is not set aside.
    void putBack(ObjectId id);
    /// Deletes what is set aside under ID; the id can be given out again. No effect if ID is not set aside.
    void forget(ObjectId id);
    /// Bytes of memory that the object set aside under ID takes, about; 0 if there is none.
    std::size_t asideSize(ObjectId id) const;

    /// Writes everything changed into FILE, which stays uncommitted: the caller commits and calls saved(). Every
    /// 3,000 objects what is pending moves from memory to the file's free sectors, first before the second one.
    /// Streams that FILE has of unreadable objects are left alone. Unsupported if the store is ofLaterVersion().
    Result<void> save(CompoundFile& file);
    /// What save() wrote is durable: nothing is modified any more.
    void saved();
    /// If everything modified is, byte for byte, what the file holds that is loaded from (all edits were undone),
    /// nothing is modified any more.
    void forgetUnchanged();

    /// Number of objects in the index, loaded or not.
    std::size_t objectCount() const { return slots_.size() - vacantSlots_; }
    std::vector<ObjectId> objectIds() const;
    std::vector<PersistentObject*> loadedObjects() const;
    /// The first id that no object has had yet, as the next file has it.
    std::uint32_t nextAvailableId() const;
    /// The ids that are free in the next file, in the order in which they are given out.
    std::vector<ObjectId> freeIds() const;
    const std::map<std::uint32_t, ObjectId>& singletonIds() const { return singletons_; }
    std::uint32_t version() const { return version_; }
    /// Written by a later version of the program, and nothing but that one knows what its index must say, or what else
    /// must change with an object whose layout it has changed. Such an object may be met late: what had been changed
    /// until then can still be saved once.
    std::optional<Error> ofLaterVersion() const;
    /// An object of a later layout has been met, so that nothing more is to be changed.
    bool laterLayoutMet() const { return laterLayoutMet_; }
    const TypeRegistry& types() const { return types_; }

    /// Something would be written by save().
    bool modified() const { return modified_; }
    void setModified() { modified_ = true; }
    /// Everything found unreadable so far, each once.
    const std::vector<Damage>& damage() const { return damage_; }
    /// Who leads to what, by id: the classes of the objects in memory, found damaged or not, that refer to another, and
    /// those of the singletons.
    std::unordered_map<ObjectId, const PersistentType*> owners() const;
    /// What could not be read when it was asked for, but later: somebody may have shown it as nothing.
    const std::vector<Damage>& recovered() const { return recovered_; }
    /// An index stream was damaged: what the document holds is a reconstruction, which the next save to another file
    /// writes there.
    bool indexDamaged() const { return indexDamaged_; }
    bool unreadable(ObjectId id) const;
    /// It could not be read the last time, for a reason that may pass.
    bool failing(ObjectId id) const;
    /// Looks through the streams of all objects, once, for singletons that the index does not name: these count from
    /// then on, and the index as damaged. Whether it is.
    bool findLostSingletons();
    /// Notes that ID (known to the index) holds content that contradicts the rest of the document. It reads as nothing
    /// from now on; the object itself stays in memory, for those that hold it already.
    void noteDamage(ObjectId id, std::uint32_t typeId, ShownText what);
    /// Notes that everything that is not loaded is lost, for this reason.
    void noteLost(const ShownText& what);
    /// Notes that something refers to ID as to an object of the class TYPE_ID, which it is not. The object stays
    /// readable for those that refer to it rightly.
    void noteBadReference(ObjectId id, std::uint32_t typeId, ShownText what);
    /// Streams named like objects that the index does not know of. No save touches them.
    std::vector<std::string> strayStreams() const;
    /// Streams whose names no program can have given them.
    std::vector<std::string> garbledStreams() const;
    /// Why the file may hold more than the index leads to; nothing when that is known to be everything: the index is
    /// sound, every object of it has its stream, every object's stream is in it, and each id below the next available
    /// one is used or free. Reads no stream.
    std::optional<ShownText> doubt() const;
    /// Makes every id that names no object a free one, as it has to be in a document of which nothing is lost. None of
    /// them may be referred to.
    void freeUnusedIds();

private:
    struct Slot {
        ObjectId id;
        std::unique_ptr<PersistentObject> object;
        bool unreadable = false;
        bool failing = false; // the last read
        bool reused = false;  // the id was a free one
        bool vacant = false;  // of no object, until one gets the id
    };
    struct Kept {
        std::unique_ptr<PersistentObject> object; // none: the id alone
        Aside how = Aside::Deleted;
        bool reused = false;
        std::size_t size = 0;
    };
    /// Name and content, in the order of kIndexStreams.
    using IndexStreams = std::vector<std::pair<std::string_view, Bytes>>;

    PersistentObject* findTyped(ObjectId id, const PersistentType& type);
    PersistentObject& singletonOf(const PersistentType& type);
    static Bytes streamOf(const PersistentObject& object);
    Slot* slot(ObjectId id);
    const Slot* slot(ObjectId id) const;
    PersistentObject* loadInto(Slot& slot);
    Result<void> read(ObjectId id, Bytes& content);
    std::optional<std::uint32_t> typeIdOf(ObjectId id);
    void withdraw(Slot& slot, std::uint32_t typeId, ShownText what);
    void addDamage(Damage damage);
    std::optional<Damage> takeFailure(Slot& slot);
    std::unique_ptr<PersistentObject> vacate(Slot& slot);
    PersistentObject& add(std::unique_ptr<PersistentObject>& object, bool made);
    void place(Slot slot);
    void keep(Slot& entry, Aside how, std::size_t size);
    void makeRoom(const PersistentType& type);
    bool inFile(ObjectId id) const;
    IndexStreams indexStreams() const;
    void loadIndex();
    void addVacantSlots();
    void rebuildIndex(const ShownText& why, const std::vector<ObjectId>* listed, const std::vector<ObjectId>& unused);

    const TypeRegistry& types_;
    const StreamReader* file_ = nullptr;
    // Ascending by id, so that the index is written in one order. What is free or set aside keeps a vacant slot, so
    // that objects come back, or get ids that were free, without moving all the slots behind theirs.
    std::vector<Slot> slots_;
    std::size_t vacantSlots_ = 0;
    std::deque<ObjectId> freeIds_; // to be given out
    std::unordered_map<ObjectId, Kept> aside_;
    std::deque<ObjectId> deleted_, unmade_; // of these, in the order in which they were set aside
    ObjectJournal* journal_ = nullptr;
    std::map<std::uint32_t, ObjectId> singletons_;
    std::map<std::uint32_t, std::unique_ptr<PersistentObject>> standIns_;
    std::set<ObjectId> deletedStreams_;
    std::vector<Damage> damage_, recovered_;
    std::set<std::pair<ObjectId, std::uint32_t>> badReferences_;
    std::vector<std::unique_ptr<PersistentObject>> withdrawn_; // found damaged while something held them
    Bytes readBuffer_;                                         // empty while in use
    std::uint32_t nextId_ = 0;
    std::uint32_t version_ = kVersion;
    bool modified_ = false;
    bool indexModified_ = true;
    bool indexDamaged_ = false;
    bool lostSingletonsSought_ = false;
    bool fileChanged_ = false; // by another program
    bool laterLayoutMet_ = false;
    bool savingBefore_ = false; // what was changed before that
    std::function<void()> whenFileChanged_;
    std::function<void()> whenDamaged_;
};

} // namespace quobrix
