#pragma once

namespace quobrix {

/// For a program that writes to its standard streams, before it opens anything: a stream that it was started without
/// gets a place that refuses everything, so that no file of the program's own takes that place and receives its output.
/// From now on writing to a pipe that nobody reads any more is an error and not the end of the program.
void secureStandardStreams();

} // namespace quobrix
