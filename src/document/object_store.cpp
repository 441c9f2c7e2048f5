#include "document/object_store.h"

#include "compound/compound_file.h"
#include "texts/text.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace quobrix {
namespace {

// The streams of the index that are written before the objects; the others follow them.
constexpr std::size_t kIndexStreamsBeforeObjects = 4;

// What is pending moves to the file before the 2nd, the 3,002nd, … object written. The odd phase lets the first spill
// come early, so that a disk that takes nothing is noticed before much has been written.
constexpr std::size_t kSpillInterval = 3000;
constexpr std::size_t kSpillPhase = 1;

// Bytes of memory kept from one object that is read to the next.
constexpr std::size_t kReadBuffer = 64 * 1024;
// Bytes that most objects are written in.
constexpr std::size_t kMostObjects = 256;

/// What the file holds is neither missing nor damaged: a later read may succeed.
bool mayPass(const Error& error) { return error.kind != ErrorKind::NotFound && error.kind != ErrorKind::Corrupt; }

} // namespace

ObjectStore::ObjectStore(const TypeRegistry& types) : types_(types) {}

ObjectStore::~ObjectStore() = default;

void ObjectStore::load(const StreamReader& file) {
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

void ObjectStore::attach(const StreamReader& file) {
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

std::unordered_map<ObjectId, const PersistentType*> ObjectStore::owners() const {
    std::unordered_map<ObjectId, const PersistentType*> owners;
    for (const auto& [typeId, id] : singletons_)
        if (const PersistentType* type = types_.find(typeId))
            owners.emplace(id, type);
    const auto add = [&](const PersistentObject& object) {
        for (const Reference& reference : object.references())
            owners.emplace(reference.id, &object.type());
    };
    for (const Slot& entry : slots_)
        if (entry.object)
            add(*entry.object);
    for (const std::unique_ptr<PersistentObject>& object : withdrawn_)
        add(*object);
    return owners;
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

void ObjectStore::noteDamage(ObjectId id, std::uint32_t typeId, ShownText what) {
    Slot* entry = slot(id);
    if (entry && !entry->unreadable && !fileChanged_)
        withdraw(*entry, typeId, std::move(what));
}

void ObjectStore::withdraw(Slot& entry, std::uint32_t typeId, ShownText what) {
    takeFailure(entry);
    entry.unreadable = true;
    if (entry.object)
        withdrawn_.push_back(std::move(entry.object));
    addDamage({entry.id, typeId, std::move(what)});
}

void ObjectStore::noteLost(const ShownText& what) {
    for (Slot& entry : slots_)
        if (!entry.object && !entry.unreadable && !entry.vacant)
            withdraw(entry, 0, what);
}

void ObjectStore::noteBadReference(ObjectId id, std::uint32_t typeId, ShownText what) {
    if (!fileChanged_ && badReferences_.emplace(id, typeId).second)
        addDamage({id, typeId, std::move(what)});
}

PersistentObject* ObjectStore::find(ObjectId id) {
    Slot* entry = slot(id);
    if (!entry || entry->unreadable)
        return nullptr;
    return entry->object ? entry->object.get() : loadInto(*entry);
}

PersistentObject* ObjectStore::loadInto(Slot& entry) {
    const auto refuse = [&](std::uint32_t typeId, ShownText what) {
        noteDamage(entry.id, typeId, std::move(what));
        return nullptr;
    };
    if (!file_)
        return refuse(0, text(TextId::NoFileToReadFrom));
    if (fileChanged_)
        return nullptr;
    Bytes content = std::move(readBuffer_); // an object that is read may load others
    const Result<void> done = read(entry.id, content);
    if (!done && !fileChanged_ && mayPass(done.error())) {
        if (!std::exchange(entry.failing, true))
            addDamage({entry.id, 0, text(TextId::TheStreamCannotBeReadNow, done.error().detail)});
        return nullptr;
    }
    if (!done)
        return refuse(0, text(TextId::TheStreamCannotBeRead, done.error().detail));
    ByteReader in(content);
    const std::uint32_t typeId = in.u32();
    const std::uint8_t schema = in.u8();
    const PersistentType* type = in.complete() ? types_.find(typeId) : nullptr;
    if (!type)
        return refuse(typeId, in.complete() ? text(TextId::TheClassIsNotKnown) : text(TextId::TheStreamIsTooShort));
    if (schema > type->schema && !std::exchange(laterLayoutMet_, true))
        savingBefore_ = modified_;
    if (schema == 0 || schema > type->schema)
        return refuse(typeId, text(TextId::LayoutOfIsNotKnown, schema, type->name));
    std::unique_ptr<PersistentObject> object = type->create();
    object->store_ = this;
    object->id_ = entry.id;
    if (!object->read(in, schema) || !in.finished())
        return refuse(typeId, text(TextId::TheContentOfIsDamaged, type->name));
    if (version_ < kVersion)
        object->modified_ = true;
    if (std::optional<Damage> failure = takeFailure(entry))
        recovered_.push_back(*std::move(failure));
    entry.object = std::move(object);
    if (content.capacity() <= kReadBuffer)
        readBuffer_ = std::move(content);
    return entry.object.get();
}

bool ObjectStore::loaded(ObjectId id) const {
    const Slot* entry = slot(id);
    return entry && entry->object;
}

void ObjectStore::unload(ObjectId id) {
    std::vector<ObjectId> ids{id};
    for (std::size_t i = 0; i < ids.size(); ++i) { // grows meanwhile
        const Slot* entry = slot(ids[i]);
        if (!entry || !entry->object)
            continue;
        if (entry->object->modified() || !inFile(ids[i]) || ids.size() > slots_.size())
            return;
        for (const Reference& reference : entry->object->references())
            ids.push_back(reference.id);
    }
    for (const ObjectId each : ids)
        if (Slot* entry = slot(each))
            entry->object.reset();
}

PersistentObject* ObjectStore::findTyped(ObjectId id, const PersistentType& type) {
    PersistentObject* object = find(id);
    if (!slot(id))
        noteBadReference(id, type.id(), text(TextId::ReferenceToNoObject, type.name));
    if (object && object->type().id() != type.id()) {
        noteBadReference(id, type.id(), text(TextId::ReferredToAsOtherClass, object->type().name, type.name));
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
    entry = {.id = id, .object = nullptr, .vacant = true};
    ++vacantSlots_;
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

std::optional<Error> ObjectStore::ofLaterVersion() const {
    if (!((version_ > kVersion && !indexDamaged_) || (laterLayoutMet_ && !savingBefore_)))
        return {};
    return Error{ErrorKind::Unsupported, text(TextId::ALaterVersionHasWrittenIt)};
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
