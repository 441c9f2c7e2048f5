#include "document/object_store.h"

#include "compound/compound_file.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace quobrix {
namespace {

// No document gets near it, and counting on from here never reaches kNoObject.
constexpr ObjectId kLargestNextId = 1u << 31;

// Ids that are neither used nor free, of which more than these can only come of a garbled number.
constexpr std::size_t kMostUnused = 1u << 20;

Bytes u32Stream(std::uint32_t value) {
    ByteWriter out;
    out.u32(value);
    return out.take();
}

} // namespace

std::string streamName(ObjectId id) { return fmt::format_int(id).str(); }

ObjectId idOfStream(std::string_view name) {
    ObjectId id = kNoObject;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
    const bool proper = error == std::errc{} && end == name.data() + name.size() && id < kLargestNextId;
    return proper && streamName(id) == name ? id : kNoObject;
}

void ObjectStore::loadIndex() {
    ShownText why;
    const auto stream = [&](std::string_view name) {
        Result<Bytes> bytes = file_->read(name);
        if (bytes)
            return std::move(*bytes);
        why = bytes.error().kind == ErrorKind::NotFound
                  ? text(TextId::TheStreamIsMissing, name)
                  : text(TextId::TheStreamCannotBeReadWhy, name, bytes.error().detail);
        return Bytes();
    };
    const auto finish = [&](const ByteReader& in, std::string_view name) {
        if (why.empty() && !in.finished())
            why = text(TextId::TheStreamIsDamaged, name);
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
        why = text(TextId::AnObjectIdIsListedTwice), listed = false;
    if ((!slots_.empty() && slots_.back().id >= nextId_) || nextId_ > kLargestNextId)
        why = text(TextId::NextAvailableIdWrong);

    const Bytes singletonBytes = stream(kSingletonIdsStream);
    ByteReader singletons(singletonBytes);
    const std::uint32_t singletonCount = singletons.count(8);
    for (std::uint32_t i = 0; i < singletonCount; ++i) {
        const std::uint32_t typeId = singletons.u32();
        const ObjectId id = singletons.u32();
        if (!slot(id) || !singletons_.emplace(typeId, id).second)
            why = text(TextId::SingletonIsNoObject);
        else if (!types_.find(typeId) && typeIdOf(id) != typeId) // a later version may have added some
            why = text(TextId::SingletonOfOtherClass);
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
            why = text(TextId::AFreeIdIsInUse);
        else if (!inFile(id)) // what the index merely lacks is not to be overwritten
            freeIds_.push_back(id);
    }
    finish(free, kFreeIdsStream);

    if (!why.empty()) {
        const std::vector<ObjectId> ids = objectIds();
        listed = listed && (ids.empty() || ids.back() < kLargestNextId);
        rebuildIndex(why, listed ? &ids : nullptr, free.finished() ? unused : std::vector<ObjectId>());
    }
    addVacantSlots();
}

/// Gives the free ids their slots.
void ObjectStore::addVacantSlots() {
    slots_.reserve(slots_.size() + freeIds_.size());
    for (const ObjectId id : freeIds_)
        slots_.push_back({.id = id, .object = nullptr, .vacant = true});
    vacantSlots_ = freeIds_.size();
    std::ranges::sort(slots_, {}, &Slot::id);
}

/// LISTED: the list of all objects, if that can be read. UNUSED: what the list of free ids says.
void ObjectStore::rebuildIndex(const ShownText& why, const std::vector<ObjectId>* listed,
                               const std::vector<ObjectId>& unused) {
    // The streams' names are the second witness of which objects there are; their first bytes say of which class.
    slots_.clear();
    vacantSlots_ = 0;
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
    ShownText why;
    for (const Slot& entry : slots_) {
        if (entry.object || entry.unreadable || entry.vacant)
            continue; // a singleton that is loaded is known
        const std::optional<std::uint32_t> typeId = typeIdOf(entry.id);
        const PersistentType* type = typeId ? types_.find(*typeId) : nullptr;
        if (type && type->singleton && singletons_.emplace(*typeId, entry.id).second)
            why = text(TextId::StreamLacksEntry, kSingletonIdsStream, type->name);
        else if (!typeId && why.empty())
            why = text(TextId::SingletonMayBeUnreadable, entry.id);
    }
    if (!why.empty() && !fileChanged_) {
        indexDamaged_ = true;
        addDamage({kNoObject, 0, std::move(why)});
    }
    return indexDamaged_;
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

std::optional<ShownText> ObjectStore::doubt() const {
    if (!file_)
        return {};
    if (indexDamaged_) {
        const auto ofIndex = std::ranges::find(damage_, kNoObject, &Damage::id);
        return ofIndex == damage_.end() ? text(TextId::TheIndexIsDamaged) : ofIndex->what;
    }
    const auto lacking = std::ranges::count_if(slots_, [&](const Slot& entry) {
        return !entry.vacant && !entry.object && !file_->contains(streamName(entry.id));
    });
    if (lacking > 0)
        return text(TextId::ObjectStreamsMissing, lacking);
    std::vector<std::string> stray = strayStreams();
    std::erase_if(stray, [&](const std::string& name) { return deletedStreams_.contains(idOfStream(name)); });
    if (!stray.empty())
        return text(TextId::StreamNotInIndex, stray.front());
    const std::size_t known = objectCount() + freeIds_.size() + aside_.size();
    if (known < nextId_ && nextId_ - known <= kMostUnused)
        return text(TextId::ObjectsUnaccountedFor, nextId_ - known);
    return {};
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

ObjectStore::IndexStreams ObjectStore::indexStreams() const {
    const auto list = [](const auto& values, std::size_t count, const auto& write) {
        ByteWriter out;
        out.u32(static_cast<std::uint32_t>(count));
        for (const auto& value : values)
            write(out, value);
        return out.take();
    };
    const auto id = [](ByteWriter& out, ObjectId value) { out.u32(value); };
    // What stands in for a lost singleton is named without an object, so that this index is not taken for whole.
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

} // namespace quobrix
