#pragma once

#include "document/disk_work.h"

class QWidget;

namespace quobrix {

/// Runs WORK on another thread and returns its result. If it takes noticeably long, WINDOW paints meanwhile
/// under a wait cursor and takes no input; if it takes longer, a dialog shows how far it is, and cancels what can be
/// cancelled.
Result<void> runWhilePainting(const DiskWork& work, QWidget* window);

} // namespace quobrix
