#pragma once

#include "compound/directory.h"

/// The red-black tree that MS-CFB makes of a storage's entries. Other programs recurse on it, so its depth has to stay
/// logarithmic whatever the order of writing; and it is changed in place, so that a save touches few pages.
namespace quobrix::cfb {

/// The tree's entries in order; nothing when it is not a proper red-black tree in name order. The walk is bounded by
/// MOST entries and needs no recursion.
std::optional<std::vector<std::uint32_t>> treeInOrder(const Directory& directory, std::uint32_t most);

/// Makes a balanced tree of ENTRIES, which are in name order.
void rebuildTree(Directory& directory, const std::vector<std::uint32_t>& entries);

/// Adds an entry to a proper tree that has none of its name.
void insertIntoTree(Directory& directory, std::uint32_t index);

/// Takes an entry out of a proper tree that holds it.
void eraseFromTree(Directory& directory, std::uint32_t index);

} // namespace quobrix::cfb
