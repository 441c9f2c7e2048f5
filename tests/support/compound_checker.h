#pragma once

#include "base/bytes.h"

#include <map>
#include <string>

namespace quobrix::test {

/// What an independent, strict reader finds in a compound file. It shares no code with the engine.
struct CompoundImage {
    /// The first offence against MS-CFB: a sector owned by nobody or twice, a wrong mark, a chain of the wrong length,
    /// a tree that is no balanced red-black tree in name order. Empty when there is none.
    std::string fault;
    std::map<std::string, Bytes> streams; ///< by name; those of inner storages by path, as "Storage/Stream"
    std::size_t treeDepth = 0;            ///< of the deepest tree
};

CompoundImage examineCompoundFile(const Bytes& file);

} // namespace quobrix::test
