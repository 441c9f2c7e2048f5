#pragma once

#include "model/log_columns.h"
#include "model/recorded_cells.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace quobrix {

/// The text of an activity event: 0 to 20, or -1 to -6 for changes of the configuration; of any other that it is not
/// known.
SourceText activityEventText(std::int32_t code);

/// Whether a person may edit what was recorded of an event. What the logger tells of its configuration, and of being
/// connected (0), stays as it is; so does an event without a code.
constexpr bool isEditableEvent(std::int32_t code) { return code > 0; }

/// The vehicle, but for events that have to do with a computer and with none: a download, and being connected to it.
class ActivityVehicleColumn : public VehicleColumn {
public:
    std::string namedKey(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    std::optional<CellSource> sourceOf(RowIndex row) const override;

private:
    bool hasNone(RowIndex row) const;
};

/// Describes the event of its row.
class ActivityDescriptionColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Text; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    SourceText description(RowIndex row) const;
};

/// What an owner of vehicles looks for, in words: that a trip was cut short, that the clock was altered, how much time
/// of which there is no record lies before a clearing, and how long a logger was unplugged. It is computed from all
/// logs, and kept until one of their times changes.
class ActivityRemarksColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Text; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    /// Of one logger, in order of time (s since 1970-01-01 00:00 UTC).
    struct History {
        std::vector<std::int32_t> records, disconnections;
    };

    void refresh() const;
    ShownText remark(RowIndex row) const;

    mutable std::unordered_map<std::string, History> histories_;
    mutable std::uint64_t state_ = ~0ull;
};

#define COLUMN(Name, Base, Key, Heading, Tooltip, Needs)                                                               \
    QUOBRIX_COLUMN_CLASS(Name, Base, Key, D0, Heading, Tooltip, Needs)
#include "model/activity_log.def"
#undef COLUMN

QUOBRIX_COLUMN_CLASS(TSecurityLogRemarksColumn, ActivityRemarksColumn, "TSecurityLogRemarksColumn", D0, "Remarks",
                     "What of this event is worth a closer look.", Computed)

/// What happened to the logger itself (the activity log), in order of time.
class TSecurityLogTable final : public Table {
    QUOBRIX_TABLE_CLASS(TSecurityLogTable, true)
};

} // namespace quobrix
