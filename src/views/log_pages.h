#pragma once

#include "views/log_list.h"

namespace quobrix {

class Table;

/// A page with the records of a log that has no views of single records.
class LogPage : public Page {
    Q_OBJECT
public:
    void refresh() override { list_->show(log()); }
    void showCell(std::string_view columnKey, RowIndex row) override { list_->showCell(columnKey, row); }
    void unitsChanged() override { retextTables(*this); }
    std::optional<Report> printable(const std::optional<RecordRange>& range) const override {
        return list_->printable(range);
    }
    LogList& list() { return *list_; }

protected:
    LogPage(const ViewContext& context, const LogListSpec& spec);
    /// The log in the document; nothing if the document has none.
    virtual const Table* log() const = 0;

    ViewContext context_;

private:
    LogList* list_;
};

class TTroubleLogView final : public LogPage {
public:
    explicit TTroubleLogView(const ViewContext& context);

protected:
    const Table* log() const override;
};

class TSecurityLogView final : public LogPage {
public:
    explicit TSecurityLogView(const ViewContext& context);

protected:
    const Table* log() const override;
};

class TAccidentLogView final : public LogPage {
public:
    explicit TAccidentLogView(const ViewContext& context);

protected:
    const Table* log() const override;
};

} // namespace quobrix
