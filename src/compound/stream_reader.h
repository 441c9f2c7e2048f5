#pragma once

#include "base/bytes.h"
#include "base/result.h"

#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// Named streams that can be read: those of a compound file, or what was found of one.
class StreamReader {
public:
    virtual ~StreamReader() = default;

    virtual bool contains(std::string_view name) const = 0;
    /// The names of all streams, those of a compound file in directory order. Streams within inner storages (foreign
    /// files) are left alone and not listed.
    virtual std::vector<std::string> names() const = 0;
    /// The whole stream, in place of CONTENT, whose memory is reused. NotFound, or Corrupt when its chain is
    /// broken; CONTENT is then of no use.
    virtual Result<void> read(std::string_view name, Bytes& content) const = 0;
    /// The same in memory of its own.
    Result<Bytes> read(std::string_view name) const;
    /// Corrupt when the file has been cut short, or its allocation tables or directory are too damaged to write to.
    /// What is there can then be read, and copied stream by stream into another file, but there may have been more.
    virtual Result<void> writable() const = 0;
};

} // namespace quobrix
