#pragma once

#include "compound/compound_file.h"

#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

namespace quobrix::test {

using Streams = std::map<std::string, Bytes>;

inline std::unique_ptr<CompoundFile> compoundFile(const std::filesystem::path& path, FileMode mode) {
    auto file = openFile(path, mode);
    if (!file)
        throw std::runtime_error(file.error().detail);
    auto compound = CompoundFile::open(*std::move(file));
    if (!compound)
        throw std::runtime_error(compound.error().detail);
    return *std::move(compound);
}

/// All streams of FILE.
inline Streams streamsOf(const StreamReader& file) {
    Streams streams;
    for (const std::string& name : file.names()) {
        auto content = file.read(name);
        if (!content)
            throw std::runtime_error(content.error().detail);
        streams[name] = *std::move(content);
    }
    return streams;
}
/// Those that can be read.
inline Streams readableStreams(const StreamReader& file) {
    Streams streams;
    for (const std::string& name : file.names())
        if (auto content = file.read(name))
            streams[name] = *std::move(content);
    return streams;
}
/// All streams of the compound file PATH.
inline Streams streamsOf(const std::filesystem::path& path) { return streamsOf(*compoundFile(path, FileMode::Read)); }

/// Changes the compound file PATH as no program should.
inline void tamper(const std::filesystem::path& path, const std::function<void(CompoundFile&)>& change) {
    const auto file = compoundFile(path, FileMode::ReadWrite);
    change(*file);
    if (!file->commit())
        throw std::runtime_error("commit");
}

/// A stream of little-endian 32-bit numbers.
inline Bytes u32s(std::initializer_list<std::uint32_t> values) {
    ByteWriter out;
    for (const std::uint32_t value : values)
        out.u32(value);
    return out.take();
}

} // namespace quobrix::test
