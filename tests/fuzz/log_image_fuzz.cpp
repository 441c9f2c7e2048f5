/// The parsers of a logger's memory: as the records of an intact image, and as a whole image or port file.
#include "simulator/port_store.h"
#include "simulator/record_sets.h"

#include <cstdlib>

using namespace quobrix;
using namespace quobrix::sim;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    // A right checksum lets the fuzzer get at what is behind it.
    const Bytes image = makeImage("K-0042-B", {bytes});
    for (const auto parse : {mainRecordSets, accidentRecordSets}) {
        (void)parse(bytes);
        if (const auto sets = parse(image)) {
            std::free(sets->first.release());
            std::free(sets->second.release());
        }
    }
    (void)decodePort(bytes, Memories::Read);
    return 0;
}
