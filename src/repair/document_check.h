#pragma once

#include "model/quobrix_document.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quobrix {

/// One thing that the check came upon.
struct CheckFinding {
    ObjectId id = kNoObject; ///< none: the index or a stream that it does not know
    ShownText log;           ///< "Trip Log" …; empty where it concerns the document as a whole
    ShownText what;          ///< words for the user
};

struct DocumentCheck {
    std::size_t objects = 0;           ///< in the document's index
    std::size_t damagedObjects = 0;    ///< how many of these have a part in the damages
    std::vector<CheckFinding> damages; ///< what is lost, or contradicts itself
    std::vector<CheckFinding> notes;   ///< what is merely left over

    bool sound() const { return damages.empty(); }
};

/// Loads every object of a document and follows every reference: each object of the index must have a stream that can
/// be read, each table columns of its length, and each reference an object of its class that nothing else refers to.
/// Objects of classes that only a later version knows are noted, and damage where another class is expected of them.
/// Changes nothing, but what is damaged is known to the document from then on.
DocumentCheck checkDocument(ObjectStore& store);
/// The same, and damage of the file around the objects.
DocumentCheck checkDocument(TQuobrixDocument& document);

} // namespace quobrix
