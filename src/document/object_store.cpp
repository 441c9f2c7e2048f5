#include "document/object_store.h"

#include "compound/compound_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <charconv>
#include <utility>

namespace quobrix {
namespace {

constexpr std::string_view kVersionStream = kIndexStreams[0];
constexpr std::string_view kNextIdStream = kIndexStreams[1];
constexpr std::string_view kFreeIdsStream = kIndexStreams[2];
constexpr std::string_view kObjectIdsStream = kIndexStreams[3];
constexpr std::string_view kSingletonIdsStream = kIndexStreams[4];
constexpr std::size_t kIndexStreamsBeforeObjects = 4;

// What is pending moves to the file before the 2nd, the 3,002nd, … object written. The odd phase lets the first spill
// come early, so that a disk that takes nothing is noticed at once.
constexpr std::size_t kSpillInterval = 3000;
constexpr std::size_t kSpillPhase = 1;

// No document gets near it, and counting on from here never reaches kNoObject.
constexpr ObjectId kLargestNextId = 1u << 31;

// Ids that are neither used nor free, of which more than these can only come of a garbled number.
constexpr std::size_t kMostUnused = 1u << 20;

// Bytes of memory kept from one object that is read to the next.
constexpr std::size_t kReadBuffer = 64 * 1024;
// Bytes that most objects are written in.
constexpr std::size_t kMostObjects = 256;
// Bytes of memory that an object takes besides its content, about.
constexpr std::size_t kObjectMemory = 256;

std::string streamName(ObjectId id) { return fmt::format_int(id).str(); }

Bytes u32Stream(std::uint32_t value) {
    ByteWriter out;
    out.u32(value);
    return out.take();
}

/// Takes ID, which is most often the first or the last, out of IDS.
void takeOut(std::deque<ObjectId>& ids, ObjectId id) {
    if (ids.back() == id)
        ids.pop_back();
    else
        ids.erase(std::ranges::find(ids, id));
}

/// What the file holds is neither missing nor damaged: a later read may succeed.
bool mayPass(const Error& error) { return error.kind != ErrorKind::NotFound && error.kind != ErrorKind::Corrupt; }

} // namespace

ObjectId idOfStream(std::string_view name) {
    ObjectId id = kNoObject;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
    const bool proper = error == std::errc{} && end == name.data() + name.size() && id < kLargestNextId;
    return proper && streamName(id) == name ? id : kNoObject;
}

void TypeRegistry::add(const PersistentType& type) {
    [[maybe_unused]] const bool added = types_.emplace(type.id(), &type).second;
    assert(added);
}

const PersistentType* TypeRegistry::find(std::uint32_t typeId) const {
    const auto found = types_.find(typeId);
    return found == types_.end() ? nullptr : found->second;
}

std::vector<const PersistentType*> TypeRegistry::all() const {
    std::vector<const PersistentType*> types;
    types.reserve(types_.size());
    for (const auto& [id, type] : types_)
        types.push_back(type);
    std::sort(types.begin(), types.end(), [](auto* a, auto* b) { return a->id() < b->id(); });
    return types;
}

void PersistentObject::setModified() {
    modified_ = true;
    ++revision_;
    if (store_)
        store_->setModified();
    else
        changedAlone();
}

ObjectStore::ObjectStore(const TypeRegistry& types) : types_(types) {}

ObjectStore::~ObjectStore() = default;

void ObjectStore::load(const CompoundFile& file) {
    assert(slots_.empty());
    file_ = &file;
    version_ = 1;
    indexModified_ = false;
    const std::vector<std::string> names = file.contains(kVersionStream) ? std::vector<std::string>() : file.names();
    if (!file.contains(kVersionStream) &&
        std::none_of(names.begin(), names.end(), [](auto& name) { return idOfStream(name) != kNoObject; }))
        indexModified_ = true; // an empty document; its first save writes the index
    else
        loadIndex();
}

void ObjectStore::attach(const CompoundFile& file) {
    file_ = &file;
    fileChanged_ = false;
}

Result<void> ObjectStore::read(ObjectId id, Bytes& content) {
    Result<void> done = file_->read(streamName(id), content);
    if (!done && done.error().kind == ErrorKind::Changed && !std::exchange(fileChanged_, true) && whenFileChanged_)
        whenFileChanged_();
    return done;
}

/// The class that the stream of an object begins with; nothing if it cannot be read.
std::optional<std::uint32_t> ObjectStore::typeIdOf(ObjectId id) {
    Bytes content;
    if (!read(id, content) || content.size() < 4)
        return {};
    return ByteReader(content).u32();
}

void ObjectStore::loadIndex() {
    std::string why;
    const auto stream = [&](std::string_view name) {
        Result<Bytes> bytes = file_->read(name);
        if (bytes)
            return std::move(*bytes);
        why = bytes.error().kind == ErrorKind::NotFound
                  ? fmt::format("the stream \"{}\" is missing", name)
                  : fmt::format("the stream \"{}\" cannot be read ({})", name, bytes.error().detail);
        return Bytes();
    };
    const auto finish = [&](const ByteReader& in, std::string_view name) {
        if (why.empty() && !in.finished())
            why = fmt::format("the stream \"{}\" is damaged", name);
    };

    const Bytes versionBytes = stream(kVersionStream);
    ByteReader version(versionBytes);
    version_ = version.u32();
    finish(version, kVersionStream);

    const Bytes nextBytes = stream(kNextIdStream);
    ByteReader next(nextBytes);
    nextId_ = next.u32();
    finish(next, kNextIdStream);

    const Bytes objectBytes = stream(kObjectIdsStream);
    ByteReader objects(objectBytes);
    const std::uint32_t objectCount = objects.count(4);
    slots_.reserve(objectCount);
    for (std::uint32_t i = 0; i < objectCount; ++i)
        slots_.push_back({objects.u32(), nullptr});
    finish(objects, kObjectIdsStream);
    bool listed = objects.finished();
    if (!std::is_sorted(slots_.begin(), slots_.end(), [](auto& a, auto& b) { return a.id < b.id; }))
        std::sort(slots_.begin(), slots_.end(), [](auto& a, auto& b) { return a.id < b.id; });
    if (std::adjacent_find(slots_.begin(), slots_.end(), [](auto& a, auto& b) { return a.id == b.id; }) != slots_.end())
        why = "an object id is listed twice", listed = false;
    if ((!slots_.empty() && slots_.back().id >= nextId_) || nextId_ > kLargestNextId)
        why = "the next available id cannot be right";

    const Bytes singletonBytes = stream(kSingletonIdsStream);
    ByteReader singletons(singletonBytes);
    const std::uint32_t singletonCount = singletons.count(8);
    for (std::uint32_t i = 0; i < singletonCount; ++i) {
        const std::uint32_t typeId = singletons.u32();
        const ObjectId id = singletons.u32();
        if (!slot(id) || !singletons_.emplace(typeId, id).second)
            why = "a singleton is not among the objects";
        else if (!types_.find(typeId) && typeIdOf(id) != typeId) // a later version may have added some
            why = "a singleton is not of its class";
    }
    finish(singletons, kSingletonIdsStream);

    const Bytes freeBytes = stream(kFreeIdsStream);
    ByteReader free(freeBytes);
    const std::uint32_t freeCount = free.count(4);
    std::set<ObjectId> seen;
    std::vector<ObjectId> unused;
    for (std::uint32_t i = 0; i < freeCount; ++i) {
        const ObjectId id = unused.emplace_back(free.u32());
        // An id that names an object, or is named twice, must not be given out: it would name two objects.
        if (slot(id) || id >= nextId_ || !seen.insert(id).second)
            why = "a free id is in use";
        else if (!inFile(id)) // what the index merely lacks is not to be overwritten
            freeIds_.push_back(id);
    }
    finish(free, kFreeIdsStream);

    if (why.empty())
        return;
    const std::vector<ObjectId> ids = objectIds();
    listed = listed && (ids.empty() || ids.back() < kLargestNextId);
    rebuildIndex(why, listed ? &ids : nullptr, free.finished() ? unused : std::vector<ObjectId>());
}

/// LISTED: the list of all objects, if that can be read. UNUSED: what the list of free ids says.
void ObjectStore::rebuildIndex(const std::string& why, const std::vector<ObjectId>* listed,
                               const std::vector<ObjectId>& unused) {
    // The streams' names are the second witness of which objects there are; their first bytes say of which class.
    slots_.clear();
    freeIds_.clear();
    const std::map<std::uint32_t, ObjectId> named = std::exchange(singletons_, {});
    nextId_ = 0;
    for (const std::string& name : file_->names())
        if (const ObjectId id = idOfStream(name); id != kNoObject)
            slots_.push_back({id, nullptr});
    for (const ObjectId id : listed ? *listed : std::vector<ObjectId>())
        if (!file_->contains(streamName(id)))
            slots_.push_back({id, nullptr}); // lost, which shows when it is asked for
    std::sort(slots_.begin(), slots_.end(), [](auto& a, auto& b) { return a.id < b.id; });
    for (const Slot& entry : slots_) {
        nextId_ = std::max(nextId_, entry.id + 1);
        if (const std::optional<std::uint32_t> typeId = typeIdOf(entry.id)) {
            const PersistentType* type = types_.find(*typeId);
            if (type && type->singleton)
                singletons_.emplace(*typeId, entry.id);
        }
    }
    for (const auto& [typeId, id] : named) // it is lost, but known for what it was
        if (const PersistentType* type = types_.find(typeId);
            type && type->singleton && slot(id) && !file_->contains(streamName(id)))
            singletons_.emplace(typeId, id);
    // Without the list, an id without a stream may be that of a lost object that others refer to.
    if (listed)
        freeUnusedIds();
    else
        for (const ObjectId id : std::set<ObjectId>(unused.begin(), unused.end()))
            if (id < nextId_ && !slot(id))
                freeIds_.push_back(id);
    indexDamaged_ = true;
    addDamage({kNoObject, 0, why});
}

void ObjectStore::freeUnusedIds() {
    std::vector<ObjectId> taken = objectIds();
    taken.insert(taken.end(), freeIds_.begin(), freeIds_.end());
    std::sort(taken.begin(), taken.end());
    if (nextId_ - taken.size() > kMostUnused)
        return;
    auto next = taken.begin();
    for (ObjectId id = 0; id < nextId_; ++id)
        if (next != taken.end() && *next == id)
            ++next;
        else
            freeIds_.push_back(id);
}

bool ObjectStore::findLostSingletons() {
    if (!file_ || indexDamaged_ || lostSingletonsSought_)
        return indexDamaged_;
    lostSingletonsSought_ = true;
    std::string why;
    for (const Slot& entry : slots_) {
        if (entry.object || entry.unreadable || entry.vacant)
            continue; // a singleton that is loaded is known
        const std::optional<std::uint32_t> typeId = typeIdOf(entry.id);
        const PersistentType* type = typeId ? types_.find(*typeId) : nullptr;
        if (type && type->singleton && singletons_.emplace(*typeId, entry.id).second)
            why = fmt::format("the stream \"{}\" does not name the {}", kSingletonIdsStream, type->name);
        else if (!typeId && why.empty())
            why = fmt::format("a singleton is missing, and may be object {}, which cannot be read", entry.id);
    }
    if (!why.empty() && !fileChanged_) {
        indexDamaged_ = true;
        addDamage({kNoObject, 0, std::move(why)});
    }
    return indexDamaged_;
}

ObjectStore::Slot* ObjectStore::slot(ObjectId id) {
    return const_cast<Slot*>(static_cast<const ObjectStore*>(this)->slot(id));
}

const ObjectStore::Slot* ObjectStore::slot(ObjectId id) const {
    // Every id stands at most as far back as its number; with few gaps it stands right there.
    if (id < slots_.size() && slots_[id].id == id)
        return slots_[id].vacant ? nullptr : &slots_[id];
    const auto end = slots_.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(id, slots_.size()));
    const auto found =
        std::lower_bound(slots_.begin(), end, id, [](const Slot& s, ObjectId wanted) { return s.id < wanted; });
    return found != end && found->id == id && !found->vacant ? &*found : nullptr;
}

