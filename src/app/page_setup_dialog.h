#pragma once

#include "paper/page_setup.h"

#include <QDialog>

#include <array>

class QComboBox;
class QDoubleSpinBox;

namespace quobrix {

/// Paper, orientation and margins of what is printed.
class PageSetupDialog final : public QDialog {
public:
    PageSetupDialog(const PageSetup& setup, QWidget* parent);

    PageSetup setup() const;

private:
    QComboBox* paper_;
    QComboBox* orientation_;
    std::array<QDoubleSpinBox*, 4> margins_; ///< left, top, right, bottom
};

} // namespace quobrix
