#pragma once

#include "messages/prompter.h"
#include "units/unit_system_store.h"

#include <QDialog>

class QComboBox;
class QLineEdit;

namespace quobrix {

/// Asks for the name of a unit system, and is closed with OK only when the store lets the name pass.
class UnitSystemNameDialog : public QDialog {
public:
    /// The name that was entered, without blanks around it.
    std::string name() const;

protected:
    UnitSystemNameDialog(const UnitSystemStore& store, Prompter& prompter, QWidget* parent);
    /// The two fields under each other, with their labels, over OK and Cancel. The name has the focus.
    void layOut(const QString& firstLabel, QWidget* first, const QString& secondLabel, QWidget* second);
    void accept() override;

    QLineEdit* name_;

private:
    const UnitSystemStore& store_;
    Prompter& prompter_;
};

/// A new system's name, and the system it is a copy of.
class NewUnitSystemDialog final : public UnitSystemNameDialog {
public:
    /// Offers SUGGESTION for a name and the system BASE to copy.
    NewUnitSystemDialog(const UnitSystemStore& store, Prompter& prompter, const std::string& suggestion,
                        const std::string& base, QWidget* parent);
    std::string base() const;

private:
    QComboBox* base_;
};

/// The system OLD_NAME's new name; the one that it has is no new one, so OK is Cancel then.
class RenameUnitSystemDialog final : public UnitSystemNameDialog {
public:
    RenameUnitSystemDialog(const UnitSystemStore& store, Prompter& prompter, std::string oldName, QWidget* parent);

protected:
    void accept() override;

private:
    std::string oldName_;
};

} // namespace quobrix
