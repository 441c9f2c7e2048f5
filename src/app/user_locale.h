#pragma once

#include "units/unit_system.h"

namespace quobrix {

/// How this user's system writes numbers and the halves of the day.
TextLocale userLocale();

} // namespace quobrix
