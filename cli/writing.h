#pragma once

#include "messages/message.h"

#include <string>

namespace quobrix {

class TQuobrixDocument;

namespace cli {

/// Why DOCUMENT, opened from FILE, cannot be written where the lock file of another copy forbids it.
Message lockedMessage(const TQuobrixDocument& document, const std::string& file);
/// Says that a lock file lies beside FILE, if DOCUMENT has one.
void complainOfLockFile(const TQuobrixDocument& document, const std::string& file);

} // namespace cli
} // namespace quobrix
