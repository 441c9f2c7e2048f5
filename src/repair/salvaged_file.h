#pragma once

#include "compound/stream_reader.h"
#include "platform/file.h"

#include <memory>

namespace quobrix {

/// FILE for reading as much of it as can be found. Where it is whole, with an index that agrees with its streams, that
/// is what CompoundFile::open makes of it. Where not, and if it was written in one go, objects are found without its
/// allocation tables too: by what is left of its directory, the mini stream being one row of pages between the large
/// streams; and tables of logs and their columns by their classes, of each of which there is one.
///
/// In a file that was saved several times nothing is looked for: earlier states lie there, too, and an object says
/// neither which it is nor of which state. Where the last state has lost its allocation tables or directory, the one
/// before the last save takes its place as a whole if it is whole, and more can be read of it.
///
/// writable() says Corrupt and, if so, how many objects were found in this way, or that this is the state before the
/// last save. Errors as CompoundFile::open, if nothing is found. The work and the memory are in proportion to the file.
Result<std::unique_ptr<StreamReader>> openForRepair(std::unique_ptr<File> file);

} // namespace quobrix
