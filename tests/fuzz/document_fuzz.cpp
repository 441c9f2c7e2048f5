#include "fuzz/walk_objects.h"
#include "support/memory_file.h"

using namespace quobrix;

/// Any bytes as a whole document: whatever of it can be opened is looked at as the views do.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto file = CompoundFile::open(std::make_unique<test::MemoryFile>(Bytes(data, data + size)));
    if (!file)
        return 0;
    ObjectStore store(modelTypes());
    store.load(**file);
    test::walkObjects(store);
    return 0;
}
