#pragma once

#include "base/result.h"

#include <string>
#include <utility>

namespace quobrix::sim {

/// An error of the simulator. It is a tool for developing and testing, so what it says is in English.
inline Error fault(ErrorKind kind, std::string detail) { return {kind, ShownText::asItIs(std::move(detail))}; }

} // namespace quobrix::sim
