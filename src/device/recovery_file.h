#pragma once

#include "base/bytes.h"
#include "base/result.h"
#include "device/record_blocks.h"

#include <cstdint>
#include <string>

namespace quobrix {

/// A download as the library handed it over, so that it can be merged once more.
struct KeptDownload {
    std::string serialText;
    std::int64_t time = 0;  ///< of the download, s since 1970-01-01 00:00 UTC
    std::int32_t shift = 0; ///< that times are shown with, s
    RecordBlocks blocks;    ///< what could not be parsed is not among them
};

/// The content of a recovery file: a head, the six record sets, and a check sum of it all.
Bytes recoveryBytes(const KeptDownload& download);
/// The inverse. NotADocument if BYTES are no recovery file, Unsupported for one of a later version, Corrupt if they are
/// not what was written.
Result<KeptDownload> readRecovery(ByteView bytes);
/// The serial number that the file with this HEAD, its first 64 bytes or more, is of; empty if it is no such file.
std::string recoverySerialText(ByteView head);

} // namespace quobrix