std::vector<ObjectId> ObjectStore::objectIds() const {
    std::vector<ObjectId> ids;
    ids.reserve(objectCount());
    for (const Slot& entry : slots_)
        if (!entry.vacant)
            ids.push_back(entry.id);
    return ids;
}

std::vector<PersistentObject*> ObjectStore::loadedObjects() const {
    std::vector<PersistentObject*> objects;
    for (const Slot& entry : slots_)
        if (entry.object)
            objects.push_back(entry.object.get());
    return objects;
}

bool ObjectStore::unreadable(ObjectId id) const {
    const Slot* entry = slot(id);
    return entry && (entry->unreadable || entry->failing || (fileChanged_ && !entry->object));
}

bool ObjectStore::failing(ObjectId id) const {
    const Slot* entry = slot(id);
    return entry && entry->failing;
}

/// The file has a stream of that name that this store has not deleted.
bool ObjectStore::inFile(ObjectId id) const {
    return file_ && file_->contains(streamName(id)) && !deletedStreams_.contains(id);
}

void ObjectStore::addDamage(Damage damage) {
    damage_.push_back(std::move(damage));
    if (whenDamaged_)
        whenDamaged_();
}

/// That the last read of ENTRY failed is no damage, or not that one. What was noted of it.
std::optional<Damage> ObjectStore::takeFailure(Slot& entry) {
    if (!std::exchange(entry.failing, false))
        return {};
    const auto noted = std::ranges::find(damage_, entry.id, &Damage::id);
    std::optional<Damage> failure = std::move(*noted);
    damage_.erase(noted);
    return failure;
}

