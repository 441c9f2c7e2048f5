#pragma once

#include "base/bytes.h"
#include "device/quobrix.h"
#include "platform/allocated_size.h"

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

/// The set's bytes: as many as its head says, if the block has them, and the head in any case that it fits.
inline ByteView bytesOf(const RecordBlock& block) {
    if (!block)
        return {};
    const std::size_t there = allocatedSize(block.get());
    const std::size_t told =
        there < sizeof(QuobrixRecordSet) ? there : std::max<std::size_t>(block->size, sizeof(QuobrixRecordSet));
    return {reinterpret_cast<const std::uint8_t*>(block.get()), std::min(there, told)};
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
