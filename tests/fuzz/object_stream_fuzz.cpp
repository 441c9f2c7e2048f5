#include "fuzz/walk_objects.h"
#include "support/stream_map.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <stdexcept>

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

/// What a person does to a table whose columns may be missing, short or another's. It lets go of none of them.
void edit(ObjectStore& store) {
    for (const ObjectId id : store.objectIds())
        if (auto* table = dynamic_cast<Table*>(store.find(id))) {
            const RowIndex rows = table->rowCount();
            const std::vector<Reference> before = table->references();
            const bool fixed = !table->rowLock().empty();
            try {
                table->insertRows(rows / 2, 2);
                table->removeRows(0, 1);
            } catch (const std::logic_error&) {
                require(fixed);
            }
            const RowIndex now = fixed ? rows : rows + 1;
            require(table->rowCount() == now);
            for (std::size_t i = 0; i < table->columnCount(); ++i) {
                Column& column = table->column(i);
                const std::vector<std::size_t> unreadable = table->unreadableColumns();
                if (!column.stored() || std::ranges::find(unreadable, i) != unreadable.end())
                    continue;
                require(column.storedRows() == now);
                if (column.kind() == ColumnKind::Text && now > 0 && table->columnLock(column).empty())
                    column.setValue(now - 1, std::string("set"));
            }
            const std::vector<Reference> after = table->references();
            require(
                std::ranges::equal(before, std::span(after).first(before.size()), {}, &Reference::id, &Reference::id));
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