void ObjectStore::noteDamage(ObjectId id, std::uint32_t typeId, std::string what) {
    Slot* entry = slot(id);
    if (entry && !entry->unreadable && !fileChanged_)
        withdraw(*entry, typeId, std::move(what));
}

void ObjectStore::withdraw(Slot& entry, std::uint32_t typeId, std::string what) {
    takeFailure(entry);
    entry.unreadable = true;
    if (entry.object)
        withdrawn_.push_back(std::move(entry.object));
    addDamage({entry.id, typeId, std::move(what)});
}

void ObjectStore::noteLost(const std::string& what) {
    for (Slot& entry : slots_)
        if (!entry.object && !entry.unreadable && !entry.vacant)
            withdraw(entry, 0, what);
}

void ObjectStore::noteBadReference(ObjectId id, std::uint32_t typeId, std::string what) {
    if (!fileChanged_ && badReferences_.emplace(id, typeId).second)
        addDamage({id, typeId, std::move(what)});
}

std::vector<std::string> ObjectStore::strayStreams() const {
    std::vector<std::string> stray;
    for (std::string& name : file_ ? file_->names() : std::vector<std::string>())
        if (const ObjectId id = idOfStream(name); id != kNoObject && !slot(id))
            stray.push_back(std::move(name));
    return stray;
}

