#pragma once

#include "model/quobrix_document.h"

#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// Something that is to be known of a document, in the user's units.
struct DocumentProperty {
    std::string_view key; ///< names it for programs ("FreeSpace")
    SourceText label;     ///< names it for people ("Free Space")
    std::string value;
};

/// Why a document is read-only, as a sentence for people.
std::string readOnlyText(const Error& reason);

/// Everything that is to be known of DOCUMENT: where its file lies, its sizes and dates as they are now, its records by
/// log, its format, its backup, and why it is read-only, if it is.
std::vector<DocumentProperty> documentProperties(TQuobrixDocument& document, const TextContext& context);

} // namespace quobrix
