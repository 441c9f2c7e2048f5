#pragma once

#include "model/log_columns.h"
#include "views/page.h"

#include <span>

namespace quobrix {

/// How the records of a log are listed.
struct LogListSpec {
    const char* name;    ///< object name and settings section
    const char* title;   ///< "Trip Log"
    const char* records; ///< "trips", within a sentence
    std::span<const PersistentType* const> columns;
};

/// The records of a log, one row each.
class LogList : public TSpreadsheet {
    Q_OBJECT
public:
    /// SPEC must outlive the list.
    LogList(const ViewContext& context, const LogListSpec& spec, QWidget* parent = nullptr);

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

    const LogListSpec& spec_;
    const RecordColumn* records_ = nullptr;
    const LoggerColumn* loggers_ = nullptr;
    std::optional<Key> current_;
};

} // namespace quobrix