std::vector<std::string> ObjectStore::garbledStreams() const {
    std::vector<std::string> garbled = file_ ? file_->names() : std::vector<std::string>();
    std::erase_if(garbled, [](const std::string& name) { return CompoundFile::nameAllowed(name); });
    return garbled;
}

std::optional<std::string> ObjectStore::doubt() const {
    if (!file_)
        return {};
    if (indexDamaged_) {
        const auto ofIndex = std::ranges::find(damage_, kNoObject, &Damage::id);
        return ofIndex == damage_.end() ? "the index is damaged" : ofIndex->what;
    }
    const auto lacking = std::ranges::count_if(slots_, [&](const Slot& entry) {
        return !entry.vacant && !entry.object && !file_->contains(streamName(entry.id));
    });
    if (lacking > 0)
        return fmt::format("the streams of {} objects are missing", lacking);
    std::vector<std::string> stray = strayStreams();
    std::erase_if(stray, [&](const std::string& name) { return deletedStreams_.contains(idOfStream(name)); });
    if (!stray.empty())
        return fmt::format("the index does not know the stream \"{}\"", stray.front());
    const std::size_t known = objectCount() + freeIds_.size() + aside_.size();
    if (known < nextId_ && nextId_ - known <= kMostUnused)
        return fmt::format("the index does not say what has become of {} objects", nextId_ - known);
    return {};
}

