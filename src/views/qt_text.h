#pragma once

#include "base/ui/qt_text.h"
