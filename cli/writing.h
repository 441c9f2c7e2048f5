#pragma once

#include "base/bytes.h"
#include "cli/output.h"
#include "messages/message.h"

#include <span>
#include <string>

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
/// Writes CONTENT to OUT whole, or complains; kIncomplete if it may not survive a power cut.
ExitCode writeOut(const std::string& out, ByteView content);

} // namespace cli
} // namespace quobrix
