#pragma once

#include "device/flow_context.h"
#include "device/merge.h"
#include "device/recovery_folder.h"
#include "tables/column.h"

#include <functional>
#include <optional>

namespace quobrix {

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

    /// What the program around the flow does for it.
    struct Hooks {
        /// Puts an empty document in the place of the present one, with all the questions that this raises; false if
        /// the user does not want that after all. Called once there are records for it.
        std::function<bool()> startNewDocument;
        /// Whether that is possible; asked before the logger is read. Nothing for a program in which it always is.
        std::function<bool()> mayStartNewDocument{};
        /// Keys have come into the name tables. Nothing for a program in which nobody can name them.
        std::function<void(const NewKeys&)> keysAdded{};
        /// The logger has met an anomalous vehicle. Nothing for a program in which nobody can tell which.
        std::function<void()> chooseAnomalousVehicle{};
        /// A logger that does not answer on the current port may be looked for on others. Not in a program that was
        /// told its port.
        bool mayChangePort = true;
        Times times = Times::AsPersonSays;
    };

    /// TEXT: how times are shown.
    Download(const FlowContext& context, RecoveryFolder& recoveries, const TextContext& text, Hooks hooks)
        : context_(context), recoveries_(recoveries), text_(text), hooks_(std::move(hooks)) {}

    /// What was merged into the document; nothing if the command ended before (the user has then been told why). Parts
    /// of the logger's memory that could not be parsed have been told; what the others hold is merged.
    std::optional<MergeResult> run();
    /// Merges DOWNLOAD, which the recovery folder has just handed out, into the document, a new one.
    std::optional<MergeResult> recover(const KeptDownload& download);

private:
    struct Clock {
        std::int32_t shift = 0;   ///< of the times that are shown, s
        bool synchronize = false; ///< after the download
    };

    bool wantsNewDocument();
    std::optional<Clock> checkClock();
    std::optional<MergeResult> merge(const KeptDownload& download, const LogRecords& records, bool kept, bool nothing);
    void settleLogger(const std::string& serialText, const MergeResult& result, bool kept, bool synchronize);
    void tell(const Error& error);

    FlowContext context_;
    RecoveryFolder& recoveries_;
    TextContext text_;
    Hooks hooks_;
    std::uint32_t gaps_ = 0; ///< of the logger, when it was read
};

} // namespace quobrix
