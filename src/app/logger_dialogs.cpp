#include "app/logger_dialogs.h"

#include "base/ui/qt_text.h"
#include "ui/fields.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace quobrix {
namespace {

QString shown(const TextContext& text, std::int32_t time) {
    return toQt(dateTimeText(text.units, text.zone.toLocal(time)));
}

/// A figure with its name, which assistive technology reads as one.
void addFact(QFormLayout& form, const QString& name, const QString& value, const char* objectName) {
    auto* field = new QLabel(value);
    field->setObjectName(QLatin1String(objectName));
    field->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    field->setAccessibleName(QStringLiteral("%1 %2").arg(name, value));
    form.addRow(name, field);
}

} // namespace

TSerialPortDialog::TSerialPortDialog(SerialPortForm& form, QWidget* parent)
    : QDialog(parent), form_(form), ports_(new QComboBox), result_(new QLabel) {
    setObjectName(QStringLiteral("TSerialPortDialog"));
    setWindowTitle(tr("Communications Port"));
    auto* explained = new QLabel(tr("Choose the serial port that the Quobrix is connected to, or have it looked for on "
                                    "all of them."));
    explained->setWordWrap(true);
    ports_->setObjectName(QStringLiteral("SerialPort"));
    for (const std::string& port : form_.ports)
        ports_->addItem(toQt(port));
    ports_->setMaxVisibleItems(ports_->count());
    ports_->setCurrentText(toQt(form_.port));
    auto* scanning = new QPushButton(tr("&Scan"));
    scanning->setObjectName(QStringLiteral("ScanPorts"));
    scanning->setToolTip(tr("Looks for the Quobrix on all ports"));
    scanning->setAutoDefault(false);
    connect(scanning, &QPushButton::clicked, this, [this] { scan(); });
    result_->setObjectName(QStringLiteral("ScanResult"));
    result_->setWordWrap(true);
    result_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    result_->setMinimumHeight(2 * fontMetrics().lineSpacing()); // so that nothing moves when it comes

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* row = new QHBoxLayout;
    row->addWidget(fieldLabel(tr("Serial &port:"), *ports_));
    row->addWidget(ports_, 1);
    row->addWidget(scanning);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(explained);
    layout->addSpacing(layout->spacing());
    layout->addLayout(row);
    layout->addWidget(result_);
    layout->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 56);
    ports_->setFocus();
}

void TSerialPortDialog::accept() {
    result_->clear();
    form_.port = ports_->currentText().toStdString();
    if (form_.choose(form_.port))
        QDialog::accept();
    else
        ports_->setFocus();
}

void TSerialPortDialog::scan() {
    result_->clear();
    form_.port = ports_->currentText().toStdString();
    result_->setText(toQt(form_.scan()));
    result_->setAccessibleName(result_->text());
    ports_->setCurrentText(toQt(form_.port));
}

