#pragma once

#include "platform/file_system.h"
#include "repair/document_check.h"

#include <filesystem>
#include <optional>
#include <utility>

namespace quobrix {

class CompoundFile;
class StreamReader;

/// What became of a damaged document.
struct DocumentRepair {
    std::size_t objects = 0; ///< in the new document
    /// Rows of each log and name table of the new document ("Trip Log", 120).
    std::vector<std::pair<std::string, std::size_t>> records;
    std::vector<CheckFinding> lost;  ///< what the new document does not have
    std::vector<CheckFinding> notes; ///< what was put right without loss, and what is kept though nothing refers to it

    /// Why the new document may not survive a power cut, although it is in place.
    std::optional<Error> notDurable;

    bool complete() const { return lost.empty(); }
};

/// Writes everything that can be read of the document FROM into INTO, an empty compound file, which stays uncommitted.
/// The new document is sound by checkDocument() and has no damaged index. Objects keep their ids.
///
/// Which objects there are is known by the names of their streams, whatever the index says. A log whose own table is
/// lost is put together again from its columns, each of which has a class of its own. A column that is lost becomes an
/// empty one of its table's length; the length is what most columns have. A cell that refers to a lost object becomes
/// empty. What can be read but belongs nowhere any more is kept and noted. Objects of classes of later versions are
/// kept as they are.
///
/// The work and the memory are in proportion to the document. Fails only as INTO does.
Result<DocumentRepair> salvage(const StreamReader& from, CompoundFile& into);

/// The same into the file INTO, which must not be the one that FROM reads: the document is built beside its place and
/// put there when it is whole, instead of what was there before if that may be replaced (IF_THERE). It has the
/// permissions of LIKE, the damaged file, so that what was private stays so. Errors as TDocument::saveAs.
Result<DocumentRepair> repairDocument(const StreamReader& from, const std::filesystem::path& into,
                                      IfThere ifThere = IfThere::Refuse, const std::filesystem::path& like = {});

} // namespace quobrix
