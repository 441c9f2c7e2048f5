#pragma once

#include "device/logger_status.h"
#include "messages/forms.h"
#include "tables/column.h"

#include <QDialog>

#include <optional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;

namespace quobrix {

/// The port of the logger. It stays open while a port is tried or all are scanned, and goes on from there.
class TSerialPortDialog final : public QDialog {
public:
    /// FORM must outlive the dialog, which changes it as a person does.
    TSerialPortDialog(SerialPortForm& form, QWidget* parent);

    void accept() override;

private:
    void scan();

    SerialPortForm& form_;
    QComboBox* ports_;
    QLabel* result_;
};

/// How loud the logger's alarm is: a slider, or two choices where it is only on or off. "Off" is an answer like OK.
class AlarmDialog final : public QDialog {
public:
    AlarmDialog(const AlarmForm& form, QWidget* parent);

    /// As the person wants it: what they have not touched stays, in range or not.
    std::int32_t volume() const;

private:
    const AlarmForm form_;
    QSlider* volume_;
    bool touched_ = false;
    bool off_ = false;
};

/// The logger's clock beside the computer's: to be looked at, or to be set.
class TDateAndTimeDialog final : public QDialog {
public:
    TDateAndTimeDialog(const DateAndTimeForm& form, const TextContext& text, QWidget* parent);

    /// What the logger's clock is to show, s since 1970-01-01 00:00 UTC.
    std::int32_t time() const { return entered().value_or(form_.logger); }

private:
    std::optional<std::int32_t> entered() const; ///< nothing if it is no time
    void check();

    const DateAndTimeForm form_;
    const TextContext text_;
    QLineEdit* field_;
    QPushButton* ok_ = nullptr;
};

/// What to do about a logger's clock that differs from the computer's, before a download.
class TTimeDifferenceDialog final : public QDialog {
public:
    TTimeDifferenceDialog(const TimeDifferenceForm& form, QWidget* parent);

    /// Puts what the person wants into FORM.
    void take(TimeDifferenceForm& form) const;

private:
    QCheckBox* synchronize_;
    QComboBox* adjustment_;
};

/// How full the logger's memory is, in words and as a bar.
class TMemoryDialog final : public QDialog {
public:
    TMemoryDialog(const MemoryInformation& memory, const QString& logger, const TUnitSystem& units, QWidget* parent);
};

} // namespace quobrix
