#include "document/persistent.h"

#include "document/object_store.h"

#include <algorithm>
#include <cassert>

namespace quobrix {

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

} // namespace quobrix
