#include "repair/salvaged_objects.h"

#include "compound/stream_reader.h"
#include "model/quobrix_document.h"
#include "texts/text.h"

namespace quobrix {
namespace {

/// Reads the content into OBJECT; false if it is damaged.
bool readContent(SalvagedObject& object, ByteReader& in, std::uint8_t schema) {
    ByteReader again = in;
    const std::unique_ptr<PersistentObject> read = object.type->create();
    if (!read->read(in, schema) || !in.finished())
        return false;
    if (dynamic_cast<const Table*>(read.get()))
        return object.table.emplace().read(again);
    if (const auto* column = dynamic_cast<const Column*>(read.get())) {
        object.stored = column->stored();
        object.rows = column->storedRows();
    }
    if (const auto* cells = dynamic_cast<const ObjectColumn*>(read.get())) {
        object.cells = cells->values();
        object.cellTypeId = cells->objectType().id();
    }
    return true;
}

} // namespace

Bytes SalvagedObject::encode() const {
    ByteWriter out;
    out.u32(typeId);
    out.u8(type->schema);
    if (table) {
        table->write(out);
        return out.take();
    }
    const std::unique_ptr<PersistentObject> made = type->create();
    if (!cells.empty())
        static_cast<ObjectColumn&>(*made).setAll(cells);
    else
        static_cast<Column&>(*made).insertRows(0, rows);
    made->write(out);
    return out.take();
}

SalvagedObjects::SalvagedObjects(const StreamReader& from) {
    readIndex(from);
    for (const std::string& name : from.names())
        if (const ObjectId id = idOfStream(name); id != kNoObject)
            examine(id, from.read(name));
}

void SalvagedObjects::readIndex(const StreamReader& from) {
    ObjectStore store(modelTypes());
    store.load(from);
    store.findLostSingletons();
    for (const Damage& damage : store.damage())
        if (damage.id == kNoObject)
            indexDamage_.push_back(damage.what);
    named_ = store.singletonIds();
    for (const ObjectId id : store.objectIds())
        if (!from.contains(streamName(id)))
            unreadable_.emplace(id, Unreadable{0, text(TextId::ItsStreamIsMissing)});
}

void SalvagedObjects::examine(ObjectId id, const Result<Bytes>& stream) {
    const auto refuse = [&](std::uint32_t typeId, ShownText why) {
        unreadable_.emplace(id, Unreadable{typeId, std::move(why)});
    };
    if (!stream)
        return refuse(0, stream.error().detail);
    ByteReader in(*stream);
    SalvagedObject object;
    object.typeId = in.u32();
    const std::uint8_t schema = in.u8();
    object.type = modelTypes().find(object.typeId);
    if (!in.complete())
        return refuse(0, text(TextId::ItsStreamIsTooShort));
    if (object.typeId == 0 || schema == 0) // bytes that a disk lost, most likely
        return refuse(0, text(TextId::ItDoesNotSayItsClass));
    if (object.type && schema > object.type->schema)
        return refuse(object.typeId, text(TextId::LayoutOfIsNotKnown, schema, object.type->name));
    if (object.type && !readContent(object, in, schema))
        return refuse(object.typeId, text(TextId::TheContentOfIsDamaged, object.type->name));
    byClass_[object.typeId].push_back(id);
    objects_.emplace(id, std::move(object));
}

ObjectId SalvagedObjects::named(const PersistentType& type) const {
    const auto found = named_.find(type.id());
    return found == named_.end() ? kNoObject : found->second;
}

SalvagedObject* SalvagedObjects::free(ObjectId id, std::uint32_t typeId) {
    const auto found = objects_.find(id);
    const bool fits =
        found != objects_.end() && found->second.typeId == typeId && found->second.state == SalvagedObject::State::Free;
    return fits ? &found->second : nullptr;
}

ObjectId SalvagedObjects::loneFree(std::uint32_t typeId) {
    // What is claimed stays so, so it need not be passed again.
    std::vector<ObjectId>& ids = byClass_[typeId];
    for (std::size_t i = 0; i < ids.size() && i < 2;) {
        if (free(ids[i], typeId)) {
            ++i;
        } else {
            ids[i] = ids.back();
            ids.pop_back();
        }
    }
    return ids.size() == 1 ? ids.front() : kNoObject;
}

ShownText SalvagedObjects::whyNot(ObjectId id) {
    if (const auto known = unreadable_.find(id); known != unreadable_.end()) {
        setTold(id);
        return known->second.why;
    }
    const auto found = objects_.find(id);
    if (found == objects_.end())
        return text(TextId::ItDoesNotExist);
    if (!found->second.type) {
        setTold(id);
        return text(TextId::ItsClassIsNotKnown);
    }
    return found->second.state == SalvagedObject::State::Free ? text(TextId::ItIsOfClass, found->second.type->name)
                                                              : text(TextId::ItBelongsElsewhere);
}

ObjectId SalvagedObjects::add(SalvagedObject object) {
    while (objects_.contains(nextId_) || unreadable_.contains(nextId_))
        ++nextId_;
    objects_.emplace(nextId_, std::move(object));
    return nextId_;
}

const PersistentObject& SalvagedObjects::prototype(const PersistentType& type) {
    std::unique_ptr<PersistentObject>& prototype = prototypes_[&type];
    if (!prototype)
        prototype = type.create();
    return *prototype;
}

} // namespace quobrix
