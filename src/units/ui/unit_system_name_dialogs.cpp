#include "units/ui/unit_system_name_dialogs.h"

#include "base/ui/qt_text.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>

namespace quobrix {

UnitSystemNameDialog::UnitSystemNameDialog(const UnitSystemStore& store, Prompter& prompter, QWidget* parent)
    : QDialog(parent), name_(new QLineEdit), store_(store), prompter_(prompter) {}

std::string UnitSystemNameDialog::name() const { return name_->text().trimmed().toStdString(); }

void UnitSystemNameDialog::layOut(const QString& firstLabel, QWidget* first, const QString& secondLabel,
                                  QWidget* second) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });
    auto* form = new QFormLayout(this);
    form->addRow(firstLabel, first);
    form->addRow(secondLabel, second);
    form->addItem(new QSpacerItem(0, form->verticalSpacing()));
    form->addRow(buttons);
    form->setSizeConstraint(QLayout::SetFixedSize);
    for (QWidget* field : {first, second}) {
        field->setMinimumWidth(fontMetrics().averageCharWidth() * 32);
        field->setAccessibleDescription(field->toolTip());
    }
    name_->setFocus();
}

void UnitSystemNameDialog::accept() {
    if (const std::optional<Message> refusal = store_.checkName(name())) {
        prompter_.tell(*refusal);
        name_->setFocus();
        name_->selectAll();
        return;
    }
    QDialog::accept();
}

NewUnitSystemDialog::NewUnitSystemDialog(const UnitSystemStore& store, Prompter& prompter,
                                         const std::string& suggestion, const std::string& base, QWidget* parent)
    : UnitSystemNameDialog(store, prompter, parent), base_(new QComboBox) {
    setObjectName(QStringLiteral("UsDlgNew"));
    setWindowTitle(tr("New Unit System"));
    name_->setObjectName(QStringLiteral("UsDlgNewFldName"));
    name_->setToolTip(tr("Enter the name of the new unit system"));
    name_->setText(toQt(suggestion));
    name_->selectAll();
    base_->setObjectName(QStringLiteral("UsDlgNewFldBase"));
    base_->setToolTip(tr("Select the unit system on which to base the new unit system"));
    for (const std::string& system : store.listSystems())
        base_->addItem(toQt(system));
    base_->setCurrentText(toQt(base));
    layOut(tr("&Name:"), name_, tr("&Based on:"), base_);
}

std::string NewUnitSystemDialog::base() const { return base_->currentText().toStdString(); }

RenameUnitSystemDialog::RenameUnitSystemDialog(const UnitSystemStore& store, Prompter& prompter, std::string oldName,
                                               QWidget* parent)
    : UnitSystemNameDialog(store, prompter, parent), oldName_(std::move(oldName)) {
    setObjectName(QStringLiteral("UsDlgRen"));
    setWindowTitle(tr("Rename Unit System"));
    auto* old = new QLineEdit(toQt(oldName_));
    old->setObjectName(QStringLiteral("UsDlgRenFldOld"));
    old->setToolTip(tr("Displays the unit system's original name"));
    old->setReadOnly(true);
    name_->setObjectName(QStringLiteral("UsDlgRenFldNew"));
    name_->setToolTip(tr("Enter the unit system's new name"));
    name_->setText(toQt(oldName_));
    name_->selectAll();
    layOut(tr("&Old name:"), old, tr("&New name:"), name_);
}

void RenameUnitSystemDialog::accept() {
    if (name() == oldName_)
        reject();
    else
        UnitSystemNameDialog::accept();
}

} // namespace quobrix
