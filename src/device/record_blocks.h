#pragma once

#include "base/bytes.h"
#include "device/quobrix.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace quobrix {

/// What the library allocates with malloc and the caller frees.
struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

/// A record set as the library handed it over; empty when it handed none.
using RecordBlock = std::unique_ptr<QuobrixRecordSet, FreeBlock>;

/// The set's bytes, as many as its head says and the head in any case: the library's word is all there is to know the
/// block's size by.
inline ByteView bytesOf(const RecordBlock& block) {
    return block ? ByteView(reinterpret_cast<const std::uint8_t*>(block.get()),
                            std::max<std::size_t>(block->size, sizeof(QuobrixRecordSet)))
                 : ByteView();
}

/// A part of the logger's memory that the library could not parse.
struct UnreadableLog {
    std::string name; ///< "trips, trouble codes and activity" …
    std::string why;  ///< the library's words
};

/// Everything that one download, or one log file, holds.
struct RecordBlocks {
    RecordBlock trips;
    RecordBlock troublesAndActivity;
    struct Accidents {
        RecordBlock stops, samples;
    };
    std::array<Accidents, 2> accidents;
    std::vector<UnreadableLog> unreadable; ///< of these there are no records
};

} // namespace quobrix
