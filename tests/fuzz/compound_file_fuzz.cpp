#include "document/compound_file.h"

#include "support/memory_file.h"

#include <cstdlib>
#include <map>

using namespace quobrix;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

std::map<std::string, Bytes> readable(const CompoundFile& file) {
    std::map<std::string, Bytes> streams;
    for (const std::string& name : file.names())
        if (auto content = file.read(name))
            streams[name] = *std::move(content);
    return streams;
}

} // namespace

/// Any bytes: opening, listing and reading must end without harm; and where writing is allowed, a commit keeps every
/// stream that could be read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto disk = std::make_shared<Bytes>(data, data + size);
    auto file = CompoundFile::open(std::make_unique<test::MemoryFile>(disk));
    if (!file)
        return 0;
    auto expected = readable(**file);
    const std::string removed = expected.empty() ? "gone" : expected.begin()->first;
    (*file)->remove(removed);
    expected.erase(removed);
    for (const auto& [name, bytes] : std::map<std::string, std::size_t>{{"fuzz small", 300}, {"fuzz large", 5000}}) {
        Bytes content(bytes, 0x5A);
        (*file)->write(name, content);
        expected[name] = std::move(content);
    }
    if (!(*file)->spill() || !(*file)->commit())
        return 0;
    require(readable(**file) == expected);
    require((*file)->space().freeBytes <= (*file)->space().fileBytes + 64 * disk->size());
    auto again = CompoundFile::open(std::make_unique<test::MemoryFile>(disk));
    require(bool(again));
    require(readable(**again) == expected);
    return 0;
}
