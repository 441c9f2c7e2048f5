#pragma once

#include "tables/column.h"

#include <string>

namespace quobrix {

/// What a value of COLUMN is to be like, for a person who asks: its kind, whether it is required, its ranges and the
/// rest of its requirements, in the current units. Paragraphs are parted by an empty line.
std::string requirementsText(const Column& column, const TextContext& context);

} // namespace quobrix
