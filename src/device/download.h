#pragma once

#include "device/merge.h"
#include "device/ports.h"
#include "device/reporter.h"

#include <functional>
#include <optional>

namespace quobrix {

/// Copies everything that the logger holds into a document. Runs on the thread of the document; asks through the
/// prompter, reaches the logger through the calls. A failure at any point leaves the document as it was.
class Download {
public:
    /// START_NEW_DOCUMENT puts an empty document in the place of the present one, with all the questions that this
    /// raises; false if the user does not want that after all.
    Download(LoggerCalls& calls, Prompter& prompter, Settings& settings, ProgressReporter& progress, LoggerNames names,
             std::function<bool()> startNewDocument);

    /// What was merged into DOCUMENT; nothing if the command ended before (the user has then been told why).
    std::optional<MergeResult> run(TQuobrixDocument& document);

private:
    LoggerCalls& calls_;
    Prompter& prompter_;
    Settings& settings_;
    Reporter reporter_;
    PortFlows ports_;
    std::function<bool()> startNewDocument_;
};

} // namespace quobrix
