#pragma once

#include "messages/forms.h"

#include <QDialog>

class QCheckBox;
class QComboBox;

namespace quobrix {

/// In which vehicle trips were made that told no VIN: one of the known ones, or one that is typed.
class TUnidentifiedVehicleDialog final : public QDialog {
public:
    TUnidentifiedVehicleDialog(const UnidentifiedVehicleForm& form, QWidget* parent);

    /// Puts what the person wants into FORM.
    void take(UnidentifiedVehicleForm& form) const;

private:
    const std::vector<KnownVehicle> known_;
    QComboBox* vehicle_;
    QCheckBox* forAll_;
};

} // namespace quobrix