PersistentObject* ObjectStore::find(ObjectId id) {
    Slot* entry = slot(id);
    if (!entry || entry->unreadable)
        return nullptr;
    return entry->object ? entry->object.get() : loadInto(*entry);
}

PersistentObject* ObjectStore::loadInto(Slot& entry) {
    const auto refuse = [&](std::uint32_t typeId, std::string what) {
        noteDamage(entry.id, typeId, std::move(what));
        return nullptr;
    };
    if (!file_)
        return refuse(0, "there is no file to read it from");
    if (fileChanged_)
        return nullptr;
    Bytes content = std::move(readBuffer_); // an object that is read may load others
    const Result<void> done = read(entry.id, content);
    if (!done && !fileChanged_ && mayPass(done.error())) {
        if (!std::exchange(entry.failing, true))
            addDamage({entry.id, 0, "the stream cannot be read now: " + done.error().detail});
        return nullptr;
    }
    if (!done)
        return refuse(0, "the stream cannot be read: " + done.error().detail);
    ByteReader in(content);
    const std::uint32_t typeId = in.u32();
    const std::uint8_t schema = in.u8();
    const PersistentType* type = in.complete() ? types_.find(typeId) : nullptr;
    if (!type)
        return refuse(typeId, in.complete() ? "the class is not known" : "the stream is too short");
    if (schema > type->schema && !std::exchange(laterLayoutMet_, true))
        savingBefore_ = modified_;
    if (schema == 0 || schema > type->schema)
        return refuse(typeId, fmt::format("layout {} of {} is not known", schema, type->name));
    std::unique_ptr<PersistentObject> object = type->create();
    object->store_ = this;
    object->id_ = entry.id;
    if (!object->read(in, schema) || !in.finished())
        return refuse(typeId, fmt::format("the content of {} is damaged", type->name));
    if (version_ < kVersion)
        object->modified_ = true;
    if (std::optional<Damage> failure = takeFailure(entry))
        recovered_.push_back(*std::move(failure));
    entry.object = std::move(object);
    if (content.capacity() <= kReadBuffer)
        readBuffer_ = std::move(content);
    return entry.object.get();
}

PersistentObject* ObjectStore::findTyped(ObjectId id, const PersistentType& type) {
    PersistentObject* object = find(id);
    if (!slot(id))
        noteBadReference(id, type.id(),
                         fmt::format("there is no such object, although a {} is referred to", type.name));
    if (object && object->type().id() != type.id()) {
        noteBadReference(id, type.id(), fmt::format("a {} is referred to as {}", object->type().name, type.name));
        return nullptr;
    }
    return object;
}

PersistentObject* ObjectStore::existingSingletonOf(const PersistentType& type) {
    const auto known = singletons_.find(type.id());
    return known == singletons_.end() ? nullptr : findTyped(known->second, type);
}

PersistentObject& ObjectStore::singletonOf(const PersistentType& type) {
    if (PersistentObject* existing = existingSingletonOf(type))
        return *existing;
    if (!singletons_.contains(type.id()) && findLostSingletons())
        if (PersistentObject* found = existingSingletonOf(type))
            return *found;
    if (singletons_.contains(type.id()) || indexDamaged_ || fileChanged_) {
        std::unique_ptr<PersistentObject>& standIn = standIns_[type.id()];
        if (!standIn)
            standIn = type.create();
        return *standIn;
    }
    return create(type);
}

