#pragma once

#include "compound/allocation.h"
#include "platform/file.h"

#include <memory>

namespace quobrix::cfb {

/// What a commit notes of the state that it replaces, so that this state can be found again, and known to be whole,
/// when the end of the file is lost and the present state with it.
///
/// The state before the last commit usually lies whole in the file: its sectors are reused by the next transaction at
/// the earliest. But nothing in an ordinary compound file leads to it, and a save that was killed, cancelled or refused
/// may have overwritten some of it without a trace. So two sectors that both states leave free hold the header that led
/// to it, and a hash of the content of the sectors that only it uses; all others cannot change before the next commit.
///
/// Why a note that is accepted tells the truth: it lies where every attempt to replace that state has put its own (see
/// AllocationTable::spare), so none of an earlier attempt is left; it names the header that its commit has written,
/// byte for byte; and it was durable before that header was.
struct PreviousStateNote {
    Sector about{};
    Sector header{};
};

/// The note for a commit that turns from HEADER to NEXT, to lie in FAT's spare sectors, of which there must be kSpare.
/// Two sectors of zeros when the state cannot be vouched for. Reads the sectors of FILE that only the old state uses.
PreviousStateNote notePreviousState(File& file, const Sector& header, const Sector& next, const AllocationTable& fat);

/// FILE as it was before its last commit, for reading, or nothing: when no note of it is left, or any of its sectors is
/// not what it was. What is returned was committed once exactly so, and no allocation table, chain or directory entry
/// of it is damaged. FILE must outlive it. The work is in proportion to the file. Errors as FILE's.
Result<std::unique_ptr<File>> previousState(File& file);

} // namespace quobrix::cfb
