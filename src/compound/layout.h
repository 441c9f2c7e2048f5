#pragma once

#include "compound/allocation.h"
#include "platform/file.h"

#include <unordered_set>
#include <vector>

namespace quobrix::cfb {

/// What a compound file on disk says, checked: every sector is claimed once, and no chain leads outside the file.
struct Layout {
    Sector header{};
    Pages fat;                                  ///< marks
    Pages miniFat;                              ///< marks
    std::vector<std::uint32_t> fatSectors;      ///< where each page of the FAT lies
    std::vector<std::uint32_t> difatSectors;    ///< where the pages that list them lie
    std::vector<std::uint32_t> directoryChain;  ///< sectors of the directory
    std::vector<std::uint32_t> miniFatChain;    ///< sectors of the mini FAT
    std::vector<std::uint32_t> miniStreamChain; ///< sectors of the mini stream
    Pages directory;                            ///< entries of kEntrySize bytes
    SectorSet claimed;                          ///< sectors that a damaged chain leads to and the table calls free
    SectorSet claimedMini;
    std::set<std::uint32_t> avoided; ///< sectors beyond the file's end that a damaged chain leads to
    std::set<std::uint32_t> avoidedMini;
    /// Streams (by entry index) whose chain is broken, too short, or shared with another.
    std::unordered_set<std::uint32_t> damaged;
    /// Allocation tables or directory are incomplete, or the file's end is missing: what is left can be read, but
    /// nothing can be written safely.
    bool incomplete = false;
    std::uint64_t fileSize = 0; ///< bytes
};

/// Reads header, allocation tables and directory. The memory used is in proportion to the real size of the file,
/// whatever its fields claim. Errors as CompoundFile::open.
Result<Layout> readLayout(File& file);

} // namespace quobrix::cfb
