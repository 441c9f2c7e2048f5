#pragma once

#include "units/unit_system.h"

class QLocale;

namespace quobrix {

/// How LOCALE writes numbers and the halves of the day.
TextLocale textLocale(const QLocale& locale);

/// That of this user's system.
TextLocale userLocale();

} // namespace quobrix
