#include "app/reminder_choices.h"

#include "base/ui/qt_text.h"

#include <QComboBox>

namespace quobrix {

QComboBox* makeReminderChoices(ReminderChoice choice) {
    auto* choices = new QComboBox;
    for (const std::string_view text : kReminderChoiceTexts)
        choices->addItem(toQt(text));
    choices->setCurrentIndex(static_cast<int>(choice));
    return choices;
}

} // namespace quobrix
