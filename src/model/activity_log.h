#pragma once

#include "model/log_columns.h"

namespace quobrix {

/// The text of an activity event: 0 to 20, or -1 to -6 for changes of the configuration.
SourceText activityEventText(std::int32_t code);

/// Describes the event of its row.
class ActivityDescriptionColumn : public DerivedColumn {
public:
    ColumnKind kind() const override { return ColumnKind::Text; }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    SourceText description(RowIndex row) const;
};

#define COLUMN(Name, Base, Key, Heading, Tooltip, Needs)                                                               \
    QUOBRIX_COLUMN_CLASS(Name, Base, Key, D0, Heading, Tooltip, Needs)
#include "model/activity_log.def"
#undef COLUMN

/// What happened to the logger itself (the activity log), in order of time.
class TSecurityLogTable final : public Table {
    QUOBRIX_TABLE_CLASS(TSecurityLogTable, true)
};

} // namespace quobrix
