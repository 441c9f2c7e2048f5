#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;

namespace quobrix {

class Reminders;
class Settings;

/// Options that fit nowhere else: how the program looks, what it does with the logger's data by itself, how often each
/// reminder is shown, what is offered. They take effect with OK.
class MiscellaneousDialog final : public QDialog {
public:
    /// The arguments must outlive the dialog.
    MiscellaneousDialog(Settings& settings, Reminders& reminders, QWidget* parent);

    void accept() override;

private:
    Settings& settings_;
    Reminders& reminders_;
    QComboBox* theme_;
    QComboBox* clearing_;
    QComboBox* newData_;
    QCheckBox* compaction_;
};

} // namespace quobrix
