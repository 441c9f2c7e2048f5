#include "fuzz/walk_objects.h"
#include "support/memory_file.h"

using namespace quobrix;

namespace {

Bytes u32s(std::initializer_list<std::uint32_t> values) {
    ByteWriter out;
    for (const std::uint32_t value : values)
        out.u32(value);
    return out.take();
}

} // namespace

/// Any bytes as the streams of two objects of any class, which may refer to each other. The first byte says where the
/// second one begins.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::size_t split = std::min<std::size_t>(1 + data[0], size);
    auto file = CompoundFile::create(std::make_unique<test::MemoryFile>());
    (*file)->write("Version", u32s({ObjectStore::kVersion}));
    (*file)->write("Next Available Id", u32s({2}));
    (*file)->write("Available Ids", u32s({0}));
    (*file)->write("Object Ids", u32s({2, 0, 1}));
    (*file)->write("Singleton Ids", u32s({0}));
    (*file)->write("0", Bytes(data + split, data + size));
    (*file)->write("1", Bytes(data + 1, data + split));
    ObjectStore store(modelTypes());
    store.load(**file);
    test::walkObjects(store);
    return 0;
}
