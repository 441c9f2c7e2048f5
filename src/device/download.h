#pragma once

#include "device/flow_context.h"
#include "device/merge.h"

#include <functional>
#include <optional>

namespace quobrix {

/// Copies everything that the logger holds into a document. Runs on the thread of the document; asks through the
/// prompter, reaches the logger through the calls. A failure at any point leaves the document as it was.
class Download {
public:
    /// What the program around the flow does for it.
    struct Hooks {
        /// Puts an empty document in the place of the present one, with all the questions that this raises; false if
        /// the user does not want that after all. Called once there are records for it.
        std::function<bool()> startNewDocument;
        /// Whether that is possible; asked before the logger is read. Nothing for a program in which it always is.
        std::function<bool()> mayStartNewDocument{};
        /// Keys have come into the name tables. Nothing in a program that cannot name them.
        std::function<void(const NewKeys&)> keysAdded{};
        /// A logger that does not answer on the current port may be looked for on others. Not in a program that was
        /// told its port.
        bool mayChangePort = true;
    };

    Download(const FlowContext& context, Hooks hooks);

    /// What was merged into the document; nothing if the command ended before (the user has then been told why). Parts
    /// of the logger's memory that could not be parsed have been told; what the others hold is merged.
    std::optional<MergeResult> run();

private:
    bool wantsNewDocument();
    void tell(const Error& error);

    FlowContext context_;
    Hooks hooks_;
};

} // namespace quobrix
