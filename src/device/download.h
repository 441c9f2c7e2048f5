#pragma once

#include "device/merge_flow.h"
#include "device/recovery_folder.h"
#include "document/disk_work.h"
#include "platform/log_file.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace quobrix {

/// The file of this user's with a line on each download.
LogFile downloadLog();

/// Of DOCUMENT, which outlives it: whether it holds the records of a download, or fuller ones, but for those that were
/// refused; no where that cannot be told.
RecoveryFolder::Document heldBy(TQuobrixDocument& document);

/// Copies everything that the logger holds into a document. A failure at any point leaves the document as it was, and
/// nothing is cleared on the logger while the only copy of its data is in memory.
class Download {
public:
    /// By which clock the times of what was recorded are shown.
    enum class Times {
        AsPersonSays, ///< who is asked when the clocks differ, and whether to set the logger's clock and to clear it
        Logger,       ///< nobody is asked anything about clocks and clearing, and neither is done
        Computer,     ///< likewise
    };

    struct Options {
        Times times = Times::AsPersonSays;
        /// A logger that does not answer on the current port may be looked for on others. Not in a program that was
        /// told its port.
        bool mayChangePort = true;
        /// The logger has met an anomalous vehicle. Nothing for a program in which nobody can tell which.
        std::function<void()> chooseAnomalousVehicle{};
        /// Takes a line on each download that reached its logger, whatever came of it, but for one that was cancelled
        /// while the logger was read.
        std::function<void(const std::string& line)> log{};
        /// Waits for the disk that keeps what was downloaded.
        DiskRunner runDisk = [](const DiskWork& work) {
            DiskProgress nobodyLooks;
            return work(nobodyLooks);
        };
    };

    /// TEXT: how times are shown.
    Download(const FlowContext& context, const TextContext& text, MergeFlow::Hooks hooks, RecoveryFolder& recoveries,
             Options options)
        : context_(context), text_(text), recoveries_(recoveries), options_(std::move(options)),
          merge_(context, text, std::move(hooks)) {}

    /// What was merged into the document; nothing if the command ended before (the user has then been told why). Parts
    /// of the logger's memory that could not be parsed have been told; what the others hold is merged.
    std::optional<MergeResult> run();
    /// Merges DOWNLOAD, which the recovery folder has just handed out, into the document, a new one.
    std::optional<MergeResult> recover(const KeptDownload& download);

    /// The logger that was read last; empty if none was.
    const std::string& logger() const { return serialText_; }

private:
    struct Clock {
        std::int64_t ahead = 0;   ///< the logger's of the computer's, s
        std::int32_t shift = 0;   ///< of the times that are shown, s
        bool synchronize = false; ///< after the download
    };
    /// What came of reading the logger.
    struct Read {
        LoggerOutcome outcome;
        KeptDownload download;
        LoggerIdentity identity; ///< of this logger; nothing if it has not told
        bool anomalous = false;
        std::int64_t began = 0; ///< computer time, s
        std::uint32_t gaps = 0; ///< of the logger, when it was read
    };

    std::optional<Clock> checkClock();
    std::optional<Read> read(std::int32_t shift);
    std::optional<MergeResult> merge(const KeptDownload& download, const LogRecords& records, bool kept);
    bool noteCurrent(const Read& read, const MergeResult& result, bool kept);
    void settleLogger(const std::string& serialText, const MergeResult& result, bool synchronize);
    void log(const Read& read, std::int64_t clockAhead, const LogRecords& records,
             const std::optional<MergeResult>& result) const;

    FlowContext context_;
    TextContext text_;
    RecoveryFolder& recoveries_;
    Options options_;
    MergeFlow merge_;
    std::string serialText_;
};

} // namespace quobrix
