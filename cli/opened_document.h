#pragma once

#include "cli/output.h"
#include "model/quobrix_document.h"

#include <memory>
#include <string>

namespace quobrix::cli {

/// Opens FILE for reading, or complains.
bool openForReading(TQuobrixDocument& document, const std::string& file);

/// A document that a command reads.
class OpenedDocument {
public:
    /// As openForReading().
    bool open(const std::string& file);

    const std::string& file() const { return file_; }
    TQuobrixDocument& document() { return document_; }
    /// The table of LOG, wherever in the file it may be; an empty one where there is none.
    const Table& table(const LogSpec& log);
    /// Whether everything that was asked of it is known to have been read; complains if not.
    ExitCode completeness();

private:
    std::string file_;
    TQuobrixDocument document_;
    std::unique_ptr<PersistentObject> none_;
};

} // namespace quobrix::cli
