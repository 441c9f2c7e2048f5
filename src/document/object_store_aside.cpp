#include "compound/stream_reader.h"
#include "document/object_store.h"

#include <algorithm>
#include <cassert>

namespace quobrix {
namespace {

// About how many bytes of memory an object takes in addition to its content.
constexpr std::size_t kObjectMemory = 256;

/// Takes ID, which is most often the first or the last, out of IDS.
void takeOut(std::deque<ObjectId>& ids, ObjectId id) {
    if (ids.back() == id)
        ids.pop_back();
    else
        ids.erase(std::ranges::find(ids, id));
}

} // namespace

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
    bool listed = false;
    try {
        (how == Aside::Deleted ? deleted_ : unmade_).push_back(id);
        listed = true;
        deletedStreams_.insert(id);
    } catch (...) {
        if (listed)
            (how == Aside::Deleted ? deleted_ : unmade_).pop_back();
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

} // namespace quobrix
