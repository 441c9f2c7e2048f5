#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quobrix::bench {

struct Object {
    std::uint32_t id = 0;
    std::uint32_t typeId = 0;
    Bytes content;
};
using Objects = std::vector<Object>;

/// One way to keep objects in a file. Failures end the program: a benchmark of something that fails says nothing.
class StoragePeer {
public:
    virtual ~StoragePeer() = default;

    /// Takes the objects over into whatever it writes them from; not measured.
    virtual void prepare(const Objects& objects) = 0;
    /// A new file of the prepared objects, durable. There is none of its name.
    virtual void create(const std::filesystem::path& path) = 0;
    /// Opens the file, reads which objects there are, and one of them.
    virtual void readOne(const std::filesystem::path& /*path*/, std::uint32_t /*id*/) {}
    /// Opens the file and reads every object into memory; the number of their bytes.
    virtual std::size_t readAll(const std::filesystem::path& path) = 0;

    /// Opens the file for save(); not measured.
    virtual void open(const std::filesystem::path& /*path*/) {}
    /// Changes objects that are there already, durably.
    virtual void save(const Objects& /*changed*/) {}
    /// Not measured.
    virtual void close() {}
};

std::unique_ptr<StoragePeer> makeDocumentPeer();
std::unique_ptr<StoragePeer> makeSqlitePeer();
std::unique_ptr<StoragePeer> makeGsfPeer();
/// The limit: the same bytes in one piece, without any structure. Only creates, and reads all.
std::unique_ptr<StoragePeer> makeRawPeer();

/// Ends the program when something that has to succeed does not.
inline void require(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "%s failed\n", what);
    std::abort();
}

} // namespace quobrix::bench
