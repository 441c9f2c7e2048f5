#pragma once

#include "messages/file_messages.h"
#include "messages/prompter.h"
#include "units/unit_system_store.h"

#include <QDialog>
#include <QUndoStack>

#include <functional>
#include <string_view>

class QCheckBox;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;

namespace quobrix {

class DecimalsBox;

/// Lets the user choose the current unit system, and in it the unit and the decimals of each kind of quantity. Whatever
/// is chosen applies immediately, so that the windows behind show it; Undo takes choices back until another system is
/// loaded. Changes are saved when another system is loaded and when the dialog closes; those of a locked system, which
/// cannot be saved, are offered to be kept as a new one.
class UnitSystemDialog final : public QDialog, private UnitsListener {
public:
    /// All arguments must outlive the dialog, which may be closed and destroyed at any time.
    UnitSystemDialog(TUnitSystem& units, UnitSystemStore& store, Settings& settings, Prompter& prompter,
                     QWidget* parent);
    /// What has not been saved by closing is saved without a word.
    ~UnitSystemDialog() override;

    /// The type whose units are listed.
    UnitTypeId type() const;
    void selectType(UnitTypeId type);

    /// Saves, tells if that fails, and closes, unless the user decides to go on with a locked system's changes.
    void reject() override;

private:
    void unitsChanged(UnitsChange reason, std::optional<UnitTypeId> type) override;

    void makeFields();
    void makeButtons();
    void layOut();
    void connectFields();

    void showSystem();
    void showType();
    void showChoice();

    void chooseUnit();
    void chooseDecimals(int decimals);
    void chooseSystem(const std::string& name);
    /// False if the user cancels.
    bool newSystem(const std::string& suggestion);
    void renameSystem();
    void deleteSystem();
    /// Saves the changes of the current system or offers to keep them; false if it is to stay current.
    bool settleChanges();
    /// A name that no system has yet.
    std::string freeName() const;
    /// Makes CHANGE a step that can be taken back.
    void edit(const QString& what, const std::function<void(TUnitSystem&)>& change);
    /// Tells of the failure of an operation on the file of the system NAME; true if there was none.
    bool told(const Result<void>& result, FileAction action, std::string_view name);

    TUnitSystem& units_;
    UnitSystemStore& store_;
    Settings& settings_;
    Prompter& prompter_;
    QUndoStack changes_;
    QComboBox* systems_;
    QLabel* locked_;
    QListWidget* types_;
    QListWidget* typeUnits_;
    DecimalsBox* decimals_;
    QLabel* example_;
    QCheckBox* fractions_;
    QPushButton* new_;
    QPushButton* rename_;
    QPushButton* delete_;
    QPushButton* undo_;
    QPushButton* redo_;
};

} // namespace quobrix
