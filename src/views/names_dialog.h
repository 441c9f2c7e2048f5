#pragma once

#include "model/names.h"
#include "views/page.h"

#include <QDialog>

#include <span>
#include <string>

class QVBoxLayout;

namespace quobrix {

class StatusLine;
class TTableSpreadsheet;
enum class MessageId;

/// What tells the dialog of one name table from those of the others.
struct NamesDialogSpec {
    const char* name; ///< object name, and the section of the settings
    MessageId emptyText;
};

/// Edits a name table: keys, their names, and whether records refer to them. Edits apply immediately, so that
/// the windows behind show it, and can be undone; the dialog can stay open beside them. It ends before the document
/// gets other content.
class NamesDialog : public QDialog {
public:
    ~NamesDialog() override;

    /// Takes the value of an open editor. False if it is refused: the editor is in view, with the reason.
    bool finishEdit();
    /// Rows have come or gone by other means than editing, or records that use them.
    void refresh();
    /// Selects the rows of KEYS and opens the name of the first one for typing.
    void nameKeys(std::span<const std::string> keys);

    /// Makes a cell current; the row alone, where the column is not shown. An open editor whose value is refused stays.
    void showCell(std::string_view columnKey, RowIndex row);

    void done(int result) override;

protected:
    bool event(QEvent* event) override;

    /// NAMES must be a table of CONTEXT's document.
    NamesDialog(const ViewContext& context, NamesTable& names, const NamesDialogSpec& spec, QWidget* parent);
    const ViewContext& context() const { return context_; }
    TTableSpreadsheet& list() { return *list_; }
    /// Puts WIDGET between the list and the buttons.
    void addBelowList(QWidget* widget);
    /// The name that an entry gets when the user adds it.
    virtual std::string newName() const;

private:
    /// Widens the column of keys for the one that has been typed.
    void fitKey();
    /// Shows TIP at the foot; an empty one gives way to what there is to say of the current cell.
    void showStatus(const QString& tip);

    ViewContext context_;
    NamesTable& names_;
    const NamesDialogSpec& spec_;
    TTableSpreadsheet* list_;
    QVBoxLayout* left_;
    StatusLine* status_;
};

class TVehicleNamesDialog final : public NamesDialog {
public:
    TVehicleNamesDialog(const ViewContext& context, QWidget* parent);
};

/// Tells of a serial number that is refused, since the person may choose how often to be reminded of its form.
class TQuobrixNamesDialog final : public NamesDialog {
public:
    TQuobrixNamesDialog(const ViewContext& context, QWidget* parent);

private:
    void tellRefusal(const EditOutcome& outcome);

    bool telling_ = false;
};

/// Keeps beside the drivers the names that new ones get at first.
class DriverNamesDialog final : public NamesDialog {
public:
    DriverNamesDialog(const ViewContext& context, QWidget* parent);

private:
    std::string newName() const override;
};

} // namespace quobrix
