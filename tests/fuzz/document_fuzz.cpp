#include "fuzz/walk_objects.h"
#include "model/document_repair.h"
#include "support/memory_file.h"

#include <cstdlib>

using namespace quobrix;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

/// Any bytes as a whole document: whatever of it can be opened is looked at as the views do, checked, and repaired into
/// a document that is sound.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = CompoundFile::open(std::make_unique<test::MemoryFile>(Bytes(data, data + size)));
    if (!file)
        return 0;
    {
        ObjectStore store(modelTypes());
        store.load(**file);
        test::walkObjects(store);
        (void)checkDocument(store);
    }
    const auto disk = std::make_shared<Bytes>();
    auto target = CompoundFile::create(std::make_unique<test::MemoryFile>(disk));
    const Result<DocumentRepair> repair = salvage(**file, **target);
    require(repair && (*target)->commit());
    target = CompoundFile::open(std::make_unique<test::MemoryFile>(disk));
    require(bool(target));
    ObjectStore store(modelTypes());
    store.load(**target);
    require(!store.indexDamaged() && !store.findLostSingletons());
    require(checkDocument(store).sound());
    require(store.objectCount() == repair->objects);
    for (const PersistentType* root : kRootTables)
        require(store.singletonIds().contains(root->id()));
    return 0;
}
