#pragma once

#include "model/log_columns.h"
#include "model/logs.h"
#include "views/page.h"

namespace quobrix {

/// The records of a log, one row each.
class LogList final : public TSpreadsheet {
public:
    /// SPEC must outlive the list.
    LogList(const ViewContext& context, const LogSpec& spec, QWidget* parent = nullptr);

    /// Shows the rows of LOG, which may be none. The current record stays current where its row has moved, the last one
    /// becomes so where there was none.
    void show(const Table* log);

    /// As Page::printable.
    std::optional<Report> printable(const std::optional<RecordRange>& range);

private:
    /// What tells a record from all others of its log.
    struct Key {
        std::string logger;
        RecordIdentity identity;
        bool operator==(const Key&) const = default;
    };

    std::optional<Key> keyOf(RowIndex row) const;
    void makeCurrent();

    const LogSpec& spec_;
    const RecordColumn* records_ = nullptr;
    const LoggerColumn* loggers_ = nullptr;
    std::optional<Key> current_;
};

} // namespace quobrix
