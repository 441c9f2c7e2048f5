#pragma once

#include "document/compound_file.h"

namespace quobrix {

/// FILE for reading as much of it as can be found. Where it is whole, with an index that agrees with its streams, that
/// is what CompoundFile::open makes of it. Where not, objects are looked for in every sector: each begins with the id
/// of a class and the number of a layout that is known, and ends where reading it ends.
///
/// Which object is which is known by two witnesses. A table names its columns, which lie behind it; and directory
/// entries, wherever such lie, name places, once it is known by those columns where a page of the mini stream is. Where
/// a file has been written in one go, what lies between and behind is known by its order. What several states of the
/// file say differently is left out, but for the columns of a log: there those count that have as many rows as most.
/// An object that lies in pieces is not found without the allocation tables.
///
/// writable() says Corrupt and, if so, how many objects were found in this way. Errors as CompoundFile::open, if
/// nothing is found. The work and the memory are in proportion to the file.
Result<std::unique_ptr<CompoundFile>> openForRepair(std::unique_ptr<File> file);

} // namespace quobrix
