#pragma once

#include "model/logs.h"
#include "views/page.h"

namespace quobrix {

class RecordCommands;

/// The records of a log, one row each.
class LogList final : public TSpreadsheet {
public:
    /// SPEC must outlive the list.
    LogList(const ViewContext& context, const LogSpec& spec, QWidget* parent = nullptr);

    /// Shows the rows of LOG, which may be none. The current record stays current where its row has moved, the last one
    /// becomes so where there was none.
    void show(const Table* log);

    /// What the current record is known by; nothing if there is none.
    const std::optional<RecordKey>& current() const { return current_; }

    RecordCommands& recordCommands() { return *recordCommands_; }

    /// As Page::printable.
    std::optional<Report> printable(const std::optional<RecordRange>& range);

private:
    void addToMenu(QMenu& menu, QAction* before) override;
    void deleteSelection() override;
    void makeCurrent();

    const LogSpec& spec_;
    RecordCommands* recordCommands_;
    const Table* log_ = nullptr;
    std::optional<RecordKey> current_;
};

} // namespace quobrix
