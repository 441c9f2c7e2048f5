#pragma once

#include "device/merge_flow.h"

#include <filesystem>
#include <optional>

namespace quobrix {

/// Adds the records of a log file, which the logger library has written elsewhere, to the document. It takes the way of
/// a download, but for all that concerns the logger itself: its clock, clearing, and when it was downloaded.
class LogFileImport {
public:
    /// TEXT: how times are shown.
    LogFileImport(const FlowContext& context, const TextContext& text, MergeFlow::Hooks hooks)
        : context_(context), merge_(context, text, std::move(hooks)) {}

    /// What was merged; nothing if the document is as it was, and the user has been told why.
    std::optional<MergeResult> run(const std::filesystem::path& file);

private:
    FlowContext context_;
    MergeFlow merge_;
};

} // namespace quobrix
