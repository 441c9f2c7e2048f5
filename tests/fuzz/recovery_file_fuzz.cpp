#include "device/records.h"
#include "device/recovery_file.h"

#include <cstdlib>

using namespace quobrix;

/// Any bytes as a recovery file. What is taken for one is written the same again; its records are believed no more than
/// those of a logger. The check sum is put right, so that what lies behind it is reached.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 8)
        return 0;
    Bytes bytes(data, data + size);
    std::uint64_t sum = 0xcbf29ce484222325u;
    for (std::size_t i = 0; i + 8 < size; ++i)
        sum = (sum ^ bytes[i]) * 0x100000001b3u;
    for (std::size_t i = 0; i < 8; ++i)
        bytes[size - 8 + i] = static_cast<std::uint8_t>(sum >> (8 * i));
    const auto download = readRecovery(bytes);
    if (!download)
        return 0;
    static_cast<void>(parseRecords(download->blocks));
    const auto again = readRecovery(recoveryBytes(*download));
    if (!again || recoveryBytes(*again) != recoveryBytes(*download))
        std::abort();
    return 0;
}