PersistentObject& ObjectStore::create(const PersistentType& type) {
    std::unique_ptr<PersistentObject> made = type.create();
    PersistentObject& object = add(made, true);
    object.created();
    return object;
}

PersistentObject& ObjectStore::adopt(std::unique_ptr<PersistentObject>&& object) { return add(object, false); }

PersistentObject& ObjectStore::add(std::unique_ptr<PersistentObject>& object, bool made) {
    if (journal_)
        journal_->idWanted();
    const bool reused = !freeIds_.empty();
    while (!reused && inFile(nextId_))
        ++nextId_;
    const ObjectId id = reused ? freeIds_.front() : nextId_;
    if (journal_ && made)
        journal_->objectMade(id);
    else if (journal_)
        journal_->objectAdopted(id, *object);
    makeRoom(object->type());
    PersistentObject& result = *object;
    place({.id = id, .object = std::move(object), .reused = reused});
    if (reused)
        freeIds_.pop_front();
    else
        ++nextId_;
    result.modified_ = true;
    return result;
}

/// Takes the memory for one more object of TYPE, so that place() does not have to.
void ObjectStore::makeRoom(const PersistentType& type) {
    if (slots_.size() == slots_.capacity())
        slots_.reserve(std::max<std::size_t>(64, slots_.size() * 2));
    if (type.singleton)
        singletons_.try_emplace(type.id(), kNoObject);
}

void ObjectStore::place(Slot entry) {
    const ObjectId id = entry.id;
    if (entry.object->type().singleton)
        singletons_[entry.object->type().id()] = id;
    entry.object->store_ = this;
    entry.object->id_ = id;
    const auto at = std::lower_bound(slots_.begin(), slots_.end(), id,
                                     [](const Slot& s, ObjectId wanted) { return s.id < wanted; });
    if (at != slots_.end() && at->id == id) { // vacant
        *at = std::move(entry);
        --vacantSlots_;
    } else {
        slots_.insert(at, std::move(entry));
    }
    indexModified_ = modified_ = true;
}

std::unique_ptr<PersistentObject> ObjectStore::disown(ObjectId id) {
    Slot* entry = slot(id);
    assert(entry && entry->object);
    keep(*entry, Aside::Unmade, 0);
    std::unique_ptr<PersistentObject> object = std::move(aside_[id].object);
    object->store_ = nullptr;
    object->id_ = kNoObject;
    return object;
}

void ObjectStore::adoptAgain(ObjectId id, std::unique_ptr<PersistentObject>&& object) {
    assert(aside_.contains(id));
    makeRoom(object->type());
    aside_[id].object = std::move(object);
    putBack(id);
}

void ObjectStore::setAside(ObjectId id, Aside how) {
    if (Slot* entry = slot(id); entry && entry->object)
        keep(*entry, how, kObjectMemory + streamOf(*entry->object).size());
}

void ObjectStore::keep(Slot& entry, Aside how, std::size_t size) {
    const ObjectId id = entry.id;
    Kept& kept = aside_[id];
    try {
        deletedStreams_.insert(id);
        (how == Aside::Deleted ? deleted_ : unmade_).push_back(id);
    } catch (...) {
        aside_.erase(id);
        throw;
    }
    kept.how = how;
    kept.reused = entry.reused;
    kept.size = size;
    kept.object = vacate(entry);
}

void ObjectStore::putBack(ObjectId id) {
    const auto found = aside_.find(id);
    if (found == aside_.end())
        return;
    Kept& kept = found->second;
    PersistentObject& object = *kept.object;
    makeRoom(object.type());
    // What was saved meanwhile has no stream of it.
    const bool gone = !deletedStreams_.contains(id) || !file_ || !file_->contains(streamName(id));
    place({.id = id, .object = std::move(kept.object), .reused = kept.reused});
    object.modified_ = object.modified_ || gone;
    deletedStreams_.erase(id);
    takeOut(kept.how == Aside::Deleted ? deleted_ : unmade_, id);
    aside_.erase(found);
}

