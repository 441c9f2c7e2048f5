#pragma once

#include "base/result.h"

#include <functional>

namespace quobrix {

/// Runs WORK on another thread and returns its result. If it takes long enough to be felt, the window paints meanwhile
/// under a wait cursor, and takes no input.
Result<void> runWhilePainting(const std::function<Result<void>()>& work);

} // namespace quobrix
