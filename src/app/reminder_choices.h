#pragma once

#include "messages/reminders.h"

class QComboBox;

namespace quobrix {

/// A field for how often a reminder is shown, with CHOICE marked. Its rows are the choices in the order of their
/// numbers.
QComboBox* makeReminderChoices(ReminderChoice choice);

} // namespace quobrix