void ObjectStore::forget(ObjectId id) {
    const auto found = aside_.find(id);
    if (found == aside_.end())
        return;
    const bool unmade = found->second.how == Aside::Unmade;
    if (unmade && !found->second.reused && id + 1 == nextId_)
        --nextId_;
    else if (unmade)
        freeIds_.push_front(id);
    else
        freeIds_.push_back(id);
    takeOut(unmade ? unmade_ : deleted_, id);
    aside_.erase(found);
}

std::size_t ObjectStore::asideSize(ObjectId id) const {
    const auto found = aside_.find(id);
    return found == aside_.end() ? 0 : found->second.size;
}

std::uint32_t ObjectStore::nextAvailableId() const {
    std::uint32_t next = nextId_;
    for (auto kept = aside_.find(next - 1);
         kept != aside_.end() && kept->second.how == Aside::Unmade && !kept->second.reused;
         kept = aside_.find(next - 1))
        --next;
    return next;
}

std::vector<ObjectId> ObjectStore::freeIds() const {
    std::vector<ObjectId> ids, lower; // lower: unmade, while later ones are still there
    ids.reserve(unmade_.size() + freeIds_.size() + deleted_.size());
    const ObjectId next = nextAvailableId();
    for (auto id = unmade_.rbegin(); id != unmade_.rend(); ++id) // so that the last is given out first, as it was
        if (aside_.at(*id).reused)
            ids.push_back(*id);
        else if (*id < next)
            lower.push_back(*id);
    ids.insert(ids.end(), freeIds_.begin(), freeIds_.end());
    ids.insert(ids.end(), deleted_.begin(), deleted_.end());
    ids.insert(ids.end(), lower.begin(), lower.end());
    return ids;
}

void ObjectStore::substitute(ObjectId id, std::unique_ptr<PersistentObject> standIn) {
    Slot* entry = slot(id);
    assert(entry && entry->object);
    ByteWriter content;
    entry->object->write(content);
    ByteReader in(content.view());
    [[maybe_unused]] const bool read = standIn->read(in, standIn->type().schema) && in.finished();
    assert(read);
    standIn->store_ = this;
    standIn->id_ = id;
    standIn->modified_ = entry->object->modified_;
    ++standIn->revision_;
    std::swap(entry->object, standIn);
    withdrawn_.push_back(std::move(standIn)); // something may hold it
}

/// Takes the object, if it is loaded, out of the index and its stream out of the next save.
std::unique_ptr<PersistentObject> ObjectStore::vacate(Slot& entry) {
    const ObjectId id = entry.id;
    std::unique_ptr<PersistentObject> object = std::move(entry.object);
    // Slots are cleared away many at once, so that what is deleted in a row does not move all that is behind it again
    // and again.
    entry = {.id = id, .object = nullptr, .vacant = true};
    if (++vacantSlots_ > slots_.size() / 2) {
        std::erase_if(slots_, [](const Slot& s) { return s.vacant; });
        vacantSlots_ = 0;
    }
    std::erase_if(singletons_, [&](const auto& pair) { return pair.second == id; });
    deletedStreams_.insert(id);
    indexModified_ = modified_ = true;
    return object;
}

void ObjectStore::destroy(ObjectId id) {
    PersistentObject* const there = find(id);
    if (!there)
        return;
    // Out of the index first: what the object owns may, in a damaged file, lead back to it.
    if (journal_) {
        journal_->objectSetAside(id);
        setAside(id, Aside::Deleted);
        return there->deleting();
    }
    const std::unique_ptr<PersistentObject> object = vacate(*slot(id));
    freeIds_.push_back(id);
    object->deleting();
}

