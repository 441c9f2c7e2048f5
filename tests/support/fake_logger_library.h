#pragma once

#include "device/logger_library.h"
#include "device/logger_status.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quobrix::testing {

/// A logger library without a logger: its members say what it answers, and it notes what it is asked. One at a time.
/// Calls that overlap fail the test.
class FakeLoggerLibrary {
public:
    FakeLoggerLibrary();
    ~FakeLoggerLibrary();

    static LoggerLibrary library();

    std::map<std::string, std::string> loggers;     ///< serial numbers, by the port on which they are
    std::map<std::string, ResultCode> portProblems; ///< what opening a port comes to
    std::map<std::string, ResultCode> results;      ///< what a function comes to instead of its ordinary result;
                                                    ///< "GetAccidentLogRecords 2": for the second accident log only
    std::string product = "QBX-4751";
    std::int32_t loggerTime = 1'700'000'000;
    std::uint8_t flags = 1;
    LoggerConfiguration configuration{.bandLimits = {45}};
    bool led = false, vinMode = true, armed = false;
    std::int32_t volume = 2, carType = 0;
    MemoryInformation memory{1000, 500};
    std::function<void(LoggerConfiguration&)> alters;        ///< what becomes of a configuration that is set
    bool handsOutBuffers = true;                             ///< GetLogBuffer allocates, whatever its result
    bool handsOutOneBlock = false;                           ///< for all buffers, and for both sets of a buffer
    std::vector<std::uint8_t> trips, troubles;               ///< record sets that are handed out
    std::vector<std::uint8_t> stops, stopSamples;            ///< those of each accident log
    std::function<void(const std::string& function)> during; ///< runs inside of each call

    std::vector<std::string> calls; ///< "OpenPort COM3", "SetTime 5" …; probes and their like without arguments
    std::string openPort;           ///< empty: none

    int count(const std::string& call) const;

private:
    friend struct FakeFunctions;
    ResultCode note(const std::string& function, const std::string& argument = {});
    ResultCode command(const std::string& function, const std::string& argument = {});
    ResultCode presence() const;

    std::atomic<int> inside_ = 0;
    int accidentLog_ = 0; // which one is parsed
};

} // namespace quobrix::testing
