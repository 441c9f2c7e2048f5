#pragma once

#include "report/ui/printable_window.h"
#include "views/page.h"

#include <QDialog>

#include <string_view>

class QVBoxLayout;

namespace quobrix {

class StatusLine;
class TTableSpreadsheet;
enum class MessageId;

/// What tells the dialog of one table from those of the others.
struct ListDialogSpec {
    const char* name; ///< object name, and the section of the settings
    MessageId emptyText;
    int widestColumn; ///< that takes what room there is
    int width = 120;  ///< at first, in characters
};

/// Edits a table of the document that people fill in. Edits apply immediately, so that the windows behind show it, and
/// can be undone; the dialog can stay open beside them. It ends before the document gets other content.
class ListDialog : public QDialog, public PrintableWindow {
public:
    ~ListDialog() override;

    /// Takes the value of an open editor. False if it is refused: the editor is in view, with the reason.
    bool finishEdit();
    /// Rows have come or gone by other means than editing, or what is shown beside them has changed.
    virtual void refresh() = 0;
    /// Makes a cell current; the row alone, where the column is not shown. An open editor whose value is refused stays.
    void showCell(std::string_view columnKey, RowIndex row);

    std::optional<Report> printable() override;
    void done(int result) override;

protected:
    bool event(QEvent* event) override;

    ListDialog(const ViewContext& context, const ListDialogSpec& spec, const QString& title, QWidget* parent);
    const ViewContext& context() const { return context_; }
    TTableSpreadsheet& list() { return *list_; }
    /// Puts WIDGET between the list and the buttons.
    void addBelowList(QWidget* widget);
    /// For those who end before this, but with what the list shows.
    void endList();
    /// The columns are there: they get their widths.
    void layOutColumns();
    /// Another cell is current, or its value is another one.
    virtual void cellChanged() {}

private:
    /// Shows TIP at the foot; an empty one gives way to what there is to say of the current cell.
    void showStatus(const QString& tip);

    ViewContext context_;
    const ListDialogSpec& spec_;
    TTableSpreadsheet* list_;
    QVBoxLayout* left_;
    StatusLine* status_;
};

} // namespace quobrix
