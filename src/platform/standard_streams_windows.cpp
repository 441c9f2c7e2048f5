#include "platform/standard_streams.h"

namespace quobrix {

// Handles of streams are no small numbers here that a file could take, and there is no signal for a broken pipe.
void secureStandardStreams() {}

} // namespace quobrix
