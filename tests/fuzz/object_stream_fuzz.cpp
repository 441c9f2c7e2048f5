#include "fuzz/walk_objects.h"
#include "support/stream_map.h"

#include <cstdlib>

using namespace quobrix;

namespace {

/// The known class whose id is nearest to ID from above, so that every input is about real classes.
const PersistentType& nearestType(std::uint32_t id) {
    static const std::vector<const PersistentType*> types = modelTypes().all();
    const auto found = std::ranges::lower_bound(types, id, {}, [](const PersistentType* type) { return type->id(); });
    return found == types.end() ? *types.front() : **found;
}

Bytes u32Stream(std::uint32_t value) {
    ByteWriter out;
    out.u32(value);
    return out.take();
}

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// What a person does to a table whose columns may be missing, short or another's.
void edit(ObjectStore& store) {
    for (const ObjectId id : store.objectIds())
        if (auto* table = dynamic_cast<Table*>(store.find(id))) {
            const RowIndex rows = table->rowCount();
            table->insertRows(rows / 2, 2);
            table->removeRows(0, 1);
            require(table->rowCount() == rows + 1);
            for (std::size_t i = 0; i < table->columnCount(); ++i)
                require(!table->column(i).stored() || table->column(i).storedRows() == rows + 1);
        }
}

} // namespace

/// Any bytes as the streams of up to eight objects of any classes, which may refer to each other: before each one the
/// number of its bytes, 255 for all that are left. They are looked at, changed, saved and read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint32_t kMostObjects = 8;
    test::StreamMap file;
    ByteReader in({data, size});
    std::uint32_t count = 0;
    ByteWriter ids;
    for (; count < kMostObjects && in.remaining() > 4; ++count) {
        const std::uint8_t length = in.u8();
        const ByteView bytes =
            in.bytes(length == 0xFF ? in.remaining() : std::min<std::size_t>(length, in.remaining()));
        ByteReader object(bytes);
        ByteWriter stream;
        const PersistentType& type = nearestType(object.u32());
        stream.u32(type.id());
        stream.u8(type.schema);
        stream.bytes(object.bytes(object.remaining()));
        file.write(std::to_string(count), stream.take());
        ids.u32(count);
    }
    Bytes objectIds = u32Stream(count);
    objectIds.insert(objectIds.end(), ids.view().begin(), ids.view().end());
    file.write("Version", u32Stream(ObjectStore::kVersion));
    file.write("Next Available Id", u32Stream(count));
    file.write("Available Ids", u32Stream(0));
    file.write("Object Ids", std::move(objectIds));
    file.write("Singleton Ids", u32Stream(0));

    ObjectStore store(modelTypes());
    store.load(file);
    require(!store.indexDamaged());
    test::walkObjects(store);
    edit(store);
    require(bool(store.save(file)));
    ObjectStore again(modelTypes());
    again.load(file);
    require(!again.indexDamaged());
    for (const ObjectId id : again.objectIds())
        again.find(id);
    return 0;
}
