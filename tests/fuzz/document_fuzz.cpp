#include "compound/previous_state.h"
#include "fuzz/walk_objects.h"
#include "model/parameter_thresholds.h"
#include "platform/file.h"
#include "repair/document_repair.h"
#include "repair/salvaged_file.h"
#include "settings/settings.h"
#include "summary/trip_summaries.h"
#include "support/document_streams.h"
#include "support/fault_folder.h"
#include "support/memory_file.h"

#include <cstdlib>

using namespace quobrix;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// Whatever can be found in BYTES is repaired into a document that is sound.
void repair(const Bytes& bytes) {
    const auto file = openForRepair(std::make_unique<test::MemoryFile>(bytes));
    if (!file)
        return;
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
}

/// A save of DISK, and a second one that is killed if KILLED, then without its last LOST bytes: what is found of the
/// state before is what it was.
void saveAndCut(const std::shared_ptr<Bytes>& disk, std::size_t lost, bool killed) {
    auto opened = CompoundFile::open(std::make_unique<test::MemoryFile>(disk));
    if (!opened || !(*opened)->writable())
        return;
    CompoundFile& file = **opened;
    const auto before = test::readableStreams(file);
    for (const auto& [name, content] : before)
        if (content.size() % 3 == 0)
            file.remove(name);
        else if (content.size() % 3 == 1)
            file.write(name, Bytes(content.size() + lost % 128, 7));
    if (!file.commit())
        return;
    if (killed) {
        file.write("1", Bytes(700, 9));
        (void)file.spill();
    }
    opened->reset();
    disk->resize(disk->size() - std::min(disk->size(), lost));
    test::MemoryFile cut(disk);
    const auto past = cfb::previousState(cut);
    require(bool(past));
    if (*past) {
        const auto found = CompoundFile::open(std::make_unique<BorrowedFile>(**past));
        require(found && test::readableStreams(**found) == before);
    }
    repair(*disk);
}

/// What is counted of the trips of the document that BYTES are.
void summarise(const Bytes& bytes) {
    const std::filesystem::path path = "/A.car";
    test::FaultFolder folder(1, {{path, bytes}});
    TQuobrixDocument document(folder);
    if (!document.open(path, TDocument::Access::Read))
        return;
    Settings settings(std::make_unique<MemorySettings>());
    setParameterThreshold(settings, 12, 50);
    (void)TripSummaries(document, settings).records();
}

} // namespace

/// Any bytes as a whole document: whatever of it can be opened is looked at as the views do and checked, and its trips
/// are counted; whatever can be found in it is repaired into a document that is sound. The last two bytes say how it is
/// saved and cut short then.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::make_shared<Bytes>(data, data + size);
    if (const auto opened = CompoundFile::open(std::make_unique<test::MemoryFile>(bytes))) {
        ObjectStore store(modelTypes());
        store.load(**opened);
        test::walkObjects(store);
        (void)checkDocument(store);
    }
    summarise(*bytes);
    repair(*bytes);
    if (size >= 2)
        saveAndCut(bytes, std::size_t{64} * data[size - 1], data[size - 2] % 2 != 0);
    return 0;
}