AlarmDialog::AlarmDialog(const AlarmForm& form, QWidget* parent)
    : QDialog(parent), form_(form), volume_(new QSlider(Qt::Horizontal)) {
    setObjectName(QStringLiteral("AlarmDialog"));
    setWindowTitle(tr("Alarm"));
    auto* explained =
        new QLabel(tr("The alarm sounds while a driver brakes or speeds up too hard, or drives too fast."));
    explained->setWordWrap(true);

    volume_->setObjectName(QStringLiteral("AlarmVolume"));
    volume_->setRange(0, std::max<std::int32_t>(1, form.loudest));
    volume_->setPageStep(form.loudest > 1 ? 2 : 1);
    volume_->setTickPosition(QSlider::TicksBelow);
    volume_->setTickInterval(1);
    volume_->setValue(form.volume);
    auto* state = new QLabel;
    state->setObjectName(QStringLiteral("AlarmState"));
    const auto tell = [this, state] {
        const std::int32_t now = volume();
        state->setText(now == 0             ? tr("Off")
                       : form_.loudest <= 1 ? tr("On")
                                            : tr("Volume %1 of %2").arg(now).arg(form_.loudest));
        volume_->setAccessibleDescription(state->text());
    };
    connect(volume_, &QSlider::valueChanged, this, [this, tell] {
        touched_ = true;
        tell();
    });
    tell();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton* off = buttons->addButton(tr("&Off"), QDialogButtonBox::DestructiveRole);
    off->setObjectName(QStringLiteral("AlarmOff"));
    addHelp(*buttons);
    connect(off, &QPushButton::clicked, this, [this] {
        off_ = true;
        accept();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(explained);
    layout->addSpacing(layout->spacing());
    layout->addWidget(fieldLabel(tr("&Volume of the Quobrix's alarm:"), *volume_));
    layout->addWidget(volume_);
    layout->addWidget(state);
    layout->addSpacing(layout->spacing());
    layout->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 48);
    volume_->setFocus();
}

std::int32_t AlarmDialog::volume() const { return off_ ? 0 : touched_ ? volume_->value() : form_.volume; }

TDateAndTimeDialog::TDateAndTimeDialog(const DateAndTimeForm& form, const TextContext& text, QWidget* parent)
    : QDialog(parent), form_(form), text_(text), field_(new QLineEdit(shown(text, form.logger))) {
    setObjectName(QStringLiteral("TDateAndTimeDialog"));
    setWindowTitle(form.readOnly ? tr("Date and Time") : tr("Set Date and Time"));
    auto* layout = new QFormLayout(this);
    if (form.readOnly) {
        delete field_;
        field_ = nullptr;
        addFact(*layout, tr("Quobrix clock:"), shown(text, form.logger), "LoggerTime");
    } else {
        field_->setObjectName(QStringLiteral("LoggerTime"));
        field_->setMinimumWidth(fontMetrics().averageCharWidth() * 28);
        field_->selectAll();
        layout->addRow(fieldLabel(tr("&Quobrix clock:"), *field_), field_);
    }
    addFact(*layout, tr("Computer clock:"), shown(text, form.computer), "ComputerTime");

    auto* buttons =
        new QDialogButtonBox(form.readOnly ? QDialogButtonBox::Close : QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    if (!form.readOnly) {
        ok_ = buttons->button(QDialogButtonBox::Ok);
        QPushButton* take = buttons->addButton(tr("As the &Computer"), QDialogButtonBox::ActionRole);
        take->setObjectName(QStringLiteral("TakeComputerTime"));
        connect(take, &QPushButton::clicked, this, [this] { field_->setText(shown(text_, form_.computer)); });
        connect(field_, &QLineEdit::textChanged, this, [this] { check(); });
    }
    layout->addItem(new QSpacerItem(0, layout->verticalSpacing()));
    layout->addRow(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

std::optional<std::int32_t> TDateAndTimeDialog::entered() const {
    if (!field_ || field_->text() == shown(text_, form_.logger)) // seconds included, which are not shown
        return form_.logger;
    const std::optional<DateTime> local = parseDateTime(text_.units, field_->text().trimmed().toStdString());
    return local ? std::optional(text_.zone.toUtc(*local)) : std::nullopt;
}

void TDateAndTimeDialog::check() {
    const bool valid = entered().has_value();
    ok_->setEnabled(valid);
    ok_->setToolTip(valid ? QString() : tr("Enter a date and a time, such as %1").arg(shown(text_, form_.computer)));
    field_->setToolTip(ok_->toolTip());
}

TTimeDifferenceDialog::TTimeDifferenceDialog(const TimeDifferenceForm& form, QWidget* parent)
    : QDialog(parent), synchronize_(new QCheckBox(tr("&Synchronize clocks"))), adjustment_(new QComboBox) {
    setObjectName(QStringLiteral("TTimeDifferenceDialog"));
    setWindowTitle(tr("Warning"));
    auto* text = new QLabel(tr("Your Quobrix's internal clock differs from your computer's internal clock by %1.\n\n"
                               "This may be due to %2.")
                                .arg(toQt(form.difference), toQt(form.reason)));
    text->setObjectName(QStringLiteral("TimeDifferenceText"));
    text->setWordWrap(true);
    synchronize_->setObjectName(QStringLiteral("TTimeDifferenceSynchronizeColumn"));
    synchronize_->setChecked(form.synchronize);
    synchronize_->setToolTip(tr("Sets the Quobrix's clock after the download, which clears its memory"));
    adjustment_->setObjectName(QStringLiteral("TTimeDifferenceAdjustmentColumn"));
    adjustment_->addItems({tr("Quobrix"), tr("Computer")});
    adjustment_->setCurrentIndex(form.computer ? 1 : 0);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addSpacing(layout->spacing());
    layout->addWidget(synchronize_);
    auto* clears = new QLabel(tr("This is done after the download, and clears the Quobrix's memory."));
    clears->setObjectName(QStringLiteral("SynchronizingClears"));
    clears->setWordWrap(true);
    clears->setIndent(style()->pixelMetric(QStyle::PM_IndicatorWidth) +
                      style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing));
    layout->addWidget(clears);
    auto* times = new QHBoxLayout;
    times->addWidget(fieldLabel(tr("&Download logs using time as recorded by"), *adjustment_));
    times->addWidget(adjustment_, 1);
    layout->addLayout(times);
    layout->addSpacing(layout->spacing());
    layout->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 60);
}

void TTimeDifferenceDialog::take(TimeDifferenceForm& form) const {
    form.synchronize = synchronize_->isChecked();
    form.computer = adjustment_->currentIndex() == 1;
}

TMemoryDialog::TMemoryDialog(const MemoryInformation& memory, const QString& logger, const TUnitSystem& units,
                             QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("TMemoryDialog"));
    setWindowTitle(tr("Quobrix Memory"));
    const double capacity = std::max(0, memory.capacity);
    const double used = std::clamp<double>(memory.used, 0, std::max(capacity, static_cast<double>(memory.used)));
    const double share = memory.share();
    const auto bytes = [&](double value) {
        return tr("%1 KB").arg(toQt(units.formatNumber(value / 1024, value < 100 * 1024 ? 1 : 0)));
    };
    const QString percent = tr("%1 %").arg(toQt(units.formatNumber(100 * share, share < 0.1 ? 1 : 0)));

    auto* heading = new QLabel(tr("The memory of %1 is %2 full.").arg(logger, percent));
    heading->setObjectName(QStringLiteral("MemoryText"));
    heading->setWordWrap(true);
    auto* bar = new QProgressBar;
    bar->setObjectName(QStringLiteral("MemoryBar"));
    bar->setAccessibleName(tr("Used memory"));
    bar->setRange(0, 1000);
    bar->setValue(static_cast<int>(share * 1000));
    bar->setTextVisible(false);
    auto* form = new QFormLayout;
    addFact(*form, tr("Used:"), bytes(used), "MemoryUsed");
    addFact(*form, tr("Free:"), bytes(std::max(0.0, capacity - used)), "MemoryFree");
    addFact(*form, tr("Capacity:"), bytes(capacity), "MemoryCapacity");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(bar);
    layout->addLayout(form);
    layout->addSpacing(layout->spacing());
    layout->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 44);
}

} // namespace quobrix
