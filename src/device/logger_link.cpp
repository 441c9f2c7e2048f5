#include "device/logger_link.h"

#include "model/serial_number.h"

#include <array>
#include <cstring>
#include <initializer_list>

namespace quobrix {
namespace {

constexpr std::size_t kLongestPath = 260; // what the library's own buffer takes

/// A text that the library wrote into BUFFER, wherever it ended it.
template <std::size_t N>
std::string textOf(const std::array<char, N>& buffer) {
    const void* end = std::memchr(buffer.data(), '\0', N);
    return {buffer.data(), end ? static_cast<const char*>(end) : buffer.data() + N};
}

bool containsAny(const std::string& text, std::initializer_list<const char*> parts) {
    for (const char* part : parts)
        if (text.find(part) != std::string::npos)
            return true;
    return false;
}

/// Asks the library for one value through FUNCTION(out).
template <class Out, class Value = Out>
Reply<Value> ask(std::int32_t (*function)(Out*)) {
    Out out = 0;
    const ResultCode code = function(&out);
    if constexpr (std::is_same_v<Value, bool>)
        return {code, code == QUOBRIX_OK && out != 0};
    else
        return {code, out};
}

/// Takes over what the library allocated, so that it is freed whatever happens next.
RecordBlock own(QuobrixRecordSet* set) { return RecordBlock(set); }
using LogBuffer = std::unique_ptr<void, FreeBlock>;

struct SetPair {
    ResultCode code;
    RecordBlock first, second;
};

SetPair parseBuffer(decltype(LoggerFunctions::GetLogRecords) parse, const LogBuffer& buffer) {
    if (!buffer)
        return {QUOBRIX_OK, nullptr, nullptr};
    QuobrixRecordSet* first = nullptr;
    QuobrixRecordSet* second = nullptr;
    const ResultCode code = parse(buffer.get(), &first, &second);
    return {code, own(first), own(second)};
}

} // namespace

LoggerLink::LoggerLink(Result<LoggerLibrary> library, WallClock clock) : clock_(std::move(clock)) {
    if (library) {
        library_ = std::move(*library);
    } else {
        library_.functions = absentLoggerFunctions();
        libraryProblem_ = library.error().detail;
        status_.probe = status_.openResult = kNoLibrary;
        status_.probeDescription = libraryProblem_;
    }
}

std::string LockedLogger::describe(ResultCode code) const {
    if (!link_.hasLibrary())
        return link_.libraryProblem_;
    const char* text = library().ResultDescription(code);
    return text ? text : "";
}

LoggerOutcome LockedLogger::outcome(ResultCode code) const {
    return {code, status().port, code == QUOBRIX_OK ? std::string() : describe(code)};
}

ResultCode LockedLogger::openPort(const std::string& port) {
    closePort();
    LoggerStatus& status = state();
    status.port = port;
    status.openResult = library().OpenPort(port.c_str());
    status.portOpen = status.openResult == QUOBRIX_OK;
    return status.openResult;
}

void LockedLogger::closePort() {
    library().ClosePort();
    state().portOpen = false;
    state().openResult = QUOBRIX_PORT_NOT_OPENED;
}

ResultCode LockedLogger::probe() {
    LoggerStatus& status = state();
    std::array<char, QUOBRIX_SERIAL_SIZE> serial{};
    std::int32_t time = 0;
    ResultCode code = library().GetSerialNumberAndTime(serial.data(), &time);
    if (code == QUOBRIX_OK) {
        status.serialText = textOf(serial);
        status.loggerTime = time;
    } else if (code == QUOBRIX_PORT_NOT_OPENED && !status.portOpen) {
        code = status.openResult; // a port that could not be opened says why for as long as it stays closed
    } else if (code != QUOBRIX_TIMEOUT && status.portOpen) {
        closePort();
    }
    noteProbe(code);
    return code;
}

void LockedLogger::noteProbe(ResultCode code) {
    state().probe = code;
    state().probeDescription = code == QUOBRIX_OK ? std::string() : describe(code);
}

ResultCode LockedLogger::convertLastSerialNumber() {
    const Reply<std::int32_t> number = serialNumberToInt(status().serialText);
    if (number.ok())
        state().serialNumber = number.value;
    return number.code;
}

Reply<std::int32_t> LockedLogger::serialNumberToInt(const std::string& text) const {
    std::int32_t number = 0;
    const ResultCode code = library().ConvertSerialNumberToInt(text.c_str(), &number);
    return {code, number};
}

Reply<std::string> LockedLogger::serialNumberToText(std::int32_t number) const {
    std::array<char, QUOBRIX_SERIAL_SIZE> text{};
    const ResultCode code = library().ConvertSerialNumberToString(number, text.data());
    return {code, std::string(text.data(), kSerialNumberLength)};
}

Reply<LoggerIdentity> LockedLogger::identity() {
    std::array<char, QUOBRIX_SERIAL_SIZE> serial{};
    std::array<char, QUOBRIX_PRODUCT_SIZE> product{};
    LoggerIdentity identity;
    std::int32_t notRead = 0;
    const ResultCode code = library().GetIdentityInformation(
        serial.data(), product.data(), &identity.firmware.major, &identity.firmware.minor, &identity.firmware.build,
        &identity.boot.major, &identity.boot.minor, &identity.boot.build, &identity.hardwareVersion, &notRead);
    if (code != QUOBRIX_OK)
        return {code, {}};
    identity.serialNumber = textOf(serial);
    identity.productNumber = textOf(product);
    state().newerModel = !containsAny(identity.productNumber, {"4730", "4731"}); // the first family
    state().identity = identity;
    return {code, identity};
}

Reply<LoggerConfiguration> LockedLogger::configuration() {
    LoggerConfiguration c;
    std::uint8_t flags = 0;
    const ResultCode code = library().GetConfiguration(
        &c.bandLimits[0], &c.bandLimits[1], &c.bandLimits[2], &c.brakeThresholds[0], &c.brakeThresholds[1],
        &c.accelerationThresholds[0], &c.accelerationThresholds[1], &c.parameters[0], &c.parameters[1],
        &c.parameters[2], &c.parameters[3], &c.parameters[4], &c.intervals[0], &c.intervals[1], &c.intervals[2],
        &c.intervals[3], &c.intervals[4], &flags);
    if (code != QUOBRIX_OK)
        return {code, {}};
    state().configFlag = (flags & 1) != 0;
    return {code, c};
}

ResultCode LockedLogger::setConfiguration(const LoggerConfiguration& c) {
    return library().SetConfiguration(c.bandLimits[0], c.bandLimits[1], c.bandLimits[2], c.brakeThresholds[0],
                                      c.brakeThresholds[1], c.accelerationThresholds[0], c.accelerationThresholds[1],
                                      c.parameters[0], c.parameters[1], c.parameters[2], c.parameters[3],
                                      c.parameters[4], c.intervals[0], c.intervals[1], c.intervals[2], c.intervals[3],
                                      c.intervals[4]);
}

ResultCode LockedLogger::setTime(std::int32_t time) { return library().SetTime(time); }
ResultCode LockedLogger::enableLed(bool enable) { return library().EnableLED(enable); }
Reply<bool> LockedLogger::ledIsEnabled() { return ask<std::uint8_t, bool>(library().LEDIsEnabled); }
ResultCode LockedLogger::enableVinMode(bool enable) { return library().EnableVinMode(enable); }

Reply<bool> LockedLogger::vinModeIsEnabled() {
    const Reply<bool> enabled = ask<std::uint8_t, bool>(library().VinModeIsEnabled);
    return enabled.code == QUOBRIX_NO_VIN_MODE_ANSWER ? Reply<bool>{QUOBRIX_OK, false} : enabled;
}

ResultCode LockedLogger::setBeepVolume(std::int32_t volume) { return library().SetBeepVolume(volume); }
Reply<std::int32_t> LockedLogger::beepVolume() { return ask(library().GetBeepVolume); }
Reply<bool> LockedLogger::beepIsEnabled() { return ask<std::uint8_t, bool>(library().BeepIsEnabled); }
ResultCode LockedLogger::setCarType(std::int32_t carType) { return library().SetCarType(carType); }
Reply<std::int32_t> LockedLogger::carType() { return ask(library().GetCarType); }

bool LockedLogger::troubleIsPresent() {
    const Reply<std::uint8_t> trouble = ask(library().GetTroubleByte);
    return trouble.ok() && trouble.value == 1;
}

ResultCode LockedLogger::clearLogs() {
    const ResultCode code = library().ClearLogs();
    if (code == QUOBRIX_OK)
        noteLogsCurrent();
    return code;
}

ResultCode LockedLogger::arm(bool armed) { return library().ClearTroubleCodes(armed); }
ResultCode LockedLogger::clearAccidentLogs() { return library().ClearAccidentLogs(); }

Reply<MemoryInformation> LockedLogger::memoryInformation() {
    MemoryInformation memory;
    const ResultCode code = library().GetMemoryInformation(&memory.capacity, &memory.used);
    return {code, memory};
}

void LockedLogger::noteLogsCurrent() {
    state().logsCurrent = true;
    state().logsReadTime = now();
}

Reply<RecordBlocks> LockedLogger::readLogs(LogMode mode) {
    void* buffers[3] = {};
    const ResultCode code =
        library().GetLogBuffer(static_cast<std::int32_t>(mode), &buffers[0], &buffers[1], &buffers[2]);
    const LogBuffer mainLog(buffers[0]), accidentLogs[2] = {LogBuffer(buffers[1]), LogBuffer(buffers[2])};
    noteLogsCurrent();

    Reply<RecordBlocks> reply{code, {}};
    if (code != QUOBRIX_OK)
        return reply;
    // What could be parsed of the main log is taken, whatever the library says of the rest.
    SetPair main = parseBuffer(library().GetLogRecords, mainLog);
    reply.value.trips = std::move(main.first);
    reply.value.troublesAndActivity = std::move(main.second);
    for (std::size_t i = 0; i < reply.value.accidents.size(); ++i) {
        SetPair accidents = parseBuffer(library().GetAccidentLogRecords, accidentLogs[i]);
        if (accidents.code != QUOBRIX_OK)
            break;
        reply.value.accidents[i] = {std::move(accidents.first), std::move(accidents.second)};
    }
    return reply;
}

Reply<RecordBlocks> LockedLogger::readLogFile(const std::string& path) {
    Reply<RecordBlocks> reply;
    if (path.size() > kLongestPath) {
        reply.code = kPathTooLong;
        return reply;
    }
    void* buffer = nullptr;
    reply.code = library().GetLogBufferFromFile(&buffer, path.c_str());
    const LogBuffer log(buffer);
    if (!reply.ok())
        return reply;
    SetPair main = parseBuffer(library().GetLogRecords, log);
    reply.code = main.code;
    if (reply.ok())
        reply.value = {std::move(main.first), std::move(main.second), {}};
    return reply;
}

} // namespace quobrix
