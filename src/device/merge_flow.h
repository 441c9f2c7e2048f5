#pragma once

#include "device/flow_context.h"
#include "device/merge.h"
#include "tables/column.h"
#include "texts/text.h"

#include <functional>
#include <optional>

namespace quobrix {

/// Puts records into the document, whether a logger, a file or a download that was kept brings them: which document
/// takes them, which vehicles they are of, and what is told. A failure at any point leaves the document as it was.
class MergeFlow {
public:
    /// What the program around the flow does for it.
    struct Hooks {
        /// Puts an empty document in the place of the present one, with all the questions that this raises; false if
        /// the user does not want that after all. Called once there are records for it.
        std::function<bool()> startNewDocument;
        /// Whether that is possible; asked before anything is read. Nothing for a program in which it always is.
        std::function<bool()> mayStartNewDocument{};
        /// Keys have come into the name tables. Nothing for a program in which nobody can name them.
        std::function<void(const NewKeys&)> keysAdded{};
        /// Tells what has become of the records, before anything that follows is asked. Nothing for a program that
        /// tells it at its end.
        std::function<void(const MergeResult&)> tellResult{};
    };

    /// TEXT: how times are shown.
    MergeFlow(const FlowContext& context, const TextContext& text, Hooks hooks)
        : context_(context), text_(text), hooks_(std::move(hooks)) {}

    /// Before anything is read: whether the document can take records, or a new one in its place. If not, the user has
    /// been told why, or does not want it.
    bool prepare();
    /// Once RECORDS have been read: the new document, where that is wanted and there are records for it.
    bool makeRoom(const LogRecords& records);
    /// Merges RECORDS as one step of the document's edits, STEP, in which ALSO happens if they change anything. Asks
    /// which vehicles told no VIN, and tells what could not be read. Nothing if the document is as it was; a new one
    /// that is wanted, but not made since there are no records for it, is no failure.
    std::optional<MergeResult> merge(const LogRecords& records, std::int32_t shift, TextOf<0> step,
                                     const std::function<void()>& also = {});
    /// Tells RESULT.
    void tellResult(const MergeResult& result) const {
        if (hooks_.tellResult)
            hooks_.tellResult(result);
    }

    /// The present document is left alone: a new one is wanted, and not made since there are no RECORDS for it.
    bool leavesDocument(const LogRecords& records) const { return wantsNew_ && records.empty(); }

private:
    void identifyVehicles(Merge& merge, const LogRecords& records, std::int32_t shift);
    void giveTypes(const std::vector<RowIndex>& newTrips);
    void tell(const Error& error);

    FlowContext context_;
    TextContext text_;
    Hooks hooks_;
    bool wantsNew_ = false;
};

} // namespace quobrix
