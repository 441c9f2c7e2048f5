#pragma once

#include "model/logs.h"
#include "views/page.h"

#include <QDialog>

class QPlainTextEdit;

namespace quobrix {

class StatusLine;

/// Edits the comments of one record, which may have any number of lines. What is refused leaves the dialog open, with
/// the reason.
class TCommentsDialog final : public QDialog {
public:
    /// Of the record in ROW of the log of SPEC, which must be there, and outlive the dialog.
    TCommentsDialog(const ViewContext& context, const LogSpec& spec, RowIndex row, QWidget* parent);
    ~TCommentsDialog() override;

    void accept() override;

private:
    const ViewContext context_;
    const LogSpec& spec_;
    const RecordKey record_;
    QPlainTextEdit* text_;
    StatusLine* status_;
};

} // namespace quobrix