void ObjectStore::destroyForeign(const Reference& reference) {
    Slot* entry = slot(reference.id);
    if (journal_ || !entry || entry->object || types_.find(reference.typeId) ||
        typeIdOf(reference.id) != reference.typeId)
        return;
    vacate(*entry);
    freeIds_.push_back(reference.id);
    std::erase_if(damage_, [&](const Damage& damage) { return damage.id == reference.id; });
}

Bytes ObjectStore::streamOf(const PersistentObject& object) {
    ByteWriter out;
    out.reserve(kMostObjects);
    out.u32(object.type().id());
    out.u8(object.type().schema);
    object.write(out);
    return out.take();
}

ObjectStore::IndexStreams ObjectStore::indexStreams() const {
    const auto list = [](const auto& values, std::size_t count, const auto& write) {
        ByteWriter out;
        out.u32(static_cast<std::uint32_t>(count));
        for (const auto& value : values)
            write(out, value);
        return out.take();
    };
    const auto id = [](ByteWriter& out, ObjectId value) { out.u32(value); };
    // What stands in for a lost singleton is named without an object, so that nobody takes this index for whole.
    std::map<std::uint32_t, ObjectId> named = singletons_;
    for (const auto& [typeId, standIn] : standIns_)
        named.emplace(typeId, kNoObject);
    const auto singleton = [](ByteWriter& out, const auto& pair) {
        out.u32(pair.first);
        out.u32(pair.second);
    };
    const std::vector<ObjectId> free = freeIds();
    return {{kVersionStream, u32Stream(kVersion)},
            {kNextIdStream, u32Stream(nextAvailableId())},
            {kFreeIdsStream, list(free, free.size(), id)},
            {kObjectIdsStream, list(objectIds(), objectCount(), id)},
            {kSingletonIdsStream, list(named, named.size(), singleton)}};
}

Result<void> ObjectStore::save(CompoundFile& file) {
    if (const auto later = ofLaterVersion())
        return *later;
    for (const ObjectId id : deletedStreams_)
        file.remove(streamName(id));
    IndexStreams index;
    if (indexModified_ || indexDamaged_ || version_ != kVersion || !file.contains(kObjectIdsStream))
        index = indexStreams();
    for (std::size_t i = 0; i < index.size() && i < kIndexStreamsBeforeObjects; ++i)
        file.write(index[i].first, std::move(index[i].second));
    std::size_t written = 0;
    for (const Slot& entry : slots_) {
        if (!entry.object)
            continue;
        // What is loaded and unchanged stands in the file that it was loaded from.
        if (!entry.object->modified_ && (&file == file_ || file.contains(streamName(entry.id))))
            continue;
        if (written++ % kSpillInterval == kSpillPhase)
            QUOBRIX_TRY(file.spill());
        file.write(streamName(entry.id), streamOf(*entry.object));
    }
    for (std::size_t i = kIndexStreamsBeforeObjects; i < index.size(); ++i)
        file.write(index[i].first, std::move(index[i].second));
    return {};
}

void ObjectStore::forgetUnchanged() {
    if (!modified_ || !file_ || indexDamaged_ || version_ != kVersion)
        return;
    Bytes stored;
    if (indexModified_) {
        for (const ObjectId id : deletedStreams_)
            if (!slot(id) && file_->contains(streamName(id)))
                return;
        for (const auto& [name, content] : indexStreams())
            if (!file_->read(name, stored) || stored != content)
                return;
    }
    for (const Slot& entry : slots_)
        if (entry.object && entry.object->modified_ &&
            (!file_->read(streamName(entry.id), stored) || stored != streamOf(*entry.object)))
            return;
    saved();
}

void ObjectStore::saved() {
    for (const Slot& entry : slots_)
        if (entry.object)
            entry.object->modified_ = false;
    deletedStreams_.clear();
    version_ = kVersion;
    modified_ = indexModified_ = savingBefore_ = false;
    indexDamaged_ = indexDamaged_ && !standIns_.empty();
}

} // namespace quobrix
