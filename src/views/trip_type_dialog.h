#pragma once

#include "model/trip_rules.h"
#include "tables/table_edits.h"
#include "views/page.h"

#include <QDialog>

#include <optional>

class QPushButton;
class QTabWidget;

namespace quobrix {

class StatusLine;
class TTableSpreadsheet;

/// Edits the types that trips can be given, with their rates, and the rules by which new trips get them. OK writes the
/// types to the user's file and the rules to the settings; what fails then leaves the dialog open as it is.
class TripTypeDialog final : public QDialog {
    Q_OBJECT
public:
    /// Shows TYPES. CONTEXT must have a prompter.
    TripTypeDialog(const ViewContext& context, TripTypes types, QWidget* parent,
                   TripTypesFolders folders = tripTypesFolders());
    ~TripTypeDialog() override;

    TTableSpreadsheet& list() { return *list_; }
    TTableSpreadsheet& ruleList() { return *ruleList_; }
    /// What the dialog was closed with: the types as they are now; then, whether their report is wanted.
    const TripTypes& types() const { return types_; }
    bool reportWanted() const { return reportWanted_; }

    void accept() override;

protected:
    bool event(QEvent* event) override;

private:
    QWidget* typesPage();
    QWidget* rulesPage();
    TTableSpreadsheet& currentList() const;
    QPushButton* moveButton(const QString& text, const char* name, int by);
    void moveRule(int by);
    void offerTypes();
    void refuse(QWidget& list, const ShownText& why);
    void showStatus(const QString& tip);

    ViewContext context_;
    const TripTypesFolders folders_;
    TripTypes types_;
    TripTypesTable table_;
    TableEdits edits_{table_};
    TripRulesTable rules_;
    TableEdits ruleEdits_{rules_};
    TTableSpreadsheet *list_ = nullptr, *ruleList_ = nullptr;
    QTabWidget* pages_;
    StatusLine* status_;
    bool reportWanted_ = false;
};

/// What has become of the types in the dialog.
struct EditedTripTypes {
    std::optional<TripTypes> types{}; ///< as they were saved; nothing if they stay as they were
    bool reportWanted = false;
};
/// Opens that dialog with the user's types over PARENT until it is closed. Tells why they cannot be read.
EditedTripTypes editTripTypes(const ViewContext& context, QWidget* parent);

} // namespace quobrix
