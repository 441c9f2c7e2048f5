#pragma once

#include "document/object_store.h"
#include "platform/file.h"

#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

namespace quobrix {

namespace cfb {
struct Layout;
}

/// Where the content of an object lies in the file: parts in their order (bytes).
struct Part {
    std::uint64_t offset = 0;
    std::size_t size = 0;
};
using Place = std::vector<Part>;

/// What can be read of a damaged document without looking for it.
struct Readable {
    std::unordered_map<ObjectId, std::uint32_t> classes;
    std::vector<Reference> columns; ///< of tables of logs
};

/// The content of an object that lies at PLACE. Errors as File::readAt.
Result<void> readParts(File& file, const Place& place, Bytes& content);

/// Where a file ends that has been committed once only (bytes), 0 for another: it holds one state then, every stream
/// lies in one piece, and the pages of the mini stream lie in their order.
Result<std::uint64_t> endIfWrittenInOneGo(File& file, std::uint64_t fileSize);

/// Where objects lie in a file of FILE_SIZE bytes that was written in one go, without those that are READABLE anyway:
/// found by what is left of its directory, and by their classes. LAYOUT: of a file that was saved several times, but
/// whose allocation tables are whole; else nothing.
Result<std::map<ObjectId, Place>> findObjects(File& file, std::uint64_t fileSize, const cfb::Layout* layout,
                                              const Readable& readable);

} // namespace quobrix
