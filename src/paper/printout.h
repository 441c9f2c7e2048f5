#pragma once

#include "paper/page_setup.h"
#include "paper/painter.h"

namespace quobrix {

/// REPORT laid out as SETUP says, in the fonts of PAINTER, which need not outlive it, and in smaller
/// type where a picture would not fit on its page. Its pages are for one thread at a
/// time.
PageSource layOut(Report report, const PageSetup& setup, const FilePainter& painter);

} // namespace quobrix
