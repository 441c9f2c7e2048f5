#include "app/reminder_choices.h"

#include "base/ui/qt_text.h"
#include "texts/text.h"

#include <QComboBox>

namespace quobrix {

QComboBox* makeReminderChoices(ReminderChoice choice) {
    auto* choices = new QComboBox;
    for (const SourceText& wording : kReminderChoiceTexts)
        choices->addItem(toQt(text(wording)));
    choices->setCurrentIndex(static_cast<int>(choice));
    return choices;
}

} // namespace quobrix
