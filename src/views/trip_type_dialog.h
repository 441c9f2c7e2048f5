#pragma once

#include "model/trip_types.h"
#include "tables/table_edits.h"
#include "views/page.h"

#include <QDialog>

namespace quobrix {

class StatusLine;
class TTableSpreadsheet;

/// Edits the types that trips can be given, with their rates. OK writes them to the user's file; what fails then leaves
/// the dialog open as it is.
class TripTypeDialog final : public QDialog {
    Q_OBJECT
public:
    /// Shows TYPES. CONTEXT must have a prompter.
    TripTypeDialog(const ViewContext& context, TripTypes types, QWidget* parent,
                   TripTypesFolders folders = tripTypesFolders());
    ~TripTypeDialog() override;

    TTableSpreadsheet& list() { return *list_; }

    void accept() override;

protected:
    bool event(QEvent* event) override;

private:
    void showStatus(const QString& tip);

    ViewContext context_;
    const TripTypesFolders folders_;
    TripTypes types_;
    TripTypesTable table_;
    TableEdits edits_{table_};
    TTableSpreadsheet* list_;
    StatusLine* status_;
};

/// Opens that dialog with the user's types over PARENT until it is closed. Tells why they cannot be read.
void editTripTypes(const ViewContext& context, QWidget* parent);

} // namespace quobrix
