#pragma once

#include "model/logs.h"

#include <optional>

class QWidget;

namespace quobrix {

/// A view of one record of a log.
class RecordView {
public:
    virtual ~RecordView() = default;

    virtual QWidget& widget() = 0;
    /// Shows the record in ROW of LOG, or that there is none. LOG is there if ROW is.
    virtual void showRecord(const Table* log, std::optional<RowIndex> row) = 0;
    /// What is shown, to be printed or written.
    virtual Report printable() const = 0;
};

} // namespace quobrix
