#include "app/unidentified_vehicle_dialog.h"

#include "base/ui/qt_text.h"
#include "model/name_questions.h"
#include "texts/text.h"
#include "ui/fields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace quobrix {

TUnidentifiedVehicleDialog::TUnidentifiedVehicleDialog(const UnidentifiedVehicleForm& form, QWidget* parent)
    : QDialog(parent), known_(form.known), vehicle_(new QComboBox), forAll_(new QCheckBox(tr("&Use for all"))) {
    setObjectName(QStringLiteral("TUnidentifiedVehicleDialog"));
    setWindowTitle(tr("Unidentified Vehicle"));
    const QString what = toQt(counted(TextId::UnidentifiedTrips, form.trips, form.trips, form.firstTrip));
    auto* text = new QLabel(what);
    text->setObjectName(QStringLiteral("UnidentifiedVehicleText"));
    text->setWordWrap(true);
    const QString told = form.read.empty() ? tr("(nothing)") : toQt(form.read);
    auto* read = new QLabel(tr("\n VIN read from vehicle:") + QLatin1Char(' ') + told);
    read->setObjectName(QStringLiteral("VinRead"));
    read->setTextFormat(Qt::PlainText);
    read->setWordWrap(true);
    read->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    vehicle_->setObjectName(QStringLiteral("TUnidentifiedVehicleColumn"));
    vehicle_->setEditable(true);
    vehicle_->setInsertPolicy(QComboBox::NoInsert);
    auto* hint = new QLabel(tr("A vehicle of this file, or the VIN of another one, which has 17 characters."));
    hint->setObjectName(QStringLiteral("VehicleHint"));
    hint->setWordWrap(true);
    vehicle_->setAccessibleDescription(hint->text());
    for (const KnownVehicle& vehicle : form.known)
        vehicle_->addItem(vehicle.name.empty() ? toQt(vehicle.vin)
                                               : tr("%1 (%2)").arg(toQt(vehicle.name), toQt(vehicle.vin)),
                          toQt(vehicle.vin));
    const int preset = vehicle_->findData(toQt(form.vehicle));
    vehicle_->setCurrentIndex(preset);
    if (preset < 0)
        vehicle_->setEditText(toQt(form.vehicle));
    vehicle_->lineEdit()->selectAll();
    forAll_->setObjectName(QStringLiteral("UseForAll"));
    forAll_->setToolTip(tr("Also for the other new trips that told no VIN"));
    forAll_->setVisible(form.more);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*buttons);
    buttons->button(QDialogButtonBox::Cancel)->setToolTip(tr("Leaves the VIN as it was read"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    QPushButton* ok = buttons->button(QDialogButtonBox::Ok);
    const auto check = [this, ok] {
        UnidentifiedVehicleForm answer;
        take(answer);
        ok->setEnabled(!vinOf(answer.vehicle, known_).empty());
    };
    connect(vehicle_, &QComboBox::editTextChanged, this, check);
    check();

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(read);
    layout->addSpacing(layout->spacing());
    layout->addWidget(fieldLabel(tr("&Vehicle:"), *vehicle_));
    layout->addWidget(vehicle_);
    layout->addWidget(hint);
    layout->addWidget(forAll_);
    layout->addSpacing(layout->spacing());
    layout->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 60);
    vehicle_->setFocus();
}

void TUnidentifiedVehicleDialog::take(UnidentifiedVehicleForm& form) const {
    const QString text = vehicle_->currentText();
    const int chosen = vehicle_->findText(text, Qt::MatchExactly);
    form.vehicle = (chosen >= 0 ? vehicle_->itemData(chosen).toString() : text.trimmed()).toStdString();
    form.forAll = forAll_->isChecked();
}

} // namespace quobrix
