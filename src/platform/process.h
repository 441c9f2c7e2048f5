#pragma once

#include <cstdint>
#include <string>

namespace quobrix {

/// For a program that writes to its standard streams, before it opens anything: a stream that it was started without
/// gets a place that refuses everything, so that no file of the program's own takes that place and receives its output.
void secureStandardStreams();

/// For every program at its start: writing to a pipe whose reader has gone, or past the size that the system
/// allows for a file, is an error of that write from now on, and not the end of the program.
void ignoreWriteSignals();

/// A process as others see it, on this computer and elsewhere.
struct ProcessName {
    std::string host; ///< the computer's name
    std::string boot; ///< changes whenever the computer starts; empty if the system does not say
    std::string user;
    std::uint64_t process = 0; ///< its number
    bool operator==(const ProcessName&) const = default;
};
ProcessName thisProcess();
/// It ran on this computer and has certainly ended. False if that cannot be known here.
bool hasEnded(const ProcessName& name);

} // namespace quobrix
