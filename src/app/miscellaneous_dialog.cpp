#include "app/miscellaneous_dialog.h"

#include "app/document_files.h"
#include "app/reminder_choices.h"
#include "app/theme.h"
#include "base/ui/qt_text.h"
#include "device/clear_flow.h"
#include "device/new_data.h"
#include "messages/reminders.h"
#include "settings/settings.h"
#include "texts/text.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QPushButton>

namespace quobrix {

MiscellaneousDialog::MiscellaneousDialog(Settings& settings, Reminders& reminders, QWidget* parent)
    : QDialog(parent), settings_(settings), reminders_(reminders), theme_(new QComboBox), clearing_(new QComboBox),
      newData_(new QComboBox), compaction_(new QCheckBox(tr("Offer to compact files that are mostly &unused space"))) {
    setObjectName(QStringLiteral("Miscellaneous"));
    setWindowTitle(tr("Miscellaneous"));

    auto* look = new QGroupBox(tr("Appearance"));
    theme_->setObjectName(QStringLiteral("Theme"));
    theme_->addItems({tr("As the desktop"), tr("Light"), tr("Dark")});
    theme_->setCurrentIndex(static_cast<int>(themeSetting(settings_)));
    auto* lookForm = new QFormLayout(look);
    lookForm->addRow(tr("C&olors:"), theme_);

    auto* logger = new QGroupBox(tr("Quobrix"));
    auto* loggerForm = new QFormLayout(logger);
    clearing_->setObjectName(QStringLiteral("TClearMemoryColumn"));
    clearing_->addItems({tr("Ask"), tr("Always"), tr("Never")});
    clearing_->setCurrentIndex(static_cast<int>(clearAfterDownload(settings_)));
    loggerForm->addRow(tr("&Clear Quobrix Memory After Downloading Data") + QLatin1Char(':'), clearing_);
    newData_->setObjectName(QStringLiteral("TNewDataColumn"));
    newData_->addItems({tr("Nothing"), tr("Ask"), tr("Download")});
    newData_->setCurrentIndex(static_cast<int>(onNewData(settings_)));
    loggerForm->addRow(tr("&When a Quobrix with new data is connected") + QLatin1Char(':'), newData_);

    auto* often = new QGroupBox(tr("Reminders"));
    auto* form = new QFormLayout(often);
    for (const ReminderSpec& reminder : allReminders()) {
        QComboBox* field = makeReminderChoices(reminders_.choice(reminder.key));
        field->setObjectName(toQt(reminder.key));
        form->addRow(toQt(text(reminder.label)) + QLatin1Char(':'), field);
    }
    compaction_->setObjectName(QStringLiteral("OfferCompaction"));
    compaction_->setChecked(offersCompaction(settings_));
    form->addRow(compaction_);
    auto* all = new QPushButton(tr("Remind me of everything &again"));
    all->setObjectName(QStringLiteral("RemindAll"));
    all->setAutoDefault(false);
    connect(all, &QPushButton::clicked, this, [this, often] {
        for (auto* field : often->findChildren<QComboBox*>())
            field->setCurrentIndex(static_cast<int>(ReminderChoice::EveryTime));
        compaction_->setChecked(true);
    });
    auto* allRow = new QHBoxLayout;
    allRow->addStretch();
    allRow->addWidget(all);
    form->addRow(allRow);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(look);
    layout->addWidget(logger);
    layout->addWidget(often);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void MiscellaneousDialog::accept() {
    for (const ReminderSpec& reminder : allReminders()) {
        const auto* field = findChild<QComboBox*>(toQt(reminder.key));
        reminders_.setChoice(reminder.key, static_cast<ReminderChoice>(field->currentIndex()));
    }
    setClearAfterDownload(settings_, static_cast<ClearAfterDownload>(clearing_->currentIndex()));
    setOnNewData(settings_, static_cast<OnNewData>(newData_->currentIndex()));
    setOffersCompaction(settings_, compaction_->isChecked());
    if (const auto theme = static_cast<Theme>(theme_->currentIndex()); theme != themeSetting(settings_)) {
        setThemeSetting(settings_, theme);
        applyTheme(*qApp, settings_);
    }
    QDialog::accept();
}

} // namespace quobrix
