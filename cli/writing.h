#pragma once

#include "base/bytes.h"
#include "cli/output.h"
#include "export/file_format.h"
#include "messages/message.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quobrix {

class TQuobrixDocument;

namespace cli {

/// Why DOCUMENT, opened from FILE, cannot be written where the lock file of another copy forbids it.
Message lockedMessage(const TQuobrixDocument& document, const std::string& file);
/// Says that a lock file lies beside FILE, if DOCUMENT has one.
void complainOfLockFile(const TQuobrixDocument& document, const std::string& file);
/// Whether what is made of the documents FILES may take the place of what is called OUT; complains if that is a
/// document.
bool mayReplace(const std::string& out, std::span<const std::string> files);
/// The names of FORMATS, as --format takes them.
std::vector<std::string> namesOf(std::span<const FileFormat> formats);
/// Which of TAKEN is written to OUT: the one that is NAMED, or else the one that OUT ends in; the first where there is
/// no OUT. Complains if that is none of them.
std::optional<FileFormat> chosenFormat(const std::string& named, const std::string& out,
                                       std::span<const FileFormat> taken);
/// Writes CONTENT to OUT whole, or complains; kIncomplete if it may not survive a power cut.
ExitCode writeOut(const std::string& out, ByteView content);

} // namespace cli
} // namespace quobrix
