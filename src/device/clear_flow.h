#pragma once

#include "device/flow_context.h"

#include <cstdint>
#include <string>

namespace quobrix {

/// Whether a download is followed by a clear. The numbers are stored in the settings.
enum class ClearAfterDownload : std::int32_t { Ask = 0, Always = 1, Never = 2 };

ClearAfterDownload clearAfterDownload(const Settings& settings);
void setClearAfterDownload(Settings& settings, ClearAfterDownload choice);

/// Clears what a logger has recorded. Nothing is cleared on another logger than the one that was there when the person
/// was asked, nor, where they were told that everything has been downloaded, once that is doubtful.
class ClearFlow {
public:
    explicit ClearFlow(const FlowContext& context) : context_(context) {}

    /// Asks, and clears the memory. Its question also offers to clear after every download, unless the person has ruled
    /// that out. Whether the memory was cleared.
    bool clearMemory();
    /// Asks, and clears the accident log only.
    bool clearAccidents();

    /// Clears what has just been downloaded, as the person wants it, who is asked in any case if REFUSED records are
    /// not in the document.
    bool clearDownloaded(const std::string& serialText, std::uint64_t refused);
    /// The same in a program whose user has said that it is to be cleared, whatever the window's preference is, and
    /// once what was downloaded is on disk.
    bool clearSaved(const std::string& serialText, std::uint64_t refused);
    /// Whether the memory of LOGGER may be lost, which is asked unless it holds nothing, or nothing that has not been
    /// downloaded.
    bool mayLose(const LoggerStatus& logger);
    /// The memory of SERIAL_TEXT was cleared at TIME (computer time, s): the document keeps it.
    void noteCleared(const std::string& serialText, std::int64_t time);

private:
    bool askToClear(const Message& question);
    bool clear(const std::string& serialText, bool whileCurrent);

    FlowContext context_;
};

} // namespace quobrix
