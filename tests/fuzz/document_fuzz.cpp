#include "fuzz/walk_objects.h"
#include "repair/document_repair.h"
#include "repair/salvaged_file.h"
#include "support/memory_file.h"

#include <cstdlib>

using namespace quobrix;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

/// Any bytes as a whole document: whatever of it can be opened is looked at as the views do and checked; whatever can
/// be found in it is repaired into a document that is sound.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes(data, data + size);
    if (const auto opened = CompoundFile::open(std::make_unique<test::MemoryFile>(bytes))) {
        ObjectStore store(modelTypes());
        store.load(**opened);
        test::walkObjects(store);
        (void)checkDocument(store);
    }
    const auto file = openForRepair(std::make_unique<test::MemoryFile>(bytes));
    if (!file)
        return 0;
    const auto disk = std::make_shared<Bytes>();
    auto target = CompoundFile::create(std::make_unique<test::MemoryFile>(disk));
    const Result<DocumentRepair> repair = salvage(**file, **target);
    require(repair && (*target)->commit());
    target = CompoundFile::open(std::make_unique<test::MemoryFile>(disk));
    require(bool(target));
    ObjectStore store(modelTypes());
    store.load(**target);
    require(!store.doubt() && !store.findLostSingletons());
    require(checkDocument(store).sound());
    require(store.objectCount() == repair->objects);
    for (const PersistentType* root : kRootTables)
        require(store.singletonIds().contains(root->id()));
    return 0;
}
